#include "core/data_selection.h"
#include "store/record_set.h"
#include "tests/support/compare_text.h"
#include "tests/support/failure_box.h"
#include "tests/support/test_world.h"
#include "tests/support/troubled_database.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestDataSelection : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;

    Session& session() { return world->session; }
    FakeDataSelection& window() { return world->windows.selection; }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        world->openDatabase(world->createDatabase());
        TestWorld::addRow(session().RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        TestWorld::addRow(session().RsMain, {u"氷"_s, u"M-991231-002"_s, u"固体"_s});
        TestWorld::addRow(session().RsRefDoc, {u"<水の本>"_s, u"R-991231-001"_s, u"…"_s});
        TestWorld::addRow(session().RsRefFile, {u"水.txt"_s, u"F-991231-001"_s, u"未入力"_s});
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void dataAreListedAndShownModelessly()
    {
        QCOMPARE(CreateDataList(session(), session().RsMain, SelectionUse::Show, ListFill::Replace), 0);
        QCOMPARE(window().rows, QStringList({u"水|定義|M-991231-001"_s, u"氷|定義|M-991231-002"_s}));
        QVERIFY(compareLines(world->calls.lines(),
                             {u"frmDataSelect.clearRows"_s, u"frmDataSelect.row 水|定義|M-991231-001"_s,
                              u"frmDataSelect.row 氷|定義|M-991231-002"_s, u"frmDataSelect.rowsFinished"_s,
                              u"frmDataSelect.showModeless"_s, u"frmDataSelect.setStatus 1 表示モード"_s,
                              u"frmDataSelect.setStatus 3 表示データ数：2"_s}));
        QCOMPARE(window().title, u"データ選択画面"_s);
    }

    void everyKindHasItsWord()
    {
        for (const auto& rows : {session().RsRefDoc, session().RsRefFile})
            CreateDataList(session(), rows, SelectionUse::Show, ListFill::Append);
        QCOMPARE(window().rows,
                 QStringList({u"<水の本>|文献|R-991231-001"_s, u"水.txt|FILE|F-991231-001"_s}));
    }

    void appendingCountsOnlyTheLastRecordSet()
    {
        CreateDataList(session(), session().RsMain, SelectionUse::Show, ListFill::Replace);
        world->calls.take();
        CreateDataList(session(), session().RsRefDoc, SelectionUse::Show, ListFill::Append);
        QCOMPARE(window().rows.size(), 3);
        QVERIFY(
            compareLines(world->calls.lines(),
                         {u"frmDataSelect.row <水の本>|文献|R-991231-001"_s, u"frmDataSelect.rowsFinished"_s,
                          u"frmDataSelect.showModeless"_s, u"frmDataSelect.setStatus 1 表示モード"_s,
                          u"frmDataSelect.setStatus 3 表示データ数：1"_s}));
    }

    void emptyRecordSetListsNothing()
    {
        window().rows = QStringList(u"古い"_s);
        const auto none = session().RsMain->filtered(u"Name = '火'"_s);
        QCOMPARE(CreateDataList(session(), none, SelectionUse::Show, ListFill::Replace), 0);
        QCOMPARE(window().rows, QStringList());
        QCOMPARE(world->calls.lines().last(), u"frmDataSelect.setStatus 3 表示データ数：0"_s);
    }

    void filteredSetListsOnlyItsRows()
    {
        const auto some = session().RsMain->filtered(u"Explanation Like '固*'"_s);
        CreateDataList(session(), some, SelectionUse::Show, ListFill::Replace);
        QCOMPARE(window().rows, QStringList(u"氷|定義|M-991231-002"_s));
    }

    void linkingShowsModallyAndWritesTheStatusAfterwards()
    {
        session().LinkSourceMode = true;
        session().LinkSourceID = u"M-991231-001"_s;
        window().whileModal = [&] {
            QVERIFY(session().LinkSourceMode);
            world->calls.note(u"the person chooses"_s);
        };
        QCOMPARE(CreateDataList(session(), session().RsRefDoc, SelectionUse::Link, ListFill::Replace), 0);
        QVERIFY(compareLines(world->calls.lines(),
                             {u"frmDataSelect.clearRows"_s, u"frmDataSelect.row <水の本>|文献|R-991231-001"_s,
                              u"frmDataSelect.rowsFinished"_s,
                              u"frmDataSelect.setCaption データ選択画面 - リンク先を選択してください。"_s,
                              u"frmDataSelect.showModal"_s, u"the person chooses"_s,
                              u"frmDataSelect.setStatus 1 リンクモード"_s,
                              u"frmDataSelect.setStatus 3 表示データ数：1"_s}));
        QVERIFY(session().LinkSourceMode);
    }

    void captionKeepsWhatLinkingAppended()
    {
        CreateDataList(session(), session().RsRefDoc, SelectionUse::Link, ListFill::Replace);
        CreateDataList(session(), session().RsRefDoc, SelectionUse::Link, ListFill::Replace);
        QVERIFY(compareText(window().title,
                            u"データ選択画面 - リンク先を選択してください。 - リンク先を選択してください。"));
        CreateDataList(session(), session().RsRefDoc, SelectionUse::Show, ListFill::Replace);
        QCOMPARE(window().title.count(u'-'), 2);
    }

    void showingEndsAPendingLink()
    {
        session().LinkSourceMode = true;
        session().LinkSourceID = u"M-991231-001"_s;
        session().LinkSourceName = u"水"_s;
        CreateDataList(session(), session().RsMain, SelectionUse::Show, ListFill::Append);
        QVERIFY(!session().LinkSourceMode);
        // The console still shows where it came from.
        QCOMPARE(session().LinkSourceID, u"M-991231-001"_s);
        QCOMPARE(session().LinkSourceName, u"水"_s);
    }

    void missingRecordSetIsReportedAndNothingIsShown()
    {
        window().rows = QStringList(u"古い"_s);
        world->dialogs.expect(failureBox(u"CreateDataList"_s, 91));
        QCOMPARE(CreateDataList(session(), nullptr, SelectionUse::Link, ListFill::Replace), 0);
        QVERIFY(compareLines(world->calls.lines(), QStringList{u"frmDataSelect.clearRows"_s} +
                                                       failureCalls(u"CreateDataList"_s, 91)));
    }

    void fileThatCannotBeReadIsReported()
    {
        const ForeignLock lock(*session().OpenDb, ForeignLock::Kind::Exclusive);
        world->dialogs.expect(failureBox(u"CreateDataList"_s, 3260));
        QCOMPARE(CreateDataList(session(), session().RsMain, SelectionUse::Show, ListFill::Replace), 0);
        QVERIFY(compareLines(world->calls.lines(), QStringList{u"frmDataSelect.clearRows"_s} +
                                                       failureCalls(u"CreateDataList"_s, 3260)));
    }

    void identifierThatNoSearchCanNameIsListedWithoutAName()
    {
        TestWorld::addRow(session().RsMain, {u"謎"_s, u"M'"_s, u""_s});
        world->dialogs.expect(failureBox(u"GetDataName"_s, 3075));
        CreateDataList(session(), session().RsMain, SelectionUse::Show, ListFill::Replace);
        QCOMPARE(window().rows.last(), u"|定義|M'"_s);
        QCOMPARE(world->calls.lines().last(), u"frmDataSelect.setStatus 3 表示データ数：3"_s);
    }

    void linesOfAnotherTableOfDataAreNamedAfterTheirKind()
    {
        // The name is that of the identifier, not that of the row.
        TestWorld::addRow(session().RsRefDoc, {u"迷子"_s, u"M-991231-002"_s, u""_s});
        CreateDataList(session(), session().RsRefDoc, SelectionUse::Show, ListFill::Replace);
        QCOMPARE(window().rows.last(), u"氷|定義|M-991231-002"_s);
    }

    void theFirstOfTwoRowsWithOneIdentifierGivesTheName()
    {
        session().OpenDb->execute(u"DROP TABLE Main"_s);
        session().OpenDb->execute(u"CREATE TABLE Main (Name TEXT, Object_ID TEXT, Explanation TEXT)"_s);
        session().RsMain = RecordSet::openTable(session().OpenDb, schema::Main());
        TestWorld::addRow(session().RsMain, {u"水"_s, u"M-1"_s, u"液体"_s});
        TestWorld::addRow(session().RsMain, {u"氷"_s, u"M-1"_s, u"固体"_s});
        const auto hits = session().RsMain->filtered(u"Name Like '*体*' OR Explanation Like '*体*'"_s);
        CreateDataList(session(), hits, SelectionUse::Show, ListFill::Replace);
        QCOMPARE(window().rows, QStringList({u"水|定義|M-1"_s, u"水|定義|M-1"_s}));
    }

    void hitsOfASearchAreListedAsTheyStandInTheFile()
    {
        const QString criteria = u"Name Like '*体*' OR Explanation Like '*体*'"_s;
        TestWorld::addRow(session().RsMain, {u"ﾃﾞｰﾀの体系"_s, u""_s, u""_s});
        TestWorld::addRow(session().RsMain, {u"全体"_s, u"F-991231-001"_s, u""_s});
        for (int round = 0; round < 2; ++round) {
            CreateDataList(session(), session().RsMain->filtered(criteria), SelectionUse::Show,
                           ListFill::Replace);
            QCOMPARE(window().rows, QStringList({u"水|定義|M-991231-001"_s, u"氷|定義|M-991231-002"_s,
                                                 u"ﾃﾞｰﾀの体系|不明|"_s, u"水.txt|FILE|F-991231-001"_s}));
        }
    }

    void tablesOfThisProgramAreAsDeclaredAndOthersAreNot()
    {
        Database& database = *session().OpenDb;
        for (const TableSchema* table : schema::all())
            QVERIFY2(database.isAsDeclared(*table), qPrintable(table->name));
        database.execute(u"DROP TABLE RefDoc"_s);
        QVERIFY(!database.isAsDeclared(schema::RefDoc()));
        database.execute(u"CREATE TABLE RefDoc (Name TEXT(50), Object_ID TEXT(12), Explanation MEMO)"_s);
        QVERIFY(!database.isAsDeclared(schema::RefDoc()));
    }
};

QTEST_GUILESS_MAIN(TestDataSelection)
#include "test_data_selection.moc"

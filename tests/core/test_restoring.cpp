#include "app/base/ports/data_window.h"
#include "core/categories.h"
#include "core/category_entry.h"
#include "core/data_records.h"
#include "core/file_registration.h"
#include "core/kept_copies.h"
#include "core/links.h"
#include "core/lost_things.h"
#include "core/restoring.h"
#include "store/database.h"
#include "store/identifiers.h"
#include "store/keeper.h"
#include "store/kept/copies.h"
#include "store/record_set.h"
#include "tests/support/compare_text.h"
#include "tests/support/failure_box.h"
#include "tests/support/test_world.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <algorithm>
#include <memory>
#include <utility>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// What was lost, and putting it back.
class TestRestoring : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestWorld> world;

    static inline const QString Water = u"M-991231-001"_s;
    static inline const QString Fire = u"M-991231-002"_s;
    static inline const QString Book = u"R-991231-001"_s;

    Session& session() { return world->session; }

    /// Puts back the newest event of a kind.
    std::optional<PutBackResult> putBackNewest(EventKind kind)
    {
        LostThings things(session());
        things.ask({.text = {}, .kind = kind});
        while (things.readOn()) {
        }
        return things.count() > 0 ? PutBack(session(), things, 0) : std::nullopt;
    }
    /// Puts back the newest deleted item with an identifier, a moment later than whatever came before.
    std::optional<PutBackResult> putBackItem(const QString& identifier)
    {
        world->clock.time = world->clock.time.addSecs(1);
        LostThings things(session());
        things.ask({.text = identifier, .kind = EventKind::ItemDeleted});
        while (things.readOn()) {
        }
        for (std::size_t i = 0; i < things.count(); ++i) {
            if (things.entry(i).identifier == identifier)
                return PutBack(session(), things, i);
        }
        return std::nullopt;
    }
    std::optional<PutBackResult> putBackCategory(const QString& identifier)
    {
        later();
        LostThings things(session());
        things.ask({.text = {}, .kind = EventKind::CategoryDeleted});
        while (things.readOn()) {
        }
        for (std::size_t i = 0; i < things.count(); ++i) {
            if (things.entry(i).identifier == identifier)
                return PutBack(session(), things, i);
        }
        return std::nullopt;
    }
    /// Of the newest deletion of an item with an identifier.
    LostDetails detailsOf(const QString& identifier)
    {
        LostThings things(session());
        things.ask({.text = identifier, .kind = EventKind::ItemDeleted});
        while (things.readOn()) {
        }
        return things.count() > 0 ? things.details(0) : LostDetails();
    }
    void later() { world->clock.time = world->clock.time.addSecs(1); }
    /// What is done like this no history knows of.
    template <class Work> void withoutHistory(Work&& work)
    {
        Keeper* const keeper = std::exchange(session().keeper, nullptr);
        const QString path = session().OpenDb->path();
        world->openDatabase(path);
        work();
        session().keeper = keeper;
        world->openDatabase(path);
    }
    void deleteLater(const QString& identifier)
    {
        world->clock.time = world->clock.time.addSecs(1);
        QVERIFY(DeleteData(session(), identifier, 0));
    }
    static QString other(const QString& identifier) { return identifier == Water ? Fire : Water; }
    QStringList listed(const LostQuestion& question)
    {
        LostThings things(session());
        things.ask(question);
        while (things.readOn()) {
        }
        QStringList lines;
        for (std::size_t i = 0; i < things.count(); ++i) {
            const LostEntry entry = things.entry(i);
            lines << lostKindName(entry.kind) + u": "_s + entry.name + u" ("_s + entry.identifier + u')';
        }
        return lines;
    }
    void change(const QString& identifier, const QString& name, const QString& content)
    {
        RecordSet& rows = *session().RsMain;
        QVERIFY(rows.goTo(1, identifier));
        rows.edit();
        rows.setField(0, name);
        rows.setField(2, content);
        rows.update();
    }
    QString file() const { return world->folder.filePath(u"RefFile/図.txt"_s); }
    QByteArray registered() const
    {
        QFile content(file());
        return content.open(QIODevice::ReadOnly) ? content.readAll() : QByteArray();
    }
    /// Registers a file of this content under the same name as ever.
    void registerFile(const QString& content)
    {
        QDir(world->folder.path()).mkpath(u"RefFile"_s);
        QFile source(world->folder.filePath(u"図.txt"_s));
        QVERIFY(source.open(QIODevice::WriteOnly | QIODevice::Truncate));
        source.write(content.toUtf8());
        source.close();
        const FileEntry entry{
            .path = source.fileName(), .identifier = CreateObject_ID(session(), u"F"_s), .category = {}};
        QCOMPARE(RegisterFile(session(), entry, {}), FileRegistration::Registered);
    }
    static QString takenBy(const QString& name)
    {
        return u"データ「%1」は現在存在せず、その識別符号 %2 は別のものに付けられています。"
               u"何も変更していません。先に削除されたものを戻してください。"_s.arg(name, Water);
    }
    QString path() { return session().OpenDb->path(); }
    void makeCopy()
    {
        later();
        QCOMPARE(kept::makeCopy({.place = {*session().keeper->keptFolder(), path()},
                                 .fileFolder = {},
                                 .now = [this] { return world->clock.time; },
                                 .goesOn = [] { return true; },
                                 .inspection = kept::Inspection::Quick}),
                 kept::CopyOutcome::Made);
        later();
    }
    /// Takes a copy out in the place of the database, the newest being number 0.
    void takeOut(std::size_t number)
    {
        later();
        const QString file = path();
        session().closeDatabase();
        QVERIFY(QFile::remove(file));
        QVERIFY(TakeOutCopy(session(), ListCopies(session(), file).at(number), file));
        world->openDatabase(file);
        later();
    }
    static MessageBox failureBoxSaying(const QString& description)
    {
        MessageBox box = failureBox(u"PutBack"_s, 0);
        box.text =
            u"対処不能なエラーが発生しました。\r\nLOCATION : PutBack\r\nEXPLANATION : "_s + description;
        return box;
    }
    QStringList rowsOf(const std::shared_ptr<RecordSet>& rows) { return TestWorld::rowsOf(rows); }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        world->keep();
        world->openDatabase(world->createDatabase());
        TestWorld::addRow(session().RsMain, {u"水"_s, Water, u"流れるもの"_s});
        TestWorld::addRow(session().RsMain, {u"火"_s, Fire, u"燃えるもの"_s});
        TestWorld::addRow(session().RsRefDoc, {u"物質の本"_s, Book, u"水について\r\n火について"_s});
        TestWorld::addRow(session().RsCategoryID, {u"A"_s, u"自然"_s});
        TestWorld::addRow(session().RsCategoryID, {u"A-A"_s, u"液体"_s});
        TestWorld::addRow(session().RsCategory, {u"A-A"_s, Water});
        TestWorld::addRow(session().RsLink, {Book, Water});
        TestWorld::addRow(session().RsLink, {Water, Fire});
    }
    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void aDeletedItemComesBackWithItsLinksAndCategories()
    {
        const QStringList links = rowsOf(session().RsLink);
        QVERIFY(DeleteData(session(), Water, 0));
        const auto result = putBackNewest(EventKind::ItemDeleted);
        QVERIFY(result);
        QVERIFY(compareText(result->text, u"データ「水」を戻しました。"));
        QCOMPARE(result->identifier, Water);
        QCOMPARE(rowsOf(session().RsMain),
                 QStringList({u"火|M-991231-002|燃えるもの"_s, u"水|M-991231-001|流れるもの"_s}));
        QCOMPARE(rowsOf(session().RsLink), links);
        QCOMPARE(rowsOf(session().RsCategory), QStringList(u"A-A|M-991231-001"_s));
    }

    void aDocumentComesBackToTheLastCharacter()
    {
        const QStringList before = rowsOf(session().RsRefDoc);
        QVERIFY(DeleteData(session(), Book, 0));
        QVERIFY(putBackNewest(EventKind::ItemDeleted));
        QCOMPARE(rowsOf(session().RsRefDoc), before);
    }

    void aRowThatWasWiderThanItsFieldsComesBackAsItWas()
    {
        RecordSet& rows = *session().RsMain;
        rows.addNew();
        rows.setField(0, QString(60, u'長'));
        rows.setField(1, u"M-991231-009"_s);
        rows.setField(2, QString(300, u'広'));
        rows.update(RecordSet::Widths::Exceeded);
        const QStringList before = rowsOf(session().RsMain);
        QVERIFY(DeleteData(session(), u"M-991231-009"_s, 0));
        QVERIFY(putBackNewest(EventKind::ItemDeleted));
        QCOMPARE(rowsOf(session().RsMain), before);
    }

    void whereItsIdentifierIsTakenAnItemGetsTheNextOneWithAllItsLinks()
    {
        QVERIFY(DeleteData(session(), Water, 0));
        TestWorld::addRow(session().RsMain, {u"土"_s, Water, u""_s});
        const auto result = putBackNewest(EventKind::ItemDeleted);
        QVERIFY(result && result->hasOtherIdentifier);
        QVERIFY(compareText(result->text, u"データ「水」を戻しました。\r\n元の識別符号は使われているため、"
                                          u"新しい識別符号は M-991231-003 です。"));
        QVERIFY(rowsOf(session().RsMain).contains(u"土|M-991231-001|"_s));
        QVERIFY(rowsOf(session().RsMain).contains(u"水|M-991231-003|流れるもの"_s));
        QCOMPARE(rowsOf(session().RsLink),
                 QStringList({u"R-991231-001|M-991231-003"_s, u"M-991231-003|M-991231-002"_s}));
        QCOMPARE(rowsOf(session().RsCategory), QStringList(u"A-A|M-991231-003"_s));
    }

    void whatWouldPointToNothingStaysAwayAndIsTold()
    {
        QVERIFY(DeleteData(session(), Water, 0));
        QVERIFY(DeleteData(session(), Fire, 0));
        QVERIFY(DeleteCategory(session(), u"A-A"_s, 0));
        LostThings things(session());
        things.ask({.text = u"流れる"_s});
        QVERIFY(things.readOn());
        QCOMPARE(things.count(), std::size_t{1});
        const auto result = PutBack(session(), things, 0);
        QVERIFY(result);
        QCOMPARE(result->missing, 2);
        QVERIFY(compareText(result->text, u"データ「水」を戻しました。\r\n"
                                          u"相手が存在しないリンクや分類 (2 件) は戻していません。"));
        QCOMPARE(rowsOf(session().RsLink), QStringList(u"R-991231-001|M-991231-001"_s));
        QCOMPARE(rowsOf(session().RsCategory), QStringList());
    }

    void twoItemsDeletedTogetherComeBackWithTheLinkBetweenThem()
    {
        const int deleted = static_cast<int>(
            DeleteManyData(session(),
                           {{.identifier = Water, .name = u"水"_s}, {.identifier = Fire, .name = u"火"_s}},
                           [] {})
                .size());
        QCOMPARE(deleted, 2);
        LostThings things(session());
        things.ask({});
        QVERIFY(things.readOn());
        QCOMPARE(things.count(), std::size_t{2});
        QVERIFY(PutBack(session(), things, 0));
        QVERIFY(PutBack(session(), things, 1));
        QVERIFY(rowsOf(session().RsLink).contains(u"M-991231-001|M-991231-002"_s));
    }

    void aLinkBetweenTwoDeletedItemsComesBackWhicheverIsPutBackFirst_data()
    {
        QTest::addColumn<QString>("deletedFirst");
        QTest::addColumn<QString>("backFirst");
        QTest::newRow("source, source") << Water << Water;
        QTest::newRow("source, target") << Water << Fire;
        QTest::newRow("target, source") << Fire << Water;
        QTest::newRow("target, target") << Fire << Fire;
    }
    void aLinkBetweenTwoDeletedItemsComesBackWhicheverIsPutBackFirst()
    {
        QFETCH(QString, deletedFirst);
        QFETCH(QString, backFirst);
        const QStringList before = rowsOf(session().RsLink);
        for (const QString& identifier : {deletedFirst, other(deletedFirst)})
            deleteLater(identifier);
        for (const QString& identifier : {backFirst, other(backFirst)})
            QVERIFY(putBackItem(identifier));
        QStringList after = rowsOf(session().RsLink);
        std::sort(after.begin(), after.end());
        QStringList expected = before;
        std::sort(expected.begin(), expected.end());
        QCOMPARE(after, expected);
    }

    void aLinkComesBackAlsoWithOtherIdentifiersAtBothEnds()
    {
        deleteLater(Water);
        deleteLater(Fire);
        TestWorld::addRow(session().RsMain, {u"土"_s, Water, u""_s});
        TestWorld::addRow(session().RsMain, {u"風"_s, Fire, u""_s});
        const auto first = putBackItem(Water);
        QVERIFY(first && first->identifier == u"M-991231-003"_s);
        QCOMPARE(first->missing, 1);
        QCOMPARE(rowsOf(session().RsLink), QStringList(u"R-991231-001|M-991231-003"_s));
        const auto second = putBackItem(Fire);
        QVERIFY(second && second->identifier == u"M-991231-004"_s);
        QCOMPARE(second->missing, 0);
        QCOMPARE(rowsOf(session().RsLink),
                 QStringList({u"R-991231-001|M-991231-003"_s, u"M-991231-003|M-991231-004"_s}));
    }

    void whoeverBearsTheIdentifierNowIsNotLinkedInItsPlace()
    {
        deleteLater(Water);
        deleteLater(Fire);
        TestWorld::addRow(session().RsMain, {u"風"_s, Fire, u""_s});
        const auto result = putBackItem(Water);
        QVERIFY(result);
        QCOMPARE(result->missing, 1);
        QCOMPARE(rowsOf(session().RsLink), QStringList(u"R-991231-001|M-991231-001"_s));
    }

    void aLinkThatWasRemovedSinceIsNotDueAnyMore()
    {
        deleteLater(Water);
        deleteLater(Fire);
        QVERIFY(putBackItem(Water));
        QVERIFY(putBackItem(Fire));
        session().RsLink->deleteEveryRow();
        deleteLater(Fire);
        QVERIFY(putBackItem(Fire));
        QCOMPARE(rowsOf(session().RsLink), QStringList());
    }

    void aDeletedItemAndItsDeletedCategoryMeetAgainWhicheverIsPutBackFirst_data()
    {
        QTest::addColumn<bool>("itemDeletedFirst");
        QTest::addColumn<bool>("itemBackFirst");
        QTest::newRow("item, item") << true << true;
        QTest::newRow("item, category") << true << false;
        QTest::newRow("category, item") << false << true;
        QTest::newRow("category, category") << false << false;
    }
    void aDeletedItemAndItsDeletedCategoryMeetAgainWhicheverIsPutBackFirst()
    {
        QFETCH(bool, itemDeletedFirst);
        QFETCH(bool, itemBackFirst);
        if (itemDeletedFirst)
            deleteLater(Water);
        QVERIFY(DeleteCategory(session(), u"A-A"_s, 0));
        if (!itemDeletedFirst)
            deleteLater(Water);
        world->clock.time = world->clock.time.addSecs(1);
        if (itemBackFirst)
            QVERIFY(putBackItem(Water));
        QVERIFY(putBackNewest(EventKind::CategoryDeleted));
        if (!itemBackFirst)
            QVERIFY(putBackItem(Water));
        QCOMPARE(rowsOf(session().RsCategory), QStringList(u"A-A|M-991231-001"_s));
    }

    void puttingBackTwiceMakesASecondItemAndNoSecondLink()
    {
        QVERIFY(DeleteData(session(), Water, 0));
        QVERIFY(putBackNewest(EventKind::ItemDeleted));
        const auto result = putBackNewest(EventKind::ItemDeleted);
        QVERIFY(result && result->hasOtherIdentifier);
        QCOMPARE(rowsOf(session().RsLink).size(), 4);
    }

    void changedTextsComeBackAndWhatTheyReplaceIsKept()
    {
        change(Water, u"お湯"_s, u"熱いもの"_s);
        const auto result = putBackNewest(EventKind::ItemChanged);
        QVERIFY(result);
        QVERIFY(compareText(result->text, u"データ「水」を更新前の内容に戻しました。"));
        QVERIFY(rowsOf(session().RsMain).contains(u"水|M-991231-001|流れるもの"_s));
        QCOMPARE(listed({}).first(), u"データの更新: お湯 (M-991231-001)"_s);
    }

    void theTextsOfAnItemThatIsGoneCannotComeBackAlone()
    {
        change(Water, u"お湯"_s, u"熱いもの"_s);
        QVERIFY(DeleteData(session(), Water, 0));
        world->dialogs.expect(
            failureBoxSaying(u"データ「水」は現在存在しません。先に削除されたものを戻してください。"_s));
        QVERIFY(!putBackNewest(EventKind::ItemChanged));
        QCOMPARE(session().RsMain->recordCount(), 1);
    }

    void formerTextsReachNobodyElseWhoBearsTheIdentifierNow()
    {
        change(Water, u"お湯"_s, u"熱いもの"_s);
        deleteLater(Water);
        TestWorld::addRow(session().RsMain, {u"土"_s, Water, u"踏むもの"_s});
        const QStringList before = rowsOf(session().RsMain);
        world->dialogs.expect(failureBoxSaying(
            u"データ「水」は現在存在せず、その識別符号 M-991231-001 は別のものに付けられています。"
            u"何も変更していません。先に削除されたものを戻してください。"_s));
        QVERIFY(!putBackNewest(EventKind::ItemChanged));
        QCOMPARE(rowsOf(session().RsMain), before);
    }

    void formerTextsReachTheirItemAlsoUnderTheIdentifierThatItGotWhenItCameBack()
    {
        change(Water, u"お湯"_s, u"熱いもの"_s);
        deleteLater(Water);
        TestWorld::addRow(session().RsMain, {u"土"_s, Water, u"踏むもの"_s});
        const auto back = putBackItem(Water);
        QVERIFY(back && back->identifier == u"M-991231-003"_s);
        const auto result = putBackNewest(EventKind::ItemChanged);
        QVERIFY(result);
        QCOMPARE(result->identifier, u"M-991231-003"_s);
        QVERIFY(rowsOf(session().RsMain).contains(u"水|M-991231-003|流れるもの"_s));
        QVERIFY(rowsOf(session().RsMain).contains(u"土|M-991231-001|踏むもの"_s));
    }

    void whoGotTheIdentifierWhileNothingWasKeptStaysAsItIs()
    {
        change(Water, u"お湯"_s, u"熱いもの"_s);
        withoutHistory([&] {
            QVERIFY(DeleteData(session(), Water, 0));
            TestWorld::addRow(session().RsMain, {u"土"_s, Water, u"踏むもの"_s});
        });
        const QStringList before = rowsOf(session().RsMain);
        world->dialogs.expect(failureBoxSaying(
            u"データ「水」は現在存在せず、その識別符号 M-991231-001 は別のものに付けられています。"
            u"何も変更していません。先に削除されたものを戻してください。"_s));
        QVERIFY(!putBackNewest(EventKind::ItemChanged));
        QCOMPARE(rowsOf(session().RsMain), before);
    }

    void formerTextsReachTheirItemInAnOlderCopyUnderTheSameName()
    {
        change(Water, u"湯"_s, u"熱い"_s);
        makeCopy();
        deleteLater(Water);
        takeOut(0);
        QVERIFY(putBackNewest(EventKind::ItemChanged));
        QVERIFY(TestWorld::rowsOf(session().RsMain).contains(u"水|"_s + Water + u"|流れるもの"_s));
        // From now on it is deleted as ever.
        deleteLater(Water);
        world->dialogs.expect(
            failureBoxSaying(u"データ「湯」は現在存在しません。先に削除されたものを戻してください。"_s));
        QVERIFY(!putBackNewest(EventKind::ItemChanged));
    }

    void linksComeBackInAnOlderCopyUnderTheSameName()
    {
        deleteLater(Fire);
        makeCopy();
        deleteLater(Water);
        takeOut(0);
        const auto back = putBackItem(Fire);
        QVERIFY(back);
        QCOMPARE(back->missing, 0);
        QVERIFY(areLinked(session(), Water, Fire));
    }

    void whatWasDeletedBeforeTheCopyWasMadeIsGoneInIt()
    {
        change(Water, u"湯"_s, u"熱い"_s);
        deleteLater(Water);
        TestWorld::addRow(session().RsMain, {u"氷"_s, Water, u"固い"_s});
        makeCopy();
        takeOut(0);
        const QStringList before = TestWorld::rowsOf(session().RsMain);
        world->dialogs.expect(failureBoxSaying(takenBy(u"水"_s)));
        QVERIFY(!putBackNewest(EventKind::ItemChanged));
        QCOMPARE(TestWorld::rowsOf(session().RsMain), before);
    }

    void whatCameBackWithALaterCopyHasHappened()
    {
        change(Water, u"湯"_s, u"熱い"_s);
        makeCopy();
        deleteLater(Water);
        TestWorld::addRow(session().RsMain, {u"氷"_s, Water, u"固い"_s});
        makeCopy();
        takeOut(1);
        takeOut(0);
        const QStringList before = TestWorld::rowsOf(session().RsMain);
        world->dialogs.expect(failureBoxSaying(takenBy(u"水"_s)));
        QVERIFY(!putBackNewest(EventKind::ItemChanged));
        QCOMPARE(TestWorld::rowsOf(session().RsMain), before);
    }

    void whatAnotherProgramHasDeletedSinceTheListWasReadCounts()
    {
        change(Water, u"お湯"_s, u"熱いもの"_s);
        LostThings things(session());
        things.ask({.text = {}, .kind = EventKind::ItemChanged});
        while (things.readOn()) {
        }
        deleteLater(Water);
        TestWorld::addRow(session().RsMain, {u"土"_s, Water, u"踏むもの"_s});
        world->dialogs.expect(failureBoxSaying(
            u"データ「水」は現在存在せず、その識別符号 M-991231-001 は別のものに付けられています。"
            u"何も変更していません。先に削除されたものを戻してください。"_s));
        QVERIFY(!PutBack(session(), things, 0));
        QVERIFY(rowsOf(session().RsMain).contains(u"土|M-991231-001|踏むもの"_s));
    }

    void aRemovedLinkComesBackOnce()
    {
        const QStringList before = rowsOf(session().RsLink);
        session().RsLink->moveLast();
        session().RsLink->deleteRow();
        for (int times = 0; times < 2; ++times) {
            const auto result = putBackNewest(EventKind::LinkRemoved);
            QVERIFY(result);
            QVERIFY(compareText(result->text, u"リンクを戻しました。"));
            QCOMPARE(rowsOf(session().RsLink), before);
        }
    }

    void aLinkOfAnItemThatIsGoneDoesNotComeBack()
    {
        session().RsLink->deleteEveryRow();
        QVERIFY(DeleteData(session(), Fire, 0));
        world->dialogs.expect(failureBoxSaying(u"データ (M-991231-002) が現在存在しないため、戻せません。"
                                               u"先に削除されたものを戻してください。"_s));
        QVERIFY(!putBackNewest(EventKind::LinkRemoved));
        QCOMPARE(rowsOf(session().RsLink), QStringList());
    }

    void anItemTakenOutOfACategoryComesBackIntoIt()
    {
        DeleteCategoryEntry(session(), u"A-A"_s, Water);
        const auto result = putBackNewest(EventKind::TakenOutOfCategory);
        QVERIFY(result);
        QVERIFY(compareText(result->text, u"分類を戻しました。"));
        QCOMPARE(rowsOf(session().RsCategory), QStringList(u"A-A|M-991231-001"_s));
    }

    void aDeletedCategoryComesBackWithItsMembers()
    {
        TestWorld::addRow(session().RsCategory, {u"A-A"_s, Book});
        QVERIFY(DeleteCategory(session(), u"A-A"_s, 0));
        const auto result = putBackNewest(EventKind::CategoryDeleted);
        QVERIFY(result);
        QVERIFY(compareText(result->text, u"カテゴリ「液体」を戻しました。"));
        QCOMPARE(listed({}), QStringList(u"カテゴリの削除: 液体 (A-A)"_s));
        QCOMPARE(rowsOf(session().RsCategoryID), QStringList({u"A|自然"_s, u"A-A|液体"_s}));
        QCOMPARE(rowsOf(session().RsCategory), QStringList({u"A-A|M-991231-001"_s, u"A-A|R-991231-001"_s}));
    }

    void whereItsIdentifierIsTakenACategoryGetsTheNextOneOfItsParent()
    {
        QVERIFY(DeleteCategory(session(), u"A-A"_s, 0));
        TestWorld::addRow(session().RsCategoryID, {u"A-A"_s, u"固体"_s});
        const auto result = putBackNewest(EventKind::CategoryDeleted);
        QVERIFY(result && result->hasOtherIdentifier);
        QCOMPARE(result->identifier, u"A-B"_s);
        QVERIFY(rowsOf(session().RsCategoryID).contains(u"A-B|液体"_s));
        QCOMPARE(rowsOf(session().RsCategory), QStringList(u"A-B|M-991231-001"_s));
    }

    void aRenamedCategoryGetsItsNameBack()
    {
        RenameCategory(session(), presentCategory(session(), u"A"_s), u"世界"_s);
        const auto result = putBackNewest(EventKind::CategoryRenamed);
        QVERIFY(result);
        QVERIFY(compareText(result->text, u"カテゴリの名称を「自然」に戻しました。"));
        QVERIFY(rowsOf(session().RsCategoryID).contains(u"A|自然"_s));
        QCOMPARE(listed({}).size(), 2);
    }

    void theFormerNameReachesNobodyElseWhoBearsTheIdentifierNow()
    {
        RenameCategory(session(), presentCategory(session(), u"A-A"_s), u"流体"_s);
        later();
        QVERIFY(DeleteCategory(session(), u"A-A"_s, 0));
        TestWorld::addRow(session().RsCategoryID, {u"A-A"_s, u"固体"_s});
        world->dialogs.expect(failureBoxSaying(
            u"カテゴリ「液体」は現在存在せず、その識別符号 A-A は別のものに付けられています。"
            u"何も変更していません。先に削除されたものを戻してください。"_s));
        QVERIFY(!putBackNewest(EventKind::CategoryRenamed));
        QVERIFY(rowsOf(session().RsCategoryID).contains(u"A-A|固体"_s));
        later();
        QVERIFY(putBackNewest(EventKind::CategoryDeleted));
        const auto result = putBackNewest(EventKind::CategoryRenamed);
        QVERIFY(result);
        QCOMPARE(result->identifier, u"A-B"_s);
        QCOMPARE(rowsOf(session().RsCategoryID), QStringList({u"A|自然"_s, u"A-A|固体"_s, u"A-B|液体"_s}));
    }

    void aCategoryWithoutItsParentIsToldAndStaysAway()
    {
        QVERIFY(DeleteCategory(session(), u"A-A"_s, 0));
        later();
        QVERIFY(DeleteCategory(session(), u"A"_s, 0));
        world->dialogs.expect(
            failureBoxSaying(u"カテゴリ「液体」の上位のカテゴリ (A) が現在存在しないため、戻せません。"
                             u"先に上位のカテゴリを戻してください。"_s));
        QVERIFY(!putBackCategory(u"A-A"_s));
        QCOMPARE(rowsOf(session().RsCategoryID), QStringList());
        QVERIFY(putBackCategory(u"A"_s));
        QVERIFY(putBackCategory(u"A-A"_s));
        QCOMPARE(rowsOf(session().RsCategoryID), QStringList({u"A|自然"_s, u"A-A|液体"_s}));
        QCOMPARE(rowsOf(session().RsCategory), QStringList(u"A-A|M-991231-001"_s));
    }

    void aCategoryComesBackUnderItsParentAndNotUnderAnotherWithItsIdentifier()
    {
        QVERIFY(DeleteCategory(session(), u"A-A"_s, 0));
        later();
        QVERIFY(DeleteCategory(session(), u"A"_s, 0));
        TestWorld::addRow(session().RsCategoryID, {u"A"_s, u"人工"_s});
        world->dialogs.expect(
            failureBoxSaying(u"カテゴリ「液体」の上位のカテゴリ (A) が現在存在しないため、戻せません。"
                             u"先に上位のカテゴリを戻してください。"_s));
        QVERIFY(!putBackCategory(u"A-A"_s));
        QCOMPARE(rowsOf(session().RsCategoryID), QStringList(u"A|人工"_s));
        QVERIFY(putBackCategory(u"A"_s));
        const auto result = putBackCategory(u"A-A"_s);
        QVERIFY(result);
        QVERIFY(compareText(result->text,
                            u"カテゴリ「液体」を戻しました。\r\n"
                            u"上位のカテゴリの識別符号が変わっているため、新しい識別符号は B-A です。"));
        QCOMPARE(rowsOf(session().RsCategoryID), QStringList({u"A|人工"_s, u"B|自然"_s, u"B-A|液体"_s}));
        QCOMPARE(rowsOf(session().RsCategory), QStringList(u"B-A|M-991231-001"_s));
    }

    void aReplacedFileGetsItsContentBackAndWhatStoodThereIsKept()
    {
        registerFile(u"old"_s);
        registerFile(u"new"_s);
        QCOMPARE(registered(), QByteArray("new"));
        const auto result = putBackNewest(EventKind::FileReplaced);
        QVERIFY(result);
        QVERIFY(compareText(result->text, u"ファイル「図.txt」を上書き前の内容に戻しました。"));
        QCOMPARE(registered(), QByteArray("old"));
        world->clock.time = world->clock.time.addSecs(1);
        QCOMPARE(listed({}),
                 QStringList({u"ファイルの上書き: 図.txt ()"_s, u"ファイルの上書き: 図.txt ()"_s}));
        QVERIFY(putBackNewest(EventKind::FileReplaced));
        QCOMPARE(registered(), QByteArray("new"));
    }

    void aFileReplacedAMomentAgoComesBackAtOnceAsOftenAsOneLikes()
    {
        registerFile(u"old"_s);
        registerFile(u"new"_s);
        for (int times = 0; times < 3; ++times) {
            world->clock.time = world->clock.time.addSecs(1);
            QVERIFY(putBackNewest(EventKind::FileReplaced));
            QCOMPARE(registered(), times % 2 == 0 ? QByteArray("old") : QByteArray("new"));
        }
        QVERIFY(QFile::remove(file()));
        QVERIFY(putBackNewest(EventKind::FileReplaced));
        QCOMPARE(registered(), QByteArray("new")); // what the last putting back replaced
    }

    void theSameFileRegisteredOnceMoreReplacesNothing()
    {
        registerFile(u"old"_s);
        registerFile(u"old"_s);
        QCOMPARE(listed({}), QStringList());
    }

    void aFileWhoseContentWasNotKeptStaysAsItIs()
    {
        registerFile(u"old"_s);
        registerFile(u"new"_s);
        QVERIFY(QDir(kept::Place(*session().keeper->keptFolder(), session().OpenDb->path()).files())
                    .removeRecursively());
        world->dialogs.expect(failureBoxSaying(u"ファイル「図.txt」の上書き前の内容は残されていません。"_s));
        QVERIFY(!putBackNewest(EventKind::FileReplaced));
        QCOMPARE(registered(), QByteArray("new"));
    }

    void aFileWhoseContentIsKeptAlreadyIsReplacedAlsoWhereNothingMoreCanBeKept()
    {
        registerFile(u"old"_s);
        registerFile(u"new"_s);
        later();
        QVERIFY(putBackNewest(EventKind::FileReplaced)); // keeps "new"
        QFile full(kept::Place(*session().keeper->keptFolder(), session().OpenDb->path()).files() +
                   u"/full"_s);
        QVERIFY(full.open(QIODevice::WriteOnly) && full.resize(qint64{1} << 32)); // takes no room on the disk
        full.close();
        later();
        QVERIFY(putBackNewest(EventKind::FileReplaced));
        QCOMPARE(registered(), QByteArray("new"));
        QCOMPARE(world->eventLog.lines, QStringList());
    }

    void aFileThatCannotBeKeptIsNotReplacedByItsFormerContent()
    {
        registerFile(u"old"_s);
        registerFile(u"new"_s);
        QFile large(file());
        QVERIFY(large.open(QIODevice::WriteOnly) &&
                large.resize(qint64{1} << 30)); // takes no room on the disk
        large.close();
        world->dialogs.expect(
            failureBoxSaying(u"現在のファイル「図.txt」の内容を残せないため、戻しませんでした。"_s));
        QVERIFY(!putBackNewest(EventKind::FileReplaced));
        QCOMPARE(QFileInfo(file()).size(), qint64{1} << 30);
        QCOMPARE(
            world->eventLog.lines.first(),
            u"1999/12/31, 23:45, LOCATION : History, ErrorNumber : 75, DESCRIPTION : 上書きされるファイル「%1」の内容は"
            u"残せませんでした。大きすぎるか、空き領域またはアクセス権がありません。"_s.arg(file()));
    }

    void theDetailsOfAReplacedFileTellItsSizes()
    {
        registerFile(u"old"_s);
        registerFile(u"newer"_s);
        LostThings things(session());
        things.ask({});
        QVERIFY(things.readOn());
        const LostDetails details = things.details(0);
        QCOMPARE(details.fields.at(1).label, u"大きさ"_s);
        QCOMPARE(details.fields.at(1).before, u"3 バイト"_s);
        QCOMPARE(details.fields.at(1).now, u"5 バイト"_s);
    }

    void whatCannotBePutBackWholeIsNotPutBackAtAll()
    {
        QVERIFY(DeleteData(session(), Water, 0));
        // The table of memberships refuses the last row of the write.
        session().OpenDb->connection().execute(u"DROP TABLE Category"_s);
        session().OpenDb->connection().execute(
            u"CREATE TABLE Category (Category_ID TEXT, Object_ID TEXT CHECK (Object_ID = ''))"_s);
        world->dialogs.expect(failureBox(u"PutBack"_s, errors::InvalidArgument));
        QVERIFY(!putBackNewest(EventKind::ItemDeleted));
        QCOMPARE(rowsOf(session().RsMain), QStringList(u"火|M-991231-002|燃えるもの"_s));
        QCOMPARE(rowsOf(session().RsLink), QStringList());
    }

    void theListIsSearchedAsAReaderCompares_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("found");
        QTest::newRow("everything") << QString() << 3;
        QTest::newRow("a name") << u"火"_s << 2; // and the document's text
        QTest::newRow("a text in other kana") << u"モエル"_s.replace(u"モ"_s, u"燃"_s) << 1;
        QTest::newRow("an identifier in full width") << u"Ｒ-９９"_s << 1;
        QTest::newRow("nothing") << u"風"_s << 0;
    }
    void theListIsSearchedAsAReaderCompares()
    {
        QFETCH(QString, text);
        QFETCH(int, found);
        for (const QString& identifier : {Water, Fire, Book})
            QVERIFY(DeleteData(session(), identifier, 0));
        QCOMPARE(listed({.text = text}).size(), found);
    }

    void theNamesOfWhatALinkOrAMembershipBelongsToAreFound_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("found");
        const QString link = u"リンクの解除: 物質の本 - 水 (R-991231-001 - M-991231-001)"_s;
        const QString membership = u"分類の解除: 液体 - 水 (A-A - M-991231-001)"_s;
        QTest::newRow("source") << u"物質"_s << QStringList(link);
        QTest::newRow("target and item") << u"水"_s << QStringList({link, membership});
        QTest::newRow("category") << u"液体"_s << QStringList(membership);
        QTest::newRow("nobody") << u"火"_s << QStringList();
    }
    void theNamesOfWhatALinkOrAMembershipBelongsToAreFound()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, found);
        DeleteCategoryEntry(session(), u"A-A"_s, Water);
        later();
        session().RsLink->moveFirst();
        session().RsLink->deleteRow();
        QCOMPARE(listed({.text = text}), found);
    }

    void whatALinkBelongedToIsNamedAlsoWhenItIsGoneAndAnotherBearsItsIdentifier()
    {
        session().RsLink->moveFirst();
        session().RsLink->deleteRow();
        deleteLater(Water);
        TestWorld::addRow(session().RsMain, {u"土"_s, Water, u"踏むもの"_s});
        const QStringList link = {u"リンクの解除: 物質の本 - 水 (R-991231-001 - M-991231-001)"_s};
        QCOMPARE(listed({.text = u"物質の本 - 水"_s, .kind = EventKind::LinkRemoved}), QStringList());
        QCOMPARE(listed({.text = u"水"_s, .kind = EventKind::LinkRemoved}), link);
        QCOMPARE(listed({.text = u"土"_s, .kind = EventKind::LinkRemoved}), QStringList());
    }

    void theListShowsWhatWasLostNewestFirst()
    {
        RenameCategory(session(), presentCategory(session(), u"A"_s), u"世界"_s);
        world->clock.time = world->clock.time.addSecs(1);
        DeleteCategoryEntry(session(), u"A-A"_s, Water);
        world->clock.time = world->clock.time.addSecs(1);
        session().RsLink->moveFirst();
        session().RsLink->deleteRow();
        world->clock.time = world->clock.time.addSecs(1);
        QVERIFY(DeleteData(session(), Fire, 0));
        QCOMPARE(listed({}), QStringList({u"データの削除: 火 (M-991231-002)"_s,
                                          u"リンクの解除: 物質の本 - 水 (R-991231-001 - M-991231-001)"_s,
                                          u"分類の解除: 液体 - 水 (A-A - M-991231-001)"_s,
                                          u"カテゴリ名の変更: 自然 (A)"_s}));
        QCOMPARE(listed({.text = {}, .kind = EventKind::LinkRemoved}).size(), 1);
    }

    void anEntrySaysWhenAndByWhatItCameAbout()
    {
        QVERIFY(DeleteData(session(), Water, 0));
        LostThings things(session());
        things.ask({});
        QVERIFY(things.readOn());
        QCOMPARE(things.entry(0).time, world->clock.time);
        QCOMPARE(things.entry(0).operation, u"DeleteData"_s);
    }

    void theListIsReadAsFarAsItIsAskedFor()
    {
        for (const QString& identifier : {Water, Fire, Book})
            QVERIFY(DeleteData(session(), identifier, 0));
        LostThings things(session());
        things.ask({});
        QCOMPARE(things.count(), std::size_t{0});
        QVERIFY(things.readOn(2));
        QCOMPARE(things.count(), std::size_t{2});
        QVERIFY(things.readOn(2));
        QCOMPARE(things.count(), std::size_t{3});
        QVERIFY(!things.readOn(2));
    }

    void theDetailsCompareBeforeAndNow()
    {
        change(Water, u"お湯"_s, u"熱いもの"_s);
        LostThings things(session());
        things.ask({});
        QVERIFY(things.readOn());
        const LostDetails details = things.details(0);
        QStringList lines;
        for (const LostField& field : details.fields)
            lines << field.label + u": "_s + field.before + u" -> "_s + field.now.value_or(u"gone"_s);
        QCOMPARE(lines, QStringList({u"名称: 水 -> お湯"_s, u"識別符号: M-991231-001 -> M-991231-001"_s,
                                     u"定義: 流れるもの -> 熱いもの"_s}));
    }

    void theDetailsOfADeletedItemNameWhatHungOnIt()
    {
        QVERIFY(DeleteData(session(), Water, 0));
        LostThings things(session());
        things.ask({});
        QVERIFY(things.readOn());
        const LostDetails details = things.details(0);
        QCOMPARE(details.links, QStringList({u"物質の本 (R-991231-001)"_s, u"火 (M-991231-002)"_s}));
        QCOMPARE(details.categories, QStringList(u"液体 (A-A)"_s));
        QVERIFY(!details.fields.at(0).now);
    }

    void theDetailsDoNotCompareWithAnotherThatBearsTheIdentifierNow()
    {
        deleteLater(Water);
        TestWorld::addRow(session().RsMain, {u"土"_s, Water, u"踏むもの"_s});
        TestWorld::addRow(session().RsLink, {Water, Fire});
        const LostDetails details = detailsOf(Water);
        QCOMPARE(details.present(), LostDetails::Present::Gone);
        QVERIFY(details.isIdentifierTaken);
        QCOMPARE(details.links, QStringList({u"物質の本 (R-991231-001)"_s, u"火 (M-991231-002)"_s}));
        QCOMPARE(details.linksNow, QStringList());
    }

    void theDetailsFindWhatIsBackUnderAnotherIdentifierWithItsRelations()
    {
        deleteLater(Fire);
        TestWorld::addRow(session().RsMain, {u"風"_s, Fire, u""_s});
        deleteLater(Water);
        TestWorld::addRow(session().RsMain, {u"土"_s, Water, u"踏むもの"_s});
        QVERIFY(putBackItem(Fire));
        QVERIFY(putBackItem(Water));
        later();
        const LostDetails water = detailsOf(Water);
        QCOMPARE(water.fields.at(0).now, u"水"_s);
        QCOMPARE(water.fields.at(1).now, u"M-991231-004"_s);
        QCOMPARE(water.categories, QStringList(u"液体 (A-A)"_s));
        QCOMPARE(water.categoriesNow, QStringList(u"液体 (A-A)"_s));
        const LostDetails fire = detailsOf(Fire);
        QCOMPARE(fire.links, QStringList(u"水 (M-991231-001)"_s));
        QCOMPARE(fire.linksNow, QStringList(u"水 (M-991231-004)"_s));
    }

    void ofADatabaseThatIsNotOpenTheListIsReadAndNothingIsPutBack()
    {
        deleteLater(Water);
        const QString path = session().OpenDb->path();
        world->openDatabase(world->createDatabase(u"別.mdb"_s));
        LostThings things(session(), path);
        things.ask({});
        QVERIFY(things.readOn());
        QCOMPARE(things.entry(0).name, u"水"_s);
        const LostDetails details = things.details(0);
        QCOMPARE(details.fields.at(2).before, u"流れるもの"_s);
        QCOMPARE(details.present(), LostDetails::Present::Gone);
        QCOMPARE(details.links.size(), 2);
        world->dialogs.expect(
            failureBoxSaying(u"データベース「%1」が展開されていないため、戻せません。"_s.arg(path)));
        QVERIFY(!PutBack(session(), things, 0));
        QCOMPARE(session().RsMain->recordCount(), 0);
    }

    void aRowOfTheTableWithoutAWindowIsListedToo()
    {
        TestWorld::addRow(session().RsOpenApp, {u"editor"_s, u"/bin/editor"_s});
        session().RsOpenApp->deleteEveryRow();
        QCOMPARE(listed({}), QStringList(u"その他: editor ()"_s));
        LostThings things(session());
        things.ask({});
        QVERIFY(things.readOn());
        QCOMPARE(things.details(0).fields.at(0).label, u"アプリケーション"_s);
        QCOMPARE(things.details(0).fields.at(1).label, u"パス"_s);
        world->dialogs.expect(failureBox(u"PutBack"_s, errors::InvalidArgument));
        QVERIFY(!PutBack(session(), things, 0));
    }

    void theDetailsOfADeletedCategoryNameItsMembers()
    {
        QVERIFY(DeleteCategory(session(), u"A-A"_s, 0));
        LostThings things(session());
        things.ask({});
        QVERIFY(things.readOn());
        QCOMPARE(things.details(0).members, QStringList(u"水 (M-991231-001)"_s));
    }

    void whereNothingIsKeptTheListIsEmpty()
    {
        session().keeper = nullptr;
        LostThings things(session());
        things.ask({});
        QVERIFY(!things.readOn());
    }
};

QTEST_GUILESS_MAIN(TestRestoring)
#include "test_restoring.moc"

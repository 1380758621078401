#include "app/base/error.h"
#include "store/filter_result.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"

#include <QTest>

#include <functional>
#include <limits>
#include <memory>

using namespace quillon;
using namespace quillon::testing;
using namespace Qt::Literals::StringLiterals;

class TestRecordSet : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_world = std::make_unique<TestWorld>();
        m_world->openDatabase(m_world->createDatabase());
        m_rows = m_world->session.RsMain;
        m_count = 0;
    }

    void cleanup()
    {
        QCOMPARE(m_world->dialogs.takeComplaints(), QStringList());
        m_rows.reset();
        m_world.reset();
    }

    void rowsComeInTheOrderOfTheirInsertion()
    {
        add(u"c"_s);
        add(u"a"_s);
        add(u"b"_s);
        QCOMPARE(walk(*m_rows), u"cab"_s);
        QCOMPARE(m_rows->recordCount(), 3);
        m_rows->moveLast();
        QCOMPARE(m_rows->field(0), u"b"_s);
        m_rows->moveFirst();
        QCOMPARE(m_rows->field(0), u"c"_s);
    }

    void roughCountsAreFoundWithoutCounting()
    {
        QCOMPARE(m_rows->roughCount(), 0);
        for (const QString& name : {u"a"_s, u"b"_s, u"c"_s})
            add(name);
        QVERIFY(m_rows->roughCount() >= 3);
        QVERIFY(m_rows->roughCount() < 2000); // a few numbers may have been left out
        m_world->session.OpenDb->execute(u"UPDATE Main SET rowid = 9223372036854775807 WHERE Name = 'c'"_s);
        QVERIFY(m_rows->roughCount() >= 3);
        QVERIFY(m_rows->roughCount() < std::numeric_limits<qint64>::max() / 1000);
    }

    void withoutADatabaseThereIsNoSet()
    {
        QCOMPARE(errorOf([] { RecordSet::openTable(nullptr, schema::Main()); }), errors::ObjectNotSet);
    }

    void aNewSetStandsOnNoRow()
    {
        add(u"a"_s);
        const auto rows = RecordSet::openTable(m_world->session.OpenDb, schema::Main());
        QVERIFY(!rows->hasCurrentRow());
        QVERIFY(!rows->endOfFile());
        QVERIFY(rows->hasRows());
        QCOMPARE(errorOf([&] { rows->field(0); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { rows->moveNext(); }), errors::NoCurrentRecord);
    }

    void anEmptySetHasNowhereToGo()
    {
        QVERIFY(!m_rows->hasRows());
        QVERIFY(m_rows->endOfFile());
        QCOMPARE(m_rows->recordCount(), 0);
        QCOMPARE(errorOf([&] { m_rows->moveFirst(); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { m_rows->moveLast(); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { m_rows->moveNext(); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { m_rows->field(0); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { m_rows->edit(); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { m_rows->deleteRow(); }), errors::NoCurrentRecord);
    }

    void movingPastTheEndTwiceFails()
    {
        add(u"a"_s);
        m_rows->moveFirst();
        m_rows->moveNext();
        QVERIFY(m_rows->endOfFile());
        QVERIFY(!m_rows->hasCurrentRow());
        QCOMPARE(errorOf([&] { m_rows->field(0); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { m_rows->moveNext(); }), errors::NoCurrentRecord);
        m_rows->moveFirst();
        QCOMPARE(m_rows->field(0), u"a"_s);
    }

    void aSearchFindsTheFirstMatch()
    {
        add(u"x"_s);
        add(u"a"_s);
        add(u"a"_s);
        m_rows->findFirst(u"Name = 'a'"_s);
        QCOMPARE(m_rows->field(1), u"M-991231-002"_s);
        m_rows->moveNext();
        QCOMPARE(m_rows->field(1), u"M-991231-003"_s);
    }

    void aSearchWithoutAMatchLeavesNoRow()
    {
        add(u"a"_s);
        m_rows->moveFirst();
        m_rows->findFirst(u"Name = 'b'"_s);
        QVERIFY(!m_rows->hasCurrentRow());
        QVERIFY(!m_rows->endOfFile());
        QCOMPARE(errorOf([&] { m_rows->field(0); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { m_rows->edit(); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { m_rows->setField(0, u"z"_s); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { m_rows->update(); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { m_rows->deleteRow(); }), errors::NoCurrentRecord);
        QCOMPARE(TestWorld::rowsOf(m_rows), QStringList(u"a|M-991231-001|"_s));
    }

    void aSearchThatFailsKeepsThePosition()
    {
        add(u"a"_s);
        m_rows->moveFirst();
        QCOMPARE(errorOf([&] { m_rows->findFirst(u"Name = 'it's'"_s); }), errors::CriteriaSyntax);
        QCOMPARE(m_rows->field(0), u"a"_s);
    }

    void aKeyIsFoundInItsField()
    {
        add(u"a"_s);
        add(u"b"_s);
        QVERIFY(m_rows->goTo(data_field::Object_ID, u"M-991231-002"_s));
        QCOMPARE(m_rows->field(0), u"b"_s);
        QVERIFY(m_rows->goTo(data_field::Name, u"a"_s));
        QCOMPARE(m_rows->field(1), u"M-991231-001"_s);
    }

    void aKeyThatIsNotThereLeavesNoRow_data()
    {
        QTest::addColumn<QString>("key");
        QTest::newRow("another one") << u"M-991231-003"_s;
        QTest::newRow("in small letters") << u"m-991231-001"_s;
        QTest::newRow("none") << QString();
        QTest::newRow("with a blank") << u"M-991231-001 "_s;
        QTest::newRow("a question of its own") << u"M-991231-001' OR Name = 'b"_s;
    }
    void aKeyThatIsNotThereLeavesNoRow()
    {
        QFETCH(QString, key);
        add(u"a"_s);
        add(u"b"_s);
        m_rows->moveFirst();
        QVERIFY(!m_rows->goTo(data_field::Object_ID, key));
        QVERIFY(!m_rows->hasCurrentRow());
        QCOMPARE(errorOf([&] { m_rows->deleteRow(); }), errors::NoCurrentRecord);
    }

    void aKeyThatCannotBeAskedForFails()
    {
        add(u"a"_s);
        m_rows->moveFirst();
        QCOMPARE(errorOf([&] { (void)m_rows->goTo(data_field::Object_ID, u"it's"_s); }),
                 errors::CriteriaSyntax);
        QCOMPARE(errorOf([&] { (void)m_rows->goTo(3, u"a"_s); }), errors::InvalidArgument);
        QCOMPARE(m_rows->field(0), u"a"_s);
    }

    void deletingLeavesTheCursorBetweenRows()
    {
        add(u"a"_s);
        add(u"b"_s);
        add(u"c"_s);
        m_rows->findFirst(u"Name = 'b'"_s);
        m_rows->deleteRow();
        QVERIFY(!m_rows->hasCurrentRow());
        QVERIFY(!m_rows->endOfFile());
        QCOMPARE(errorOf([&] { m_rows->field(0); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { m_rows->edit(); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { m_rows->deleteRow(); }), errors::NoCurrentRecord);
        m_rows->moveNext();
        QCOMPARE(m_rows->field(0), u"c"_s);
        QCOMPARE(walk(*m_rows), u"ac"_s);
    }

    void walkSurvivesDeletingTheCurrentRow()
    {
        for (const QString& name : {u"a"_s, u"b"_s, u"c"_s, u"d"_s})
            add(name);
        int deleted = 0;
        for (m_rows->moveFirst(); !m_rows->endOfFile() && deleted < 10; m_rows->moveNext()) {
            m_rows->deleteRow();
            ++deleted;
        }
        QCOMPARE(deleted, 4);
        QVERIFY(m_rows->endOfFile());
        QCOMPARE(m_rows->recordCount(), 0);
    }

    void afterDeletingTheLastRowTheNextMoveEndsTheSet()
    {
        add(u"a"_s);
        m_rows->moveFirst();
        m_rows->deleteRow();
        m_rows->moveNext();
        QVERIFY(m_rows->endOfFile());
        QCOMPARE(errorOf([&] { m_rows->moveNext(); }), errors::NoCurrentRecord);
    }

    void aRowAddedAfterADeletionIsStillMet()
    {
        add(u"a"_s);
        add(u"b"_s);
        m_rows->moveLast();
        m_rows->deleteRow();
        add(u"c"_s);
        m_rows->moveNext();
        QCOMPARE(m_rows->field(0), u"c"_s);
    }

    void twoCursorsOverOneTableStandApart()
    {
        add(u"a"_s);
        add(u"b"_s);
        const auto other = RecordSet::openTable(m_world->session.OpenDb, schema::Main());
        m_rows->moveFirst();
        other->moveLast();
        QCOMPARE(m_rows->field(0), u"a"_s);
        other->edit();
        other->setField(0, u"B"_s);
        other->update();
        m_rows->moveNext();
        QCOMPARE(m_rows->field(0), u"B"_s);
    }

    void aRowDeletedUnderTheCursorIsReportedAndPassed()
    {
        add(u"a"_s);
        add(u"b"_s);
        add(u"c"_s);
        const auto other = RecordSet::openTable(m_world->session.OpenDb, schema::Main());
        m_rows->findFirst(u"Name = 'b'"_s);
        other->findFirst(u"Name = 'b'"_s);
        other->deleteRow();
        QCOMPARE(errorOf([&] { m_rows->field(0); }), errors::RecordDeleted);
        QCOMPARE(errorOf([&] { m_rows->edit(); }), errors::RecordDeleted);
        QCOMPARE(errorOf([&] { m_rows->deleteRow(); }), errors::RecordDeleted);
        m_rows->moveNext();
        QCOMPARE(m_rows->field(0), u"c"_s);
    }

    void aNewRowNeverTakesThePlaceOfADeletedOne()
    {
        add(u"a"_s);
        add(u"old"_s);
        const auto other = RecordSet::openTable(m_world->session.OpenDb, schema::Main());
        const auto all = m_rows->filtered(u"Name Like '*'"_s);
        m_rows->moveLast();
        other->moveLast();
        other->deleteRow();
        add(u"new"_s);
        QCOMPARE(errorOf([&] { m_rows->field(0); }), errors::RecordDeleted);
        QCOMPARE(walk(*all), u"a"_s);
        QCOMPARE(walk(*m_rows), u"anew"_s);
    }

    void editingChangesOnlyWhatWasSet()
    {
        add(u"a"_s, u"text"_s);
        add(u"b"_s);
        m_rows->moveFirst();
        m_rows->edit();
        m_rows->setField(0, u"A"_s);
        m_rows->update();
        QCOMPARE(m_rows->field(0), u"A"_s);
        QCOMPARE(TestWorld::rowsOf(m_rows), QStringList({u"A|M-991231-001|text"_s, u"b|M-991231-002|"_s}));
    }

    void addingKeepsTheCursor()
    {
        add(u"a"_s);
        m_rows->moveFirst();
        add(u"b"_s);
        QCOMPARE(m_rows->field(0), u"a"_s);
        QVERIFY(m_rows->hasCurrentRow());
    }

    void whatWasBegunIsSavedInItsOwnRow()
    {
        add(u"a"_s);
        add(u"b"_s);
        m_rows->moveFirst();
        m_rows->edit();
        m_rows->setField(0, u"A"_s);
        m_rows->moveNext();
        m_rows->update();
        QCOMPARE(walk(*m_rows), u"Ab"_s);
    }

    void savingTwiceNeedsBeginningTwice()
    {
        add(u"a"_s);
        QCOMPARE(errorOf([&] { m_rows->update(); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { m_rows->setField(0, u"x"_s); }), errors::NoCurrentRecord);
        QCOMPARE(m_rows->recordCount(), 1);
    }

    void aRowDeletedWhileItIsChangedIsReported()
    {
        add(u"a"_s);
        add(u"b"_s);
        m_rows->moveFirst();
        m_rows->edit();
        m_rows->setField(0, u"A"_s);
        const auto other = RecordSet::openTable(m_world->session.OpenDb, schema::Main());
        other->moveFirst();
        other->deleteRow();
        QCOMPARE(errorOf([&] { m_rows->update(); }), errors::RecordDeleted);
        QCOMPARE(TestWorld::rowsOf(m_rows).size(), 1);
        QCOMPARE(errorOf([&] { m_rows->update(); }), errors::NoCurrentRecord); // it is not tried again
    }

    void aChangeThatCannotBeginEndsWhatWasBegunBefore()
    {
        m_rows->addNew();
        m_rows->setField(0, u"a"_s);
        QCOMPARE(errorOf([&] { m_rows->edit(); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { m_rows->update(); }), errors::NoCurrentRecord);
        QCOMPARE(m_rows->recordCount(), 0);
    }

    void aChangeOfNothingWritesNothing()
    {
        add(u"a"_s);
        m_rows->moveFirst();
        const qint64 before = m_world->session.OpenDb->connection().totalChanges();
        m_rows->edit();
        m_rows->update();
        QCOMPARE(m_world->session.OpenDb->connection().totalChanges(), before);
        QCOMPARE(m_rows->field(0), u"a"_s);
    }

    void fieldsOutsideTheTableAreRefused()
    {
        add(u"a"_s);
        m_rows->moveFirst();
        QCOMPARE(errorOf([&] { m_rows->field(3); }), errors::InvalidArgument);
        QCOMPARE(errorOf([&] { m_rows->field(-1); }), errors::InvalidArgument);
        m_rows->edit();
        QCOMPARE(errorOf([&] { m_rows->setField(3, u"x"_s); }), errors::InvalidArgument);
    }

    void aFilteredSetHoldsWhatMatchedWhenItWasMade()
    {
        for (const QString& name : {u"a1"_s, u"b"_s, u"a2"_s, u"a3"_s})
            add(name);
        m_rows->findFirst(u"Name = 'b'"_s);
        const auto some = m_rows->filtered(u"Name Like 'a*'"_s);
        QVERIFY(!some->hasCurrentRow());
        QCOMPARE(m_rows->field(0), u"b"_s);
        add(u"a4"_s);
        QCOMPARE(walk(*some), u"a1a2a3"_s);
        QCOMPARE(some->recordCount(), 3);
        m_rows->findFirst(u"Name = 'a2'"_s);
        m_rows->deleteRow();
        QCOMPARE(walk(*some), u"a1a3"_s);
        QCOMPARE(some->recordCount(), 2);
        QCOMPARE(TestWorld::rowsOf(some).size(), 2);
    }

    void aFilteredSetShowsLaterChangesOfItsRows()
    {
        add(u"a"_s);
        const auto some = m_rows->filtered(u"Name = 'a'"_s);
        m_rows->moveFirst();
        m_rows->edit();
        m_rows->setField(0, u"z"_s);
        m_rows->update();
        QCOMPARE(walk(*some), u"z"_s);
    }

    void aSetThatAnIndexHasFoundKeepsItsRowsAndShowsThemAsTheyAre_data()
    {
        QTest::addColumn<QString>("criteria");
        QTest::newRow("one identifier") << u"Category_ID = 'A-B'"_s;
        QTest::newRow("one beginning") << u"Category_ID Like 'A-*'"_s;
        QTest::newRow("a beginning that is a wildcard") << u"Category_ID Like '?-B'"_s;
    }

    void aSetThatAnIndexHasFoundKeepsItsRowsAndShowsThemAsTheyAre()
    {
        QFETCH(QString, criteria);
        const auto memberships = m_world->session.RsCategory;
        for (const QString& datum : {u"c"_s, u"a"_s, u"b"_s}) {
            TestWorld::addRow(memberships, {u"A-B"_s, datum});
            TestWorld::addRow(memberships, {u"A"_s, datum});
        }
        const auto some = memberships->filtered(criteria);
        const QStringList all{u"A-B|c"_s, u"A-B|a"_s, u"A-B|b"_s};
        QCOMPARE(TestWorld::rowsOf(some), all);
        // What would match by now came too late.
        TestWorld::addRow(memberships, {u"A-B"_s, u"d"_s});
        QCOMPARE(TestWorld::rowsOf(some), all);
        m_world->session.OpenDb->execute(u"UPDATE Category SET Object_ID = 'e' WHERE Object_ID = 'a'"_s);
        QCOMPARE(TestWorld::rowsOf(some), (QStringList{u"A-B|c"_s, u"A-B|e"_s, u"A-B|b"_s}));
        Database::open(m_world->session.OpenDb->path())
            ->execute(u"DELETE FROM Category WHERE Object_ID = 'c'"_s);
        QCOMPARE(TestWorld::rowsOf(some), (QStringList{u"A-B|e"_s, u"A-B|b"_s}));
        int visited = 0;
        memberships->filtered(criteria)->forEachRow({1},
                                                    [&](const RecordSet::Row&) { return ++visited < 2; });
        QCOMPARE(visited, 2);
    }

    void aFilteredSetCanBeSearchedAndDeletedFrom()
    {
        for (const QString& name : {u"b"_s, u"a1"_s, u"a2"_s, u"b"_s, u"a3"_s})
            add(name);
        const auto some = m_rows->filtered(u"Name Like 'a*'"_s);
        some->findFirst(u"Name = 'b'"_s);
        QVERIFY(!some->hasCurrentRow());
        some->findFirst(u"Name Like '*2' OR Name = 'b'"_s);
        QCOMPARE(some->field(0), u"a2"_s);
        some->deleteRow();
        some->moveNext();
        QCOMPARE(some->field(0), u"a3"_s);
        some->moveNext();
        QVERIFY(some->endOfFile());
        some->moveLast();
        QCOMPARE(some->field(0), u"a3"_s);
        QCOMPARE(walk(*m_rows), u"ba1ba3"_s);
    }

    void aFilteredSetOfAFilteredSetNarrowsItFurther()
    {
        for (const QString& name : {u"a1"_s, u"b1"_s, u"a2"_s})
            add(name);
        const auto some = m_rows->filtered(u"Name Like 'a*'"_s)->filtered(u"Name Like '*1'"_s);
        QCOMPARE(walk(*some), u"a1"_s);
        QCOMPARE(some->recordCount(), 1);
    }

    void anEmptyFilteredSetIsAnEmptySet()
    {
        add(u"a"_s);
        const auto none = m_rows->filtered(u"Name = 'x'"_s);
        QVERIFY(none->endOfFile());
        QVERIFY(!none->hasRows());
        QCOMPARE(none->recordCount(), 0);
        QCOMPARE(errorOf([&] { none->moveFirst(); }), errors::NoCurrentRecord);
        QCOMPARE(errorOf([&] { none->moveLast(); }), errors::NoCurrentRecord);
    }

    void aPassVisitsEveryRowWithoutMovingTheCursor()
    {
        add(u"a"_s, u"1"_s);
        add(u"b"_s, u"2"_s);
        add(u"c"_s, u"3"_s);
        m_rows->findFirst(u"Name = 'b'"_s);
        QString seen;
        m_rows->forEachRow({2, 0}, [&](const RecordSet::Row& row) {
            seen += row.text(0).toString() + row.text(1).toString();
            return row.text(1) != u"b";
        });
        QCOMPARE(seen, u"1a2b"_s);
        QCOMPARE(m_rows->field(0), u"b"_s);
    }

    void aFailingPassLeavesNoLock()
    {
        add(u"a"_s);
        QCOMPARE(errorOf([&] {
                     m_rows->forEachRow({0},
                                        [](const RecordSet::Row&) { throw Error(errors::TypeMismatch); });
                 }),
                 errors::TypeMismatch);
        const auto other = Database::open(m_world->session.OpenDb->path());
        QCOMPARE(errorOf([&] { other->connection().execute(u"BEGIN EXCLUSIVE"_s); }), 0);
    }

    void getFilterResultReportsItsFailures()
    {
        const Session& session = m_world->session;
        m_world->dialogs.expect(failureBox(errors::CriteriaSyntax));
        QVERIFY(!GetFilterResult(m_world->session.reporting, session.RsMain, u"Object_ID ='it's'"_s));
        m_world->dialogs.expect(failureBox(errors::ObjectNotSet));
        QVERIFY(!GetFilterResult(m_world->session.reporting, nullptr, u"Object_ID ='a'"_s));
        QCOMPARE(m_world->eventLog.lines.size(), 2);
    }

    void aWholeSetOutlivesItsDatabaseVariable()
    {
        add(u"a"_s);
        m_world->session.OpenDb.reset();
        QCOMPARE(walk(*m_rows), u"a"_s);
    }

private:
    static MessageBox failureBox(qint32 number)
    {
        return {.text =
                    u"対処不能なエラーが発生しました。\r\nLOCATION : GetFilterResult\r\nEXPLANATION : "_s +
                    standardDescription(number),
                .title = u"Quillon 障害対策部"_s};
    }

    void add(const QString& name, const QString& explanation = QString())
    {
        const QString number = QString::number(++m_count).rightJustified(3, u'0');
        TestWorld::addRow(m_rows, {name, u"M-991231-"_s + number, explanation});
    }

    /// The names in the order of a walk from the first row to the end.
    static QString walk(RecordSet& rows)
    {
        QString names;
        for (rows.moveFirst(); !rows.endOfFile(); rows.moveNext())
            names += rows.field(0);
        return names;
    }

    std::unique_ptr<TestWorld> m_world;
    std::shared_ptr<RecordSet> m_rows;
    int m_count = 0;
};

QTEST_GUILESS_MAIN(TestRecordSet)
#include "test_record_set.moc"

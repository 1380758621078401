// A filtered set whose rows another program deletes before they are looked at.
#include "app/base/error.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/support/call_log.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"

#include <QTest>

#include <memory>

using namespace quillon;
using namespace quillon::testing;
using namespace Qt::Literals::StringLiterals;

namespace
{

/// The names of the rows as a walk from the first one meets them.
QStringList walk(RecordSet& rows)
{
    QStringList names;
    if (!rows.hasRows())
        return names;
    for (rows.moveFirst(); !rows.endOfFile(); rows.moveNext())
        names << rows.field(0);
    return names;
}

QStringList pass(const RecordSet& rows)
{
    QStringList names;
    rows.forEachRow({0}, [&](const RecordSet::Row& row) { names << row.text(0).toString(); });
    return names;
}

QStringList named(const RecordSet& rows)
{
    QStringList names;
    rows.forEachName([&](QStringView name, QStringView) { names << name.toString(); });
    return names;
}

} // namespace

class TestVanishedRows : public QObject
{
    Q_OBJECT

    const QString Matching = u"Name Like 'a*' OR Explanation Like 'a*'"_s;

    std::unique_ptr<TestWorld> m_world;
    std::shared_ptr<RecordSet> m_some; // a1 to a5; between them stand rows that do not match

    RecordSet& main() { return *m_world->session.RsMain; }
    void deleteElsewhere(const QStringList& names)
    {
        const auto other = Database::open(m_world->session.OpenDb->path());
        for (const QString& name : names)
            other->execute(u"DELETE FROM Main WHERE Name = '%1'"_s.arg(name));
    }

private Q_SLOTS:
    void init()
    {
        m_world = std::make_unique<TestWorld>();
        m_world->openDatabase(m_world->createDatabase());
        for (int i = 1; i <= 5; ++i) {
            TestWorld::addRow(m_world->session.RsMain, {u"a%1"_s.arg(i), u"M-991231-00%1"_s.arg(i), u"x"_s});
            TestWorld::addRow(m_world->session.RsMain, {u"b%1"_s.arg(i), u"M-991230-00%1"_s.arg(i), u"x"_s});
        }
        m_some = main().filtered(Matching);
    }

    void cleanup()
    {
        QCOMPARE(m_world->dialogs.takeComplaints(), QStringList());
        m_some.reset();
        m_world.reset();
    }

    void everyWayThroughPassesOverThem_data()
    {
        QTest::addColumn<QStringList>("gone");
        QTest::addColumn<QStringList>("left");
        const auto row = [](const char* name, const QStringList& gone, const QStringList& left) {
            QTest::newRow(name) << gone << left;
        };
        row("the first", {u"a1"_s}, {u"a2"_s, u"a3"_s, u"a4"_s, u"a5"_s});
        row("one in the middle", {u"a3"_s}, {u"a1"_s, u"a2"_s, u"a4"_s, u"a5"_s});
        row("the last", {u"a5"_s}, {u"a1"_s, u"a2"_s, u"a3"_s, u"a4"_s});
        row("several next to each other", {u"a2"_s, u"a3"_s, u"a4"_s}, {u"a1"_s, u"a5"_s});
        row("both ends", {u"a1"_s, u"a2"_s, u"a4"_s, u"a5"_s}, {u"a3"_s});
        row("all", {u"a1"_s, u"a2"_s, u"a3"_s, u"a4"_s, u"a5"_s}, {});
    }

    void everyWayThroughPassesOverThem()
    {
        QFETCH(QStringList, gone);
        QFETCH(QStringList, left);
        deleteElsewhere(gone);
        QVERIFY(compareLines(walk(*m_some), left));
        QVERIFY(compareLines(pass(*m_some), left));
        QVERIFY(compareLines(named(*m_some), left));
        QCOMPARE(m_some->recordCount(), left.size());
        QCOMPARE(m_some->hasRows(), !left.isEmpty());
        if (left.isEmpty()) {
            QVERIFY(m_some->endOfFile());
            QCOMPARE(errorOf([&] { m_some->moveFirst(); }), errors::NoCurrentRecord);
            QCOMPARE(errorOf([&] { m_some->moveLast(); }), errors::NoCurrentRecord);
        } else {
            m_some->moveLast();
            QCOMPARE(m_some->field(0), left.last());
        }
        for (const QString& name : gone) {
            m_some->findFirst(u"Name = '"_s + name + u"'"_s);
            QVERIFY(!m_some->hasCurrentRow());
        }
        QVERIFY(compareLines(pass(*m_some->filtered(Matching)), left));
    }

    void rowThatGoesDuringTheWalkIsPassedOver()
    {
        m_some->moveFirst();
        deleteElsewhere({u"a2"_s, u"a3"_s});
        m_some->moveNext();
        QCOMPARE(m_some->field(0), u"a4"_s);
        deleteElsewhere({u"a5"_s});
        m_some->moveNext();
        QVERIFY(m_some->endOfFile());
        QVERIFY(!m_some->hasCurrentRow());
    }

    void newRowNeverStandsInForTheLastOne()
    {
        const auto other =
            RecordSet::openTable(Database::open(m_world->session.OpenDb->path()), schema::Main());
        TestWorld::addRow(other, {u"a6"_s, u"M-991231-006"_s, u"x"_s});
        m_some = main().filtered(Matching);
        deleteElsewhere({u"a6"_s});
        TestWorld::addRow(m_world->session.RsMain, {u"c"_s, u"M-991231-007"_s, u"x"_s});
        QVERIFY(compareLines(walk(*m_some), {u"a1"_s, u"a2"_s, u"a3"_s, u"a4"_s, u"a5"_s}));
    }

    void deletingTheRestPassesOverThem()
    {
        deleteElsewhere({u"a1"_s, u"a3"_s, u"a5"_s});
        m_some->deleteEveryRow();
        QVERIFY(compareLines(pass(main()), {u"b1"_s, u"b2"_s, u"b3"_s, u"b4"_s, u"b5"_s}));
        m_some->deleteEveryRow(); // nothing is left
        QCOMPARE(main().recordCount(), 5);
    }

    void nobodyIsAskedAboutThem()
    {
        deleteElsewhere({u"a1"_s, u"a3"_s, u"a5"_s});
        QStringList asked;
        m_some->deleteRowsIf({0}, [&](const RecordSet::Row& row) {
            asked << row.text(0).toString();
            return true;
        });
        QCOMPARE(asked, QStringList({u"a2"_s, u"a4"_s}));
        QCOMPARE(main().recordCount(), 5);
    }
};

QTEST_GUILESS_MAIN(TestVanishedRows)
#include "test_vanished_rows.moc"

// Identifiers for many new data.
#include "store/data_kinds.h"
#include "store/identifier_supply.h"
#include "store/record_set.h"
#include "tests/support/test_world.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestIdentifierSupply : public QObject
{
    Q_OBJECT

    static inline const QDate LastDay{1999, 12, 31};

private Q_SLOTS:
    void firstFreeOneOfTheDayIsNext()
    {
        TestWorld world;
        world.openDatabase(world.createDatabase());
        TestWorld::addRow(world.session.RsMain, {u"水"_s, u"M-991231-001"_s, u"-"_s});
        TestWorld::addRow(world.session.RsMain, {u"火"_s, u"M-991231-003"_s, u"-"_s});
        IdentifierSupply supply(*world.session.RsMain, data_kinds::definition());
        supply.reserve(u"M-991231-004");
        supply.reserve(u"no identifier");
        QCOMPARE(supply.next(LastDay), u"M-991231-002"_s);
        QCOMPARE(supply.next(LastDay), u"M-991231-005"_s);
        supply.reserve(u"M-991231-006");
        QCOMPARE(supply.next(LastDay), u"M-991231-007"_s);
        QCOMPARE(supply.next(QDate(2024, 2, 29)), u"M-240229-001"_s);
    }

    void fullDayGivesWayToTheDayBefore()
    {
        TestWorld world;
        world.openDatabase(world.createDatabase());
        TestWorld::addRow(world.session.RsRefDoc, {u"川"_s, u"R-991230-002"_s, u"-"_s});
        IdentifierSupply supply(*world.session.RsRefDoc, data_kinds::document());
        QStringList given;
        for (int i = 0; i < 2000; ++i)
            given << supply.next(LastDay);
        QCOMPARE(given[998], u"R-991231-999"_s);
        QCOMPARE(given[999], u"R-991230-001"_s);
        QCOMPARE(given[1000], u"R-991230-003"_s);
        QCOMPARE(given[1999], u"R-991229-003"_s);
        QCOMPARE(supply.next(LastDay.addDays(-1)), u"R-991229-004"_s);
        QCOMPARE(supply.next(LastDay), u"R-991229-005"_s);
        QCOMPARE(QSet<QString>(given.begin(), given.end()).size(), 2000);
    }

    void identifierTellsItsDay_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QDate>("day");
        QTest::newRow("this century") << u"M-260102-001"_s << QDate(2026, 1, 2);
        QTest::newRow("the last one") << u"M-991231-999"_s << LastDay;
        QTest::newRow("no such day") << u"M-990231-001"_s << QDate();
        QTest::newRow("no digits") << u"M-206/1/-001"_s << QDate();
        QTest::newRow("too long") << u"M-991231-1000"_s << QDate();
        QTest::newRow("nothing") << QString() << QDate();
    }

    void identifierTellsItsDay()
    {
        QFETCH(QString, identifier);
        QFETCH(QDate, day);
        QCOMPARE(dayOfIdentifier(identifier, QDate(2026, 11, 22)), day);
    }
};

QTEST_GUILESS_MAIN(TestIdentifierSupply)
#include "test_identifier_supply.moc"

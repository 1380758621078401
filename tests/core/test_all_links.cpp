#include "core/links.h"
#include "store/data_kinds.h"
#include "store/lookup/data_names.h"
#include "store/record_set.h"
#include "tests/support/failure_box.h"
#include "tests/support/test_world.h"
#include "tests/support/troubled_database.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const MessageBox NoLinks{.text = u"リンクは存在しません。"_s, .title = u"Quillon リンク情報管理部"_s};

} // namespace

class TestAllLinks : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;

    Session& session() { return world->session; }
    FakeLinkList& list() { return world->windows.links; }
    void addLink(const QString& source, const QString& target)
    {
        TestWorld::addRow(session().RsLink, {source, target});
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        world->openDatabase(world->createDatabase());
        TestWorld::addRow(session().RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        TestWorld::addRow(session().RsRefDoc, {u"<水の本>"_s, u"R-991231-001"_s, u"…"_s});
        TestWorld::addRow(session().RsRefFile, {u"水.txt"_s, u"F-991231-001"_s, u"未入力"_s});
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void everyLinkIsListedWithItsSourceAndItsTarget()
    {
        addLink(u"R-991231-001"_s, u"M-991231-001"_s);
        addLink(u"M-991231-001"_s, u"F-991231-001"_s);
        addLink(u"M-991231-001"_s, u"M-991231-001"_s);
        addLink(u"M-991231-001"_s, u"R-991231-001"_s); // a link back is a row of its own
        addLink(u"X-991231-001"_s, u"M-991231-009"_s);
        session().RsLink->moveLast(); // wherever the cursor stands
        SetAllLinkList(session());
        QCOMPARE(list().rows, QStringList({u"<水の本>|文献|水|定義|R-991231-001|M-991231-001"_s,
                                           u"水|定義|水.txt|FILE|M-991231-001|F-991231-001"_s,
                                           u"水|定義|水|定義|M-991231-001|M-991231-001"_s,
                                           u"水|定義|<水の本>|文献|M-991231-001|R-991231-001"_s,
                                           u"不明|不明|不明|定義|X-991231-001|M-991231-009"_s}));
        QCOMPARE(list().count, u"現在の情報リンク総数 ：  5"_s);
    }

    void listIsFilledAndCountedBeforeItIsShown()
    {
        addLink(u"R-991231-001"_s, u"M-991231-001"_s);
        const QStringList filled{u"frmLinkList.row <水の本>|文献|水|定義|R-991231-001|M-991231-001"_s,
                                 u"frmLinkList.rowsFinished"_s,
                                 u"frmLinkList.setCount 現在の情報リンク総数 ：  1"_s,
                                 u"frmLinkList.showModeless"_s};
        SetAllLinkList(session());
        QVERIFY(compareLines(world->calls.take(), filled));
        SetAllLinkList(session());
        QVERIFY(compareLines(world->calls.take(), QStringList{u"frmLinkList.reset"_s} + filled));
    }

    void namesAreThoseOfEachDatum_data()
    {
        QTest::addColumn<int>("data");
        QTest::addColumn<int>("links");
        // Names are looked up one by one or read all at once, whatever is quicker.
        QTest::newRow("few links, many data") << 300 << 5;
        QTest::newRow("many links, few data") << 20 << 300;
    }

    void namesAreThoseOfEachDatum()
    {
        QFETCH(int, data);
        QFETCH(int, links);
        const auto identifier = [](int number) {
            return u"%1-991230-%2"_s.arg(QChar(u"MRF"[number % 3])).arg(number, 3, 10, QChar(u'0'));
        };
        QStringList expected;
        sqlite::Transaction transaction(session().OpenDb->connection());
        for (int i = 0; i < data; i += 2) { // every other one is missing
            const auto table = i % 3 == 0   ? session().RsMain
                               : i % 3 == 1 ? session().RsRefDoc
                                            : session().RsRefFile;
            TestWorld::addRow(table, {u"語"_s.repeated(i % 40) + QString::number(i), identifier(i), u"…"_s});
        }
        for (int i = 0; i < links; ++i) {
            const QString source = identifier(i % data);
            const QString target = i % 7 == 0 ? u"odd %1"_s.arg(i) : identifier((i * 5 + i / data) % data);
            addLink(source, target);
            expected << GetDataName(session(), source) + u'|' +
                            GetDivName(session(), source, DivName::ShortName) + u'|' +
                            GetDataName(session(), target) + u'|' +
                            GetDivName(session(), target, DivName::ShortName) + u'|' + source + u'|' + target;
        }
        transaction.commit();
        SetAllLinkList(session());
        QCOMPARE(list().rows, expected);
    }

    void rowNumbersOfAnySizeGiveTheSameNames_data()
    {
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("table");
        for (const QString& table : {u"Link"_s, u"Main"_s}) {
            for (const QString& number : {u"-9223372036854775808"_s, u"-5"_s, u"0"_s, u"1000000"_s,
                                          u"4611686018427387904"_s, u"9223372036854775807"_s})
                QTest::addRow("%s %s", qPrintable(table), qPrintable(number)) << number << table;
        }
    }

    void rowNumbersOfAnySizeGiveTheSameNames()
    {
        QFETCH(QString, number);
        QFETCH(QString, table);
        for (const QString& target : {u"R-991231-001"_s, u"F-991231-001"_s, u"M-991231-002"_s})
            addLink(u"M-991231-001"_s, target);
        SetAllLinkList(session());
        const QStringList expected = list().rows;
        QCOMPARE(expected.size(), 3);
        session().OpenDb->execute(
            u"UPDATE %1 SET rowid = %2 WHERE rowid = (SELECT max(rowid) FROM %1)"_s.arg(table, number));
        SetAllLinkList(session());
        QStringList rows = list().rows;
        rows.sort(); // a low number comes first
        QCOMPARE(rows, [&] {
            QStringList sorted = expected;
            sorted.sort();
            return sorted;
        }());
    }

    void listIsRebuiltFromScratch()
    {
        addLink(u"R-991231-001"_s, u"M-991231-001"_s);
        SetAllLinkList(session());
        addLink(u"M-991231-001"_s, u"F-991231-001"_s);
        SetAllLinkList(session());
        QCOMPARE(list().rows.size(), 2);
        QCOMPARE(list().count, u"現在の情報リンク総数 ：  2"_s);
    }

    void withoutLinksAClosedWindowStaysClosed()
    {
        world->dialogs.expect(NoLinks);
        SetAllLinkList(session());
        QVERIFY(!world->windows.linksLoaded);
        QCOMPARE(world->eventLog.lines, QStringList());
    }

    void withoutLinksAnOpenWindowIsEmptied()
    {
        addLink(u"R-991231-001"_s, u"M-991231-001"_s);
        SetAllLinkList(session());
        DeleteRelationalLink(session(), u"M-991231-001"_s);
        world->calls.take();
        world->dialogs.expect(NoLinks);
        SetAllLinkList(session());
        QVERIFY(compareLines(world->calls.lines(), {u"frmLinkList.reset"_s, messageBoxCall(NoLinks.text)}));
        QCOMPARE(list().rows, QStringList());
        QCOMPARE(list().count, QString());
    }

    void failureIsReportedUnderAnotherName()
    {
        session().RsLink.reset();
        world->dialogs.expect(failureBox(u"CloseAllForm"_s, 91));
        SetAllLinkList(session());
        QVERIFY(!world->windows.linksLoaded);
    }

    void fileThatCannotBeReadIsReportedUnderAnotherName()
    {
        addLink(u"R-991231-001"_s, u"M-991231-001"_s);
        {
            const ForeignLock lock(*session().OpenDb, ForeignLock::Kind::Exclusive);
            world->dialogs.expect(failureBox(u"CloseAllForm"_s, 3260));
            SetAllLinkList(session());
            QVERIFY(!world->windows.linksLoaded);
        }
        SetAllLinkList(session());
        QCOMPARE(list().rows.size(), 1);
    }

    void identifierThatNoSearchCanNameIsListedWithoutAName()
    {
        addLink(u"M'"_s, u"M-991231-001"_s);
        world->dialogs.expect(failureBox(u"GetDataName"_s, 3075));
        SetAllLinkList(session());
        QCOMPARE(list().rows, QStringList(u"|定義|水|定義|M'|M-991231-001"_s));
        QCOMPARE(list().count, u"現在の情報リンク総数 ：  1"_s);
    }
};

QTEST_GUILESS_MAIN(TestAllLinks)
#include "test_all_links.moc"

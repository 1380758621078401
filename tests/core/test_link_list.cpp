#include "core/links.h"
#include "store/record_set.h"
#include "store/sqlite/connection.h"
#include "tests/support/failure_box.h"
#include "tests/support/test_world.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

QStringList shown(const FakeDataWindow& window)
{
    QStringList rows;
    for (const LinkRow& row : window.links)
        rows << row.kind + u'|' + row.name + u'|' + row.identifier;
    return rows;
}

} // namespace

class TestLinkList : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        world->openDatabase(world->createDatabase());
        TestWorld::addRow(world->session.RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        TestWorld::addRow(world->session.RsRefDoc, {u"<水の本>"_s, u"R-991231-001"_s, u"…"_s});
        TestWorld::addRow(world->session.RsRefFile, {u"水.txt"_s, u"F-991231-001"_s, u"水.txt"_s});
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void everyLinkIsShownFromTheDatumsOwnSide()
    {
        const auto& links = world->session.RsLink;
        TestWorld::addRow(links, {u"M-991231-001"_s, u"R-991231-001"_s});
        TestWorld::addRow(links, {u"F-991231-001"_s, u"M-991231-001"_s});
        TestWorld::addRow(links, {u"R-991231-001"_s, u"F-991231-001"_s});
        TestWorld::addRow(links, {u"M-991231-001"_s, u"M-991231-001"_s});
        TestWorld::addRow(links, {u"X-991231-001"_s, u"M-991231-001"_s});
        FakeDataWindow window(u"frmMainData"_s);
        window.links = {{u"古い"_s, u"古い"_s, u"古い"_s}};

        SetLinkList(world->session, window, u"M-991231-001"_s);
        QCOMPARE(shown(window), QStringList({u"文献|<水の本>|R-991231-001"_s, u"FILE|水.txt|F-991231-001"_s,
                                             u"定義|水|M-991231-001"_s, u"不明|不明|X-991231-001"_s}));

        SetLinkList(world->session, window, u"R-991231-001"_s);
        QCOMPARE(shown(window), QStringList({u"定義|水|M-991231-001"_s, u"FILE|水.txt|F-991231-001"_s}));
    }

    void datumWithoutLinksEmptiesTheList()
    {
        FakeDataWindow window(u"frmMainData"_s);
        window.links = {{u"古い"_s, u"古い"_s, u"古い"_s}};
        SetLinkList(world->session, window, u"M-991231-001"_s);
        QVERIFY(window.links.empty());
    }

    void partnerThatNoSearchCanNameIsReported()
    {
        TestWorld::addRow(world->session.RsLink, {u"M-991231-001"_s, u"M'"_s});
        FakeDataWindow window(u"frmMainData"_s);
        world->dialogs.expect(failureBox(u"GetDataName"_s, 3075));
        SetLinkList(world->session, window, u"M-991231-001"_s);
        QCOMPARE(shown(window), QStringList({u"定義||M'"_s}));
    }

    void listWithoutDatabaseIsReportedTwice()
    {
        world->session.RsLink.reset();
        FakeDataWindow window(u"frmMainData"_s);
        world->dialogs.expect(failureBox(u"GetFilterResult"_s, 91));
        world->dialogs.expect(failureBox(u"SetLinkList"_s, 91));
        SetLinkList(world->session, window, u"M-991231-001"_s);
    }

    void thousandsOfLinksComeInTableOrder()
    {
        sqlite::Transaction transaction(world->session.OpenDb->connection());
        for (int i = 0; i < 3000; ++i) {
            const QString partner = u"R-%1-001"_s.arg(i, 6, 10, QChar(u'0'));
            TestWorld::addRow(world->session.RsRefDoc, {u"本%1"_s.arg(i), partner, u"…"_s});
            TestWorld::addRow(world->session.RsLink, {u"M-991231-001"_s, partner});
        }
        transaction.commit();
        FakeDataWindow window(u"frmMainData"_s);
        SetLinkList(world->session, window, u"M-991231-001"_s);
        QCOMPARE(window.links.size(), 3000U);
        QCOMPARE(shown(window).front(), u"文献|本0|R-000000-001"_s);
        QCOMPARE(shown(window).back(), u"文献|本2999|R-002999-001"_s);
    }
};

QTEST_GUILESS_MAIN(TestLinkList)
#include "test_link_list.moc"

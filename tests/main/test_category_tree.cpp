// Building the category tree, and what clicks and keys in it do.
#include "store/record_set.h"
#include "store/session.h"
#include "tests/support/compare_text.h"
#include "tests/support/window_world.h"
#include "ui/main/category_tree.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"
#include "ui/widgets/status_panels.h"

#include <QProgressBar>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestCategoryTree : public QObject
{
    Q_OBJECT

    std::unique_ptr<WindowWorld> world;
    frmMainMenu* window = nullptr;
    KeyedTree* tree = nullptr;
    ReportList* list = nullptr;

    /// Every node as "key=text<parent key", from position 10 on.
    QStringList categories() const
    {
        QStringList nodes;
        for (int i = 10; i <= window->nodeCount(); ++i)
            nodes << window->nodeKey(i) + u'=' + window->nodeText(i) + u'<' + window->nodeParentKey(i);
        return nodes;
    }
    /// Opens a database whose category table holds these rows "identifier|name".
    void openWith(const QStringList& rows)
    {
        const QString path = world->createDatabase();
        {
            const auto database = Database::open(path);
            const auto table = RecordSet::openTable(database, schema::Category_ID());
            for (const QString& row : rows)
                WindowWorld::addRow(table, row.split(u'|'));
        }
        world->open(path);
    }
    void expectBuildFailure(qint32 number)
    {
        world->dialogs.expect(MessageBox{
            .text = u"対処不能なエラーが発生しました。\r\nLOCATION : OpenDbFile\r\nEXPLANATION : "_s +
                    standardDescription(number),
            .title = u"Quillon 障害対策部"_s});
    }
    void click(int position)
    {
        const QModelIndex index = tree->nodes().indexOf(position);
        tree->scrollTo(index);
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(index).center());
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<WindowWorld>();
        window = &world->mainWindow();
        tree = WindowWorld::control<KeyedTree>(*window, u"tvwCategory"_s);
        list = WindowWorld::control<ReportList>(*window, u"lsvData"_s);
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void newDatabaseShowsTheNineFixedNodes()
    {
        openWith({});
        QStringList nodes;
        for (int i = 1; i <= window->nodeCount(); ++i)
            nodes << window->nodeKey(i) + u'=' + window->nodeText(i) + u'<' + window->nodeParentKey(i);
        QCOMPARE(nodes, QStringList({u"DIV=形式別(全データ)<"_s, u"M_DIV=定義データ<DIV"_s,
                                     u"M_DIV_NOCATEGORY=未分類データ<M_DIV"_s,
                                     u"M_DIV_NODIF=未定義データ<M_DIV"_s, u"R_DIV=文献データ<DIV"_s,
                                     u"R_DIV_NOCATEGORY=未分類データ<R_DIV"_s, u"F_DIV=ファイルデータ<DIV"_s,
                                     u"F_DIV_NOCATEGORY=未分類データ<F_DIV"_s, u"CATEGORY=分類別<"_s}));
        QVERIFY(tree->isExpanded(tree->nodes().indexOf(1)));
        QVERIFY(tree->isExpanded(tree->nodes().indexOf(9)));
        QVERIFY(!tree->isExpanded(tree->nodes().indexOf(2)));
        QCOMPARE(tree->selectedPosition(), 1);
    }

    void categoriesHangUnderTheirParents()
    {
        openWith({u"A|甲"_s, u"A-A|甲の一"_s, u"B|乙"_s});
        QCOMPARE(categories(), QStringList({u"A=甲<CATEGORY"_s, u"A-A=甲の一<A"_s, u"B=乙<CATEGORY"_s}));
    }

    void missingAncestorTakesTheDescendantsName()
    {
        openWith({u"D-A-B|孫"_s});
        QCOMPARE(categories(), QStringList({u"D=孫<CATEGORY"_s, u"D-A=孫<D"_s, u"D-A-B=孫<D-A"_s}));
    }

    void childReadBeforeItsParentEndsTheBuild()
    {
        expectBuildFailure(errors::KeyNotUnique);
        openWith({u"A|甲"_s, u"C-A|子"_s, u"C|親"_s, u"E|後"_s});
        QCOMPARE(categories(), QStringList({u"A=甲<CATEGORY"_s, u"C=子<CATEGORY"_s, u"C-A=子<C"_s}));
        QVERIFY(!tree->isExpanded(tree->nodes().indexOf(9)));
        QVERIFY(!WindowWorld::control<QProgressBar>(*window, u"pgbMain"_s)->isHidden());
    }

    void aSecondOpeningRepairsTheView()
    {
        expectBuildFailure(errors::KeyNotUnique);
        openWith({u"C-A|子"_s, u"C|親"_s});
        world->open(world->createDatabase(u"good.mdb"_s));
        QCOMPARE(window->nodeCount(), 9);
        QVERIFY(WindowWorld::control<QProgressBar>(*window, u"pgbMain"_s)->isHidden());
        QCOMPARE(tree->selectedPosition(), 1);
    }

    void identifierLikeAFixedKeyEndsTheBuild()
    {
        expectBuildFailure(errors::KeyNotUnique);
        openWith({u"DIV|偽物"_s});
        QCOMPARE(window->nodeCount(), 9);
    }

    void emptyAndNullIdentifiersSurvive()
    {
        const QString path = world->createDatabase();
        {
            const auto database = Database::open(path);
            database->connection().execute(
                u"INSERT INTO Category_ID VALUES (NULL, '空一'), (NULL, '空二'), (NULL, NULL), ('A', NULL)"_s);
        }
        world->open(path);
        QCOMPARE(categories(),
                 QStringList({u"=空一<CATEGORY"_s, u"=空二<CATEGORY"_s, u"=<CATEGORY"_s, u"A=<CATEGORY"_s}));
    }

    void deepestIdentifierIsShown()
    {
        QString identifier = u"A"_s;
        while (identifier.size() + 2 <= 50)
            identifier += u"-A"_s;
        openWith({identifier + u"|底"_s});
        QCOMPARE(window->nodeCount(), 9 + 25);
    }

    void identifierBeyondTheWidthEndsTheBuild()
    {
        const QString path = world->createDatabase();
        {
            const auto database = Database::open(path);
            database->connection().execute(u"INSERT INTO Category_ID VALUES ('A', '甲')"_s);
            database->connection().execute(
                u"INSERT INTO Category_ID VALUES ('%1A', '深')"_s.arg(u"A-"_s.repeated(60000)));
        }
        expectBuildFailure(errors::FieldTooSmall);
        world->open(path);
        QCOMPARE(categories(), QStringList({u"A=甲<CATEGORY"_s}));
    }

    void namesAreShownAsTheyStand()
    {
        openWith({u"A|<b>太字</b>&amp;"_s, u"B|一行目\n二行目"_s, u"C|ｶﾅ\U0001F600"_s});
        QVERIFY(compareText(window->nodeText(10), u"<b>太字</b>&amp;"));
        QVERIFY(compareText(window->nodeText(11), u"一行目\n二行目"));
        QVERIFY(compareText(window->nodeText(12), u"ｶﾅ\U0001F600"));
    }

    void identifiersDifferByCase()
    {
        openWith({u"A|大"_s, u"a|小"_s, u"a-A|小の子"_s});
        QCOMPARE(categories(), QStringList({u"A=大<CATEGORY"_s, u"a=小<CATEGORY"_s, u"a-A=小の子<a"_s}));
    }

    void newIdentifierIsTheFirstFreeOne()
    {
        openWith({u"A|甲"_s, u"C|丙"_s, u"A-A|子"_s});
        QCOMPARE(window->GetNewCategory_ID(u"CATEGORY"_s, true), u"B"_s);
        QCOMPARE(window->GetNewCategory_ID(u"A"_s, false), u"A-B"_s);
        QCOMPARE(window->GetNewCategory_ID(u"C"_s, false), u"C-A"_s);
    }

    void identifiersGoOnAfterZ()
    {
        QStringList rows;
        for (char16_t letter = u'A'; letter <= u'Z'; ++letter)
            rows << QString(QChar(letter)) + u"|名"_s;
        openWith(rows);
        QCOMPARE(window->GetNewCategory_ID(u"CATEGORY"_s, true), u"["_s);
    }

    void clickListsTheNodesData()
    {
        openWith({u"A|甲"_s});
        WindowWorld::addRow(world->session().RsMain, {u"水"_s, u"M-991231-001"_s, u"H2O"_s});
        WindowWorld::addRow(world->session().RsRefDoc, {u"論文"_s, u"R-991231-001"_s, u"本文"_s});
        click(5);
        QCOMPARE(list->rows().rowCount(), 1);
        QVERIFY(compareText(list->rows().text(0, 0), u"論文"));
        click(1);
        QCOMPARE(list->rows().rowCount(), 2);
        click(9);
        QCOMPARE(list->rows().rowCount(), 0);
    }

    void navigationKeysListTheNodesData_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("rows");
        QTest::newRow("down") << Qt::Key_Down << 1 << 1;
        QTest::newRow("up") << Qt::Key_Up << 5 << 1;
        QTest::newRow("end") << Qt::Key_End << 1 << 0;
        QTest::newRow("home") << Qt::Key_Home << 9 << 2;
        QTest::newRow("space") << Qt::Key_Space << 2 << 1;
        QTest::newRow("right") << Qt::Key_Right << 2 << 1;
        QTest::newRow("left") << Qt::Key_Left << 2 << 2;
    }

    void navigationKeysListTheNodesData()
    {
        QFETCH(Qt::Key, key);
        QFETCH(int, from);
        QFETCH(int, rows);
        openWith({});
        WindowWorld::addRow(world->session().RsMain, {u"水"_s, u"M-991231-001"_s, u"H2O"_s});
        WindowWorld::addRow(world->session().RsRefDoc, {u"論文"_s, u"R-991231-001"_s, u"本文"_s});
        tree->select(from);
        list->rows().clear();
        QTest::keyClick(tree, key);
        QCOMPARE(list->rows().rowCount(), rows);
        QVERIFY(compareText(WindowWorld::control<StatusPanels>(*window, u"sbStatus"_s)->text(2),
                            u"表示データ数 ： "_s + QString::number(rows)));
    }

    void selectingByTheProgramListsNothing()
    {
        openWith({u"A|甲"_s});
        WindowWorld::addRow(world->session().RsMain, {u"水"_s, u"M-991231-001"_s, u"H2O"_s});
        tree->select(2);
        QCOMPARE(list->rows().rowCount(), 0);
    }

    void keysDoNothingBeforeADatabaseIsOpen()
    {
        QTest::keyClick(tree, Qt::Key_Down);
        QTest::keyClick(tree, Qt::Key_Home);
        QCOMPARE(window->nodeCount(), 0);
    }

    void fiftyThousandCategoriesStandInTheirPlaces()
    {
        const QString path = world->createDatabase();
        {
            const auto database = Database::open(path);
            database->connection().execute(
                u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 49999) "
                u"INSERT INTO Category_ID SELECT char(19968 + i / 2500) || '-' || char(19968 + i % 2500), 'c' || i FROM n"_s);
        }
        world->open(path);
        QCOMPARE(window->nodeCount(), 9 + 50000 + 20);
        QVERIFY(compareText(window->nodeText(window->nodeCount()), u"c49999"));
    }
};

QTEST_MAIN(TestCategoryTree)
#include "test_category_tree.moc"

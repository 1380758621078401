#include "store/lookup/category_names.h"
#include "store/lookup/data_names.h"
#include "store/record_set.h"
#include "tests/store/foreign_file.h"
#include "tests/support/failure_box.h"
#include "tests/support/test_world.h"

#include <QTest>

#include <utility>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// What data and categories are called.
class TestNames : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;

    /// Opens a database with tables that another program has made in place of some.
    void openForeign(const QByteArray& sql)
    {
        const QString path = world->createDatabase(u"FOREIGN.mdb"_s);
        ForeignFile(path).run("DROP TABLE Main; DROP TABLE Category_ID").run(sql.constData());
        world->openDatabase(path);
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        world->openDatabase(world->createDatabase());
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void nameComesFromTheTableOfTheKind()
    {
        TestWorld::addRow(world->session.RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        TestWorld::addRow(world->session.RsMain, {u"謎"_s, u"X-991231-001"_s, u"?"_s});
        TestWorld::addRow(world->session.RsRefDoc, {u"水の本"_s, u"R-991231-001"_s, u"…"_s});
        TestWorld::addRow(world->session.RsRefFile, {u"水.txt"_s, u"F-991231-001"_s, u"水.txt"_s});

        QCOMPARE(GetDataName(world->session, u"M-991231-001"_s), u"水"_s);
        QCOMPARE(GetDataName(world->session, u"R-991231-001"_s), u"水の本"_s);
        QCOMPARE(GetDataName(world->session, u"F-991231-001"_s), u"水.txt"_s);
        QCOMPARE(GetDataName(world->session, u"X-991231-001"_s),
                 u"謎"_s); // another kind: among the definitions
    }

    void unknownIdentifierHasTheUnknownName()
    {
        QCOMPARE(GetDataName(world->session, u"M-991231-001"_s), u"不明"_s);
        TestWorld::addRow(world->session.RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        QCOMPARE(GetDataName(world->session, u"M-991231-002"_s), u"不明"_s);
        QCOMPARE(GetDataName(world->session, u"m-991231-001"_s), u"不明"_s);
        QCOMPARE(GetDataName(world->session, QString()), u"不明"_s);
    }

    void nameWithoutDatabaseIsReported()
    {
        world->session.RsMain.reset();
        world->dialogs.expect(failureBox(u"GetDataName"_s, 91));
        QCOMPARE(GetDataName(world->session, u"M-991231-001"_s), QString());
        QCOMPARE(world->eventLog.lines.size(), 1);
    }

    void categoryHasItsName()
    {
        QCOMPARE(GetCategoryName(world->session, u"A"_s), u"不明"_s);
        TestWorld::addRow(world->session.RsCategoryID, {u"A"_s, u"自然"_s});
        TestWorld::addRow(world->session.RsCategoryID, {u"A-A"_s, u"<水>"_s});
        QCOMPARE(GetCategoryName(world->session, u"A"_s), u"自然"_s);
        QCOMPARE(GetCategoryName(world->session, u"A-A"_s), u"<水>"_s);
        QCOMPARE(GetCategoryName(world->session, u"a"_s), u"不明"_s);
        QCOMPARE(GetCategoryName(world->session, u"B"_s), u"不明"_s);
    }

    void categoryNameWithoutDatabaseIsReported()
    {
        world->session.RsCategoryID.reset();
        world->dialogs.expect(failureBox(u"GetCategoryName"_s, 91));
        QCOMPARE(GetCategoryName(world->session, u"A"_s), QString());
    }

    void tablesOfOtherProgramsGiveTheSameNameByEveryWay_data()
    {
        QTest::addColumn<QByteArray>("column"); // how identifiers are declared
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("name");
        const QByteArray nocase = "TEXT COLLATE NOCASE";
        QTest::newRow("no difference of case, indexed")
            << nocase + " UNIQUE" << QByteArray("('小', 'm-991231-001', '')") << u"M-991231-001"_s
            << u"不明"_s;
        QTest::newRow("no difference of case, the very one")
            << nocase + " UNIQUE" << QByteArray("('小', 'm-991231-001', '')") << u"m-991231-001"_s << u"小"_s;
        QTest::newRow("no difference of case, the later one")
            << nocase << QByteArray("('小', 'm-991231-001', ''), ('大', 'M-991231-001', '')")
            << u"M-991231-001"_s << u"大"_s;
        QTest::newRow("blanks at the end do not count")
            << QByteArray("TEXT COLLATE RTRIM UNIQUE") << QByteArray("('長', 'M-991231-001  ', '')")
            << u"M-991231-001"_s << u"不明"_s;
        QTest::newRow("numbers") << QByteArray("NUMERIC") << QByteArray("('数', 12, '')") << u"12"_s
                                 << u"数"_s;
        QTest::newRow("numbers, written otherwise")
            << QByteArray("NUMERIC") << QByteArray("('数', 12, '')") << u"012"_s << u"不明"_s;
        QTest::newRow("a number where anything goes")
            << QByteArray() << QByteArray("('数', 12, '')") << u"12"_s << u"不明"_s;
        QTest::newRow("bytes") << QByteArray("TEXT") << QByteArray("('列', x'31003200', '')") << u"12"_s
                               << u"不明"_s;
        QTest::newRow("nothing") << QByteArray("TEXT") << QByteArray("('無', NULL, '')") << u""_s
                                 << u"不明"_s;
        QTest::newRow("an empty text after nothing")
            << QByteArray("TEXT") << QByteArray("('無', NULL, ''), ('空', '', '')") << u""_s << u"空"_s;
        QTest::newRow("the first of two")
            << QByteArray("TEXT") << QByteArray("('一', 'M-1', ''), ('二', 'M-1', '')") << u"M-1"_s
            << u"一"_s;
    }
    void tablesOfOtherProgramsGiveTheSameNameByEveryWay()
    {
        QFETCH(QByteArray, column);
        QFETCH(QByteArray, rows);
        QFETCH(QString, identifier);
        QFETCH(QString, name);
        openForeign("CREATE TABLE Main (Name TEXT, Object_ID " + column +
                    ", Explanation TEXT); INSERT INTO Main VALUES " + rows +
                    "; CREATE TABLE Category_ID (Category_ID TEXT, Name TEXT)");

        QCOMPARE(GetDataName(world->session, identifier), name);
        DataNameLookup oneByOne(world->session);
        for (int i = 0; i < 100; ++i)
            QCOMPARE(oneByOne.name(identifier), name);
        DataNameLookup many(world->session, 1000);
        QCOMPARE(many.name(identifier), name);
    }

    void categoriesOfOtherProgramsGiveTheSameNameByBothWays()
    {
        openForeign("CREATE TABLE Main (Name TEXT, Object_ID TEXT, Explanation TEXT);"
                    "CREATE TABLE Category_ID (Category_ID TEXT COLLATE NOCASE, Name TEXT);"
                    "INSERT INTO Category_ID VALUES ('a', '小'), ('A', '大'), ('b', '脇')");
        CategoryNameLookup names(world->session);
        for (const auto& [category, name] :
             {std::pair(u"a"_s, u"小"_s), std::pair(u"A"_s, u"大"_s), std::pair(u"B"_s, u"不明"_s)}) {
            QCOMPARE(GetCategoryName(world->session, category), name);
            QCOMPARE(names.name(category), name);
        }
    }
};

QTEST_GUILESS_MAIN(TestNames)
#include "test_names.moc"

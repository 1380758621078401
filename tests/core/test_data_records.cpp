#include "core/categories.h"
#include "core/data_records.h"
#include "store/record_set.h"
#include "tests/support/compare_text.h"
#include "tests/support/failure_box.h"
#include "tests/support/test_world.h"
#include "tests/support/troubled_database.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestDataRecords : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;

    FakeDataWindow& lastWindow() { return *world->windows.dataWindows.back(); }
    std::size_t windowCount() { return world->windows.dataWindows.size(); }

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

    void definitionOpensInAWindowOfItsOwn()
    {
        TestWorld::addRow(world->session.RsMain, {u"<b>水</b>"_s, u"M-991231-001"_s, u"一行目\r\n二行目"_s});
        TestWorld::addRow(world->session.RsMain, {u"氷"_s, u"M-991231-002"_s, u"固体"_s});
        TestWorld::addRow(world->session.RsLink, {u"M-991231-001"_s, u"M-991231-002"_s});
        TestWorld::addRow(world->session.RsCategoryID, {u"A"_s, u"自然"_s});
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, u"M-991231-001"_s});

        ShowData(world->session, u"M-991231-001"_s);

        QCOMPARE(windowCount(), 1U);
        QCOMPARE(lastWindow().fields[2], u"一行目\r\n二行目"_s);
        QVERIFY(compareLines(
            world->calls.lines(),
            {u"newDataWindow M"_s, u"frmMainData.showModeless"_s,
             u"frmMainData.setCaption 定義画面 - <b>水</b>"_s, u"frmMainData.setMode display"_s,
             u"frmMainData.setFieldText 0 <b>水</b>"_s, u"frmMainData.setFieldText 1 M-991231-001"_s,
             u"frmMainData.setFieldText 2 一行目\\r\\n二行目"_s,
             u"frmMainData.setLinkRows 定義|氷|M-991231-002"_s, u"frmMainData.setCategoryRows 自然|A"_s}));
    }

    void documentCaptionHasNoBlanksAroundItsHyphen()
    {
        TestWorld::addRow(world->session.RsRefDoc, {u"水の本"_s, u"R-991231-001"_s, u"0012"_s});
        ShowData(world->session, u"R-991231-001"_s);
        QCOMPARE(windowCount(), 1U);
        QVERIFY(compareLines(
            world->calls.lines(),
            {u"newDataWindow R"_s, u"frmRefDoc.showModeless"_s, u"frmRefDoc.setCaption 文献画面-水の本"_s,
             u"frmRefDoc.setMode display"_s, u"frmRefDoc.setFieldText 0 水の本"_s,
             u"frmRefDoc.setFieldText 1 R-991231-001"_s, u"frmRefDoc.setFieldText 2 0012"_s}));
    }

    void openDatumIsBroughtToTheFrontAndNotReloaded()
    {
        TestWorld::addRow(world->session.RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        TestWorld::addRow(world->session.RsMain, {u"氷"_s, u"M-991231-002"_s, u"固体"_s});
        ShowData(world->session, u"M-991231-001"_s);
        FakeDataWindow& first = lastWindow();
        first.fields[2] = u"編集中"_s;
        ShowData(world->session, u"M-991231-002"_s);
        QCOMPARE(windowCount(), 2U);
        first.calls = CallLog(); // of its own
        world->calls.take();
        ShowData(world->session, u"M-991231-001"_s);
        QCOMPARE(first.calls.lines(), QStringList(u"frmMainData.bringToFront"_s));
        QCOMPARE(world->calls.lines(), QStringList());
        QCOMPARE(first.fields[2], u"編集中"_s);
    }

    void openDatumIsFoundEvenWhenItsRowIsGone()
    {
        TestWorld::addRow(world->session.RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        ShowData(world->session, u"M-991231-001"_s);
        world->session.RsMain->moveFirst();
        world->session.RsMain->deleteRow();
        world->calls.take();
        ShowData(world->session, u"M-991231-001"_s);
        QCOMPARE(world->calls.lines(), QStringList(u"frmMainData.bringToFront"_s));
    }

    void windowOfTheOtherKindIsNotTheDatumsWindow()
    {
        TestWorld::addRow(world->session.RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        DataWindow& document = world->windows.newDataWindow(u"R"_s);
        document.setFieldText(1, u"M-991231-001"_s);
        ShowData(world->session, u"M-991231-001"_s);
        QCOMPARE(windowCount(), 2U);
        QCOMPARE(lastWindow().name, u"frmMainData"_s);
    }

    void missingDatumIsToldUnderItsKind()
    {
        TestWorld::addRow(world->session.RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        const QString text = u"指定されたデータが見つかりませんでした。"_s;
        world->dialogs.expect(MessageBox{.text = text, .title = u"定義"_s, .icon = Icon::Information});
        ShowData(world->session, u"M-991231-002"_s);
        world->dialogs.expect(MessageBox{.text = text, .title = u"文献"_s, .icon = Icon::Information});
        ShowData(world->session, u"R-991231-001"_s);
        QCOMPARE(windowCount(), 0U);
    }

    void unknownKindShowsNothing()
    {
        ShowData(world->session, u"X-991231-001"_s);
        ShowData(world->session, u"m-991231-001"_s);
        ShowData(world->session, QString());
        QCOMPARE(windowCount(), 0U);
    }

    void failureToShowIsReported()
    {
        world->session.RsMain.reset();
        world->dialogs.expect(failureBox(u"ShowData"_s, 91));
        ShowData(world->session, u"M-991231-001"_s);
        QCOMPARE(windowCount(), 0U);
    }

    void registrationGetsAFreshIdentifierAndItsMode_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("windowName");
        QTest::newRow("definition") << u"M"_s << u"frmMainData"_s;
        QTest::newRow("document") << u"R"_s << u"frmRefDoc"_s;
        QTest::newRow("file") << u"F"_s << u"frmRefFileEntry"_s;
    }

    void registrationGetsAFreshIdentifierAndItsMode()
    {
        QFETCH(QString, kind);
        QFETCH(QString, windowName);
        const auto table = kind == u"M"_s   ? world->session.RsMain
                           : kind == u"R"_s ? world->session.RsRefDoc
                                            : world->session.RsRefFile;
        TestWorld::addRow(table, {u"水"_s, kind + u"-991231-001"_s, u"液体"_s});

        CreateRegisterForm(world->session, kind);

        QCOMPARE(windowCount(), 1U);
        QCOMPARE(lastWindow().name, windowName);
        QCOMPARE(lastWindow().fields[1], kind + u"-991231-002"_s);
        QVERIFY(world->calls.lines().contains(windowName + u".setMode registration"_s));
        QVERIFY(lastWindow().categories.empty());
    }

    void registrationHasItsIdentifierBeforeItsWindowIsShown()
    {
        for (int i = 1; i <= 9; ++i)
            world->mainWindow.nodes.push_back({u"FIXED%1"_s.arg(i), u"固定"_s, QString()});
        world->mainWindow.nodes.push_back({u"A"_s, u"自然"_s, u"CATEGORY"_s});
        world->mainWindow.selected = 10;
        CreateRegisterForm(world->session, u"R"_s);
        QVERIFY(compareLines(world->calls.lines(),
                             {u"registrationWindow R"_s, u"frmRefDoc.setFieldText 1 R-991231-001"_s,
                              u"frmRefDoc.showModeless"_s, u"frmRefDoc.setMode registration"_s,
                              u"frmRefDoc.setCategoryRows 自然|A"_s}));
    }

    void registrationEmptiesTheWindowThatIsOpen()
    {
        CreateRegisterForm(world->session, u"M"_s);
        FakeDataWindow& window = lastWindow();
        window.fields = {u"水"_s, u"M-991231-001"_s, u"液体"_s};
        window.links = {{.kind = u"定義"_s, .name = u"氷"_s, .identifier = u"M-991231-009"_s}};
        window.categories = {{.name = u"前"_s, .identifier = u"B"_s}};
        window.shownRow = {.databaseFile = u"QUILLON.mdb"_s, .number = 7};
        TestWorld::addRow(world->session.RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        CreateRegisterForm(world->session, u"M"_s);
        QCOMPARE(windowCount(), 1U);
        QCOMPARE(window.fields, (std::array{QString(), u"M-991231-002"_s, QString()}));
        QVERIFY(window.links.empty());
        QVERIFY(window.categories.empty());
        QCOMPARE(window.shownRow.number, 0);
        QCOMPARE(world->calls.lines().count(u"frmMainData.mayUnload"_s), 1);
        QCOMPARE(world->calls.lines().count(u"frmMainData.showModeless"_s), 2);
    }

    void windowThatMayNotCloseKeepsItsContents()
    {
        CreateRegisterForm(world->session, u"M"_s);
        FakeDataWindow& window = lastWindow();
        window.fields = {u"水"_s, u"M-991231-001"_s, u"液体"_s};
        window.closes = false;
        world->calls.take();
        CreateRegisterForm(world->session, u"M"_s);
        QCOMPARE(window.fields, (std::array{u"水"_s, u"M-991231-001"_s, u"液体"_s}));
        QVERIFY(
            compareLines(world->calls.lines(), {u"frmMainData.mayUnload"_s, u"frmMainData.bringToFront"_s}));
    }

    void withoutIdentifierNoRegistrationWindowOpens_data()
    {
        QTest::addColumn<QString>("kind");
        for (const QString& kind : {u"M"_s, u"R"_s, u"F"_s})
            QTest::newRow(kind.toUtf8()) << kind;
    }

    void withoutIdentifierNoRegistrationWindowOpens()
    {
        QFETCH(QString, kind);
        const ForeignLock other(*world->session.OpenDb, ForeignLock::Kind::Exclusive);
        world->dialogs.expect(failureBox(u"ExistCheck"_s, 3260));
        CreateRegisterForm(world->session, kind);
        QCOMPARE(windowCount(), 0U);
    }

    void registrationIsFiledUnderTheSelectedCategory_data()
    {
        QTest::addColumn<int>("selected");
        QTest::addColumn<int>("rows");
        QTest::newRow("nothing selected") << 0 << 0;
        QTest::newRow("last fixed node") << 9 << 0;
        QTest::newRow("first category") << 10 << 1;
    }

    void registrationIsFiledUnderTheSelectedCategory()
    {
        QFETCH(int, selected);
        QFETCH(int, rows);
        for (int i = 1; i <= 9; ++i)
            world->mainWindow.nodes.push_back({u"FIXED%1"_s.arg(i), u"固定"_s, QString()});
        world->mainWindow.nodes.push_back({u"A"_s, u"自然"_s, u"CATEGORY"_s});
        world->mainWindow.selected = selected;
        world->windows.registrationWindow(u"M"_s).setCategoryRows({{u"前"_s, u"B"_s}});

        CreateRegisterForm(world->session, u"M"_s);

        QCOMPARE(lastWindow().categories.size(), static_cast<std::size_t>(rows));
        if (rows == 1) {
            QCOMPARE(lastWindow().categories.back().name, u"自然"_s);
            QCOMPARE(lastWindow().categories.back().identifier, u"A"_s);
        }
    }

    void registrationNamesTheSelectedCategoryAsItIsCalledNow()
    {
        TestWorld::addRow(world->session.RsCategoryID, {u"A"_s, u"人工"_s});
        for (int i = 1; i <= LastFixedNode; ++i)
            world->mainWindow.nodes.push_back({u"FIXED%1"_s.arg(i), u"固定"_s, QString()});
        world->mainWindow.nodes.push_back({u"A"_s, u"自然"_s, u"CATEGORY"_s});
        world->mainWindow.selected = LastFixedNode + 1;
        CreateRegisterForm(world->session, u"M"_s);
        QCOMPARE(lastWindow().categories.back().name, u"人工"_s);
    }

    void unknownKindOfRegistrationIsReported()
    {
        world->dialogs.expect(failureBox(u"CreateRegisterForm"_s, 91));
        CreateRegisterForm(world->session, u"X"_s);
        QCOMPARE(windowCount(), 0U);
    }
};

QTEST_GUILESS_MAIN(TestDataRecords)
#include "test_data_records.moc"

#include "core/close_all_form.h"
#include "core/form_mode.h"
#include "tests/support/test_world.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestOpenWindows : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;

    FakeDataWindow& open()
    {
        world->windows.newDataWindow(u"M"_s);
        return *world->windows.dataWindows.back();
    }

private Q_SLOTS:
    void init() { world = std::make_unique<TestWorld>(); }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void modeSwitchesTheMenus_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QStringList>("menus");
        QTest::addColumn<QString>("text");
        const QStringList registration{u"disable mnuLink"_s, u"disable mnuDataUpdate"_s,
                                       u"enable mnuDataEntry"_s, u"disable mnuDataDelete"_s,
                                       u"disable mnuCategory"_s};
        const QStringList display{u"enable mnuLink"_s, u"enable mnuCategory"_s, u"enable mnuDataDelete"_s,
                                  u"enable mnuDataUpdate"_s, u"disable mnuDataEntry"_s};
        QTest::newRow("definition, registration")
            << u"frmMainData"_s << 1 << (registration + QStringList{u"enable mnuDataNoDef"_s})
            << u"登録モード"_s;
        QTest::newRow("document, registration")
            << u"frmRefDoc"_s << 1 << (registration + QStringList{u"enable mnuDataLoadText"_s})
            << u"登録モード"_s;
        QTest::newRow("file, registration") << u"frmRefFileEntry"_s << 1 << QStringList() << u"前"_s;
        QTest::newRow("definition, display")
            << u"frmMainData"_s << 2 << (display + QStringList{u"disable mnuDataNoDef"_s}) << u"表示モード"_s;
        QTest::newRow("document, display") << u"frmRefDoc"_s << 2 << display << u"表示モード"_s;
        QTest::newRow("file, display") << u"frmRefFileEntry"_s << 2 << display << u"表示モード"_s;
        QTest::newRow("another mode") << u"frmMainData"_s << 3 << QStringList() << u"前"_s;
        QTest::newRow("no mode") << u"frmMainData"_s << 0 << QStringList() << u"前"_s;
    }

    void modeSwitchesTheMenus()
    {
        QFETCH(QString, window);
        QFETCH(int, mode);
        FakeDataWindow form(window);
        form.mode = u"前"_s;
        SetFormMode(form, static_cast<qint16>(mode));
        QStringList menus;
        for (const QString& call : form.calls.lines()) {
            if (call.contains(u"able mnu"))
                menus << QString(call).remove(window + u'.');
        }
        QTEST(menus, "menus");
        QTEST(form.mode, "text");
    }

    void closingAllLeavesTheMainWindow()
    {
        open();
        open();
        open();
        CloseAllForm(world->session);
        QCOMPARE(world->windows.list.size(), 1U);
        QCOMPARE(world->windows.list.front(), &world->mainWindow);
    }

    void closingAllWithTheMainWindowAloneDoesNothing()
    {
        CloseAllForm(world->session);
        QCOMPARE(world->windows.list.size(), 1U);
    }

    void windowThatStaysIsAskedInPlaceOfTheNextOnes()
    {
        FakeDataWindow& first = open();
        FakeDataWindow& second = open();
        FakeDataWindow& third = open();
        second.closes = false;
        CloseAllForm(world->session);
        // The first goes, the second is asked in both remaining rounds, and the third is never reached.
        QVERIFY(std::ranges::find(world->windows.list, &first) == world->windows.list.end());
        QCOMPARE(world->windows.list.size(), 3U);
        QCOMPARE(world->windows.list[1], &second);
        QCOMPARE(world->windows.list[2], &third);
    }

    void windowThatTakesAnotherWithItEndsTheRoundsEarly()
    {
        FakeDataWindow& first = open();
        open();
        first.onUnload = [this] { world->windows.list.resize(1); };
        CloseAllForm(world->session);
        QCOMPARE(world->windows.list.size(), 1U);
    }

    void failureWhileClosingIsReportedAndKeepsTheRest()
    {
        FakeDataWindow& first = open();
        open();
        first.onUnload = [] { throw Error(errors::Locked); };
        world->dialogs.expect(MessageBox{
            .text = u"対処不能なエラーが発生しました。\r\nLOCATION : CloseAllForm\r\nEXPLANATION : "_s +
                    standardDescription(errors::Locked),
            .title = u"Quillon 障害対策部"_s});
        CloseAllForm(world->session);
        QCOMPARE(world->windows.list.size(), 3U);
    }
};

QTEST_GUILESS_MAIN(TestOpenWindows)
#include "test_open_windows.moc"

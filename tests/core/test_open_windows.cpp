#include "core/close_all_form.h"
#include "store/windows_of_database.h"
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

    void closingTheDataWindowsLeavesTheOthers()
    {
        open();
        world->windows.list.push_back(&world->windows.selection);
        open();
        QVERIFY(CloseDataWindows(world->session));
        const std::vector<LoadedWindow*> left = {&world->mainWindow, &world->windows.selection};
        QCOMPARE(world->windows.list, left);
    }

    void dataWindowThatStaysKeepsAllOfThem()
    {
        FakeDataWindow& first = open();
        FakeDataWindow& second = open();
        FakeDataWindow& third = open();
        second.closes = false;
        QVERIFY(!CloseDataWindows(world->session));
        const std::vector<LoadedWindow*> left = {&world->mainWindow, &first, &second, &third};
        QCOMPARE(world->windows.list, left);
    }

    void dataWindowThatTakesAnotherWithItLeavesNoneToAsk()
    {
        FakeDataWindow& first = open();
        open();
        first.onUnload = [this] { world->windows.list.resize(1); };
        QVERIFY(CloseDataWindows(world->session));
        QCOMPARE(world->windows.list.size(), 1U);
    }
};

QTEST_GUILESS_MAIN(TestOpenWindows)
#include "test_open_windows.moc"

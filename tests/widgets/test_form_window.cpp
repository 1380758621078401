#include "app/base/error.h"
#include "app/base/ports/data_window.h"
#include "store/session.h"
#include "tests/support/errors_of.h"
#include "tests/support/failure_box.h"
#include "tests/support/held_key.h"
#include "tests/support/outside_press.h"
#include "tests/support/scripted_dialogs.h"
#include "tests/support/test_ports.h"
#include "ui/widgets/form_window.h"
#include "ui/widgets/persons_input.h"
#include "ui/widgets/window_registry.h"

#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

#include <functional>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

class PlainWindow : public FormWindow
{
public:
    using FormWindow::addButton;
    using FormWindow::addEntry;
    using FormWindow::addLine;
    using FormWindow::addMenu;
    using FormWindow::addSubmenu;
    using FormWindow::FormWindow;
    using FormWindow::keepAtLeast;
    using FormWindow::openOverMainWindow;
    using FormWindow::roomOnScreen;
    using FormWindow::setContents;

    std::function<bool()> question = [] { return true; };
    int asked = 0;
    int clicked = 0;
    // NOLINTNEXTLINE(readability-identifier-naming): as handlers are called in the windows
    void mnuCount_Click() { ++clicked; }

protected:
    bool queryUnload() override
    {
        ++asked;
        return question();
    }
};

class ItemWindow : public PlainWindow, public DataWindow
{
public:
    using PlainWindow::PlainWindow;

    QString fieldText(int) const override { return {}; }
    void setFieldText(int, const QString&) override {}
    void setCaption(const QString& caption) override { setWindowTitle(caption); }
    void setMode(FormMode) override {}
    void setLinkRows(const std::vector<LinkRow>&) override {}
    void setCategoryRows(const std::vector<CategoryRow>&) override {}
    std::vector<CategoryRow> categoryRows() const override { return {}; }
    void setRow(const DatumRow&) override {}
    DatumRow row() const override { return {}; }
    void showModeless() override { FormWindow::showModeless(); }
    void showModal() override { FormWindow::showModal(); }
};

struct World {
    World() : session({dialogs, log, clock, desktop, files, registry}, u"/folder"_s)
    {
        for (const QString& name : {u"frmMainData"_s, u"frmRefDoc"_s, u"frmRefFileEntry"_s})
            registry.setFactory(name, [this, name] { return new ItemWindow(session, registry, name); });
        registry.setFactory(u"frmFind"_s,
                            [this] { return new PlainWindow(session, registry, u"frmFind"_s); });
    }
    ~World()
    {
        while (!registry.loaded().empty())
            delete dynamic_cast<FormWindow*>(registry.loaded().front());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    PlainWindow* window(const QString& name) { return new PlainWindow(session, registry, name); }
    QStringList loadedNames() const
    {
        QStringList names;
        for (const LoadedWindow* loaded : registry.loaded())
            names << loaded->windowName();
        return names;
    }

    ScriptedDialogs dialogs;
    MemoryEventLog log;
    FixedClock clock;
    RecordingDesktop desktop;
    RealFiles files;
    WindowRegistry registry;
    Session session;
};

} // namespace

class TestFormWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_world = std::make_unique<World>(); }
    void cleanup()
    {
        QCOMPARE(m_world->dialogs.takeComplaints(), QStringList());
        m_world.reset();
    }

    void windowsStandInTheOrderOfLoading();
    void mainWindowStandsFirst();
    void unloadingTellsAndDeletes();
    void aWindowThatWasNeverShownCanBeUnloaded();
    void theCloseBoxAsksToo();
    void aRefusedCloseKeepsTheWindow();
    void aQuestionThatFailsAtTheCloseBoxKeepsTheWindowAndIsShown();
    void aQuestionThatFailsInAnUnloadingKeepsTheWindowAndIsTheCallersAffair();
    void closingAgainDuringTheQuestionIsRefused();
    void aWindowDeletedDuringItsQuestionIsGone();
    void unloadingTwiceAsksOnce();
    void deletingAWindowTakesItOutOfTheRegistry();
    void aModalShowingEndsWithTheUnloading();
    void theWindowBeforeActsAgainAfterAModalShowing();
    void commandsOfAWindowThatWaitsForAnotherDoNothing();
    void commandsOfAWindowThatAllOthersWaitForAct();
    void aModalShowingOutlastsARefusal();
    void aModalShowingEndsWhenTheWindowIsDeleted();
    void aVisibleWindowBecomesModal();
    void menusAreFoundByTheirNames();
    void captionsStandAsGiven();
    void entriesAndButtonsRunTheirHandlers();
    void failuresOfEntriesAndButtonsAreThoseOfTheirClicks_data();
    void failuresOfEntriesAndButtonsAreThoseOfTheirClicks();
    void menuBarShowsWhatHasChanged();
    void enterHeldDownPressesTheButtonOnce();
    void everyNewDataWindowIsFresh();
    void theRegistrationWindowIsShared();
    void anUnloadedSharedWindowIsMadeAnew();
    void unknownWindowsAreRefused();
    void auxiliaryWindowsAreShown();
    void dataWindowsAreToldApart();
    void smallWindowOpensOverTheMainWindow();
    void smallWindowStaysOnTheScreen();
    void windowIsNoLargerThanItsScreen();
    void leastSizeIsNoLargerThanTheScreen();
    void windowThatGrowsStaysOnTheScreen();

private:
    std::unique_ptr<World> m_world;
};

void TestFormWindow::windowsStandInTheOrderOfLoading()
{
    m_world->window(u"frmMainMenu"_s);
    PlainWindow* second = m_world->window(u"b"_s);
    m_world->window(u"a"_s);
    QCOMPARE(m_world->loadedNames(), QStringList({u"frmMainMenu"_s, u"b"_s, u"a"_s}));
    second->showModeless();
    second->bringToFront();
    QCOMPARE(m_world->loadedNames(), QStringList({u"frmMainMenu"_s, u"b"_s, u"a"_s}));
    QVERIFY(second->unload());
    QCOMPARE(m_world->loadedNames(), QStringList({u"frmMainMenu"_s, u"a"_s}));
}

void TestFormWindow::mainWindowStandsFirst()
{
    for (const QString& name : {u"frmManual"_s, u"frmSplash"_s})
        m_world->window(name);
    QCOMPARE(m_world->registry.mainWindow(), nullptr);
    PlainWindow* mainWindow = m_world->window(u"frmMainMenu"_s);
    m_world->registry.setMainWindow(*mainWindow);
    m_world->window(u"frmMainData"_s);
    QCOMPARE(m_world->loadedNames(),
             QStringList({u"frmMainMenu"_s, u"frmManual"_s, u"frmSplash"_s, u"frmMainData"_s}));
    mainWindow->unload();
    QCOMPARE(m_world->registry.mainWindow(), nullptr);
}

void TestFormWindow::unloadingTellsAndDeletes()
{
    const QPointer<PlainWindow> window = m_world->window(u"a"_s);
    window->showModeless();
    const QSignalSpy unloaded(window, &FormWindow::unloaded);
    QVERIFY(window->unload());
    QCOMPARE(unloaded.size(), 1);
    QVERIFY(!window->isVisible());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(window.isNull());
}

void TestFormWindow::aWindowThatWasNeverShownCanBeUnloaded()
{
    PlainWindow* window = m_world->window(u"a"_s);
    QVERIFY(window->unload());
    QCOMPARE(window->asked, 1);
    QVERIFY(m_world->registry.loaded().empty());
}

void TestFormWindow::theCloseBoxAsksToo()
{
    PlainWindow* window = m_world->window(u"a"_s);
    window->showModeless();
    QVERIFY(window->close());
    QCOMPARE(window->asked, 1);
    QVERIFY(m_world->registry.loaded().empty());
}

void TestFormWindow::aRefusedCloseKeepsTheWindow()
{
    PlainWindow* window = m_world->window(u"a"_s);
    window->question = [] { return false; };
    window->showModeless();
    QVERIFY(!window->close());
    QVERIFY(!window->unload());
    QCOMPARE(window->asked, 2);
    QVERIFY(window->isVisible());
    QCOMPARE(m_world->loadedNames(), QStringList(u"a"_s));
}

void TestFormWindow::aQuestionThatFailsAtTheCloseBoxKeepsTheWindowAndIsShown()
{
    PlainWindow* window = m_world->window(u"a"_s);
    window->showModeless();
    window->question = []() -> bool { throw Error(errors::NoCurrentRecord, u"行がありません。"_s); };
    m_world->dialogs.expect({.text = u"対処不能なエラーが発生しました。\r\n説明：行がありません。"_s,
                             .title = u"Quillon 障害対策部"_s});
    QVERIFY(!window->close());
    QCOMPARE(m_world->loadedNames(), QStringList(u"a"_s));
    QCOMPARE(m_world->log.lines.size(), 1);
    QVERIFY(m_world->log.lines.first().contains(u"Form_Unload"_s));
}

void TestFormWindow::aQuestionThatFailsInAnUnloadingKeepsTheWindowAndIsTheCallersAffair()
{
    PlainWindow* window = m_world->window(u"a"_s);
    bool fails = true;
    window->question = [&fails] {
        if (fails)
            throw Error(errors::Locked);
        return true;
    };
    // Closing all windows stops there and reports under its own name.
    QCOMPARE(errorOf([&] { window->unload(); }), errors::Locked);
    QCOMPARE(m_world->loadedNames(), QStringList(u"a"_s));
    QCOMPARE(m_world->log.lines.size(), 0);
    fails = false;
    QVERIFY(window->unload());
}

void TestFormWindow::closingAgainDuringTheQuestionIsRefused()
{
    PlainWindow* window = m_world->window(u"a"_s);
    bool nested = true;
    window->question = [&] {
        nested = window->close() || window->unload();
        return true;
    };
    window->showModeless();
    QVERIFY(window->unload());
    QVERIFY(!nested);
    QCOMPARE(window->asked, 1);
}

void TestFormWindow::aWindowDeletedDuringItsQuestionIsGone()
{
    PlainWindow* window = m_world->window(u"a"_s);
    // The question lives outside the window, as a box of its own does.
    const auto question = [window] {
        delete window;
        return true;
    };
    window->question = [&question] { return question(); };
    const QPointer<PlainWindow> guard(window);
    QVERIFY(window->unload());
    QVERIFY(guard.isNull());
    QVERIFY(m_world->registry.loaded().empty());
}

void TestFormWindow::unloadingTwiceAsksOnce()
{
    PlainWindow* window = m_world->window(u"a"_s);
    QVERIFY(window->unload());
    QVERIFY(window->unload());
    QVERIFY(window->close());
    QCOMPARE(window->asked, 1);
}

void TestFormWindow::deletingAWindowTakesItOutOfTheRegistry()
{
    LoadedWindow& shared = m_world->registry.sharedWindow(u"frmFind"_s);
    QCOMPARE(m_world->registry.loadedSharedWindow(u"frmFind"_s), &shared);
    delete &shared;
    QVERIFY(m_world->registry.loaded().empty());
    QCOMPARE(m_world->registry.loadedSharedWindow(u"frmFind"_s), nullptr);
}

void TestFormWindow::aModalShowingEndsWithTheUnloading()
{
    m_world->window(u"frmMainMenu"_s)->showModeless();
    PlainWindow* window = m_world->window(u"a"_s);
    bool wasModal = false;
    QTimer::singleShot(0, window, [&] {
        wasModal = window->isVisible() && window->windowModality() == Qt::ApplicationModal;
        window->close();
    });
    window->showModal();
    QVERIFY(wasModal);
    QCOMPARE(m_world->loadedNames(), QStringList(u"frmMainMenu"_s));
}

void TestFormWindow::theWindowBeforeActsAgainAfterAModalShowing()
{
    const PersonsInput& input = PersonsInput::ofApplication();
    PlainWindow* main = m_world->window(u"frmMainMenu"_s);
    PlainWindow* before = m_world->window(u"a"_s);
    PlainWindow* window = m_world->window(u"b"_s);
    main->showModeless();
    before->showModeless();
    QTest::keyClick(before, Qt::Key_A);
    QWidget* acting = nullptr;
    QTimer::singleShot(0, window, [&] {
        acting = input.actingWindow();
        QTest::keyClick(window, Qt::Key_A);
        window->close();
    });
    window->showModal();
    QCOMPARE(acting, window);
    QCOMPARE(input.actingWindow(), before); // what its action goes on to ask is asked in front of it
}

void TestFormWindow::commandsOfAWindowThatWaitsForAnotherDoNothing()
{
    PlainWindow* window = m_world->window(u"frmMainMenu"_s);
    QMenu* menu = window->addMenu(u"mnuData"_s, u"データ(&D)"_s);
    const QAction* entry =
        window->addEntry(menu, u"mnuCount"_s, u"数える(&C)"_s, &PlainWindow::mnuCount_Click);
    QPushButton* button =
        window->addButton(window, u"cmdCount"_s, u"数える(&C)"_s, &PlainWindow::mnuCount_Click);
    window->showModeless();
    // A box of the window itself, and another one's.
    for (QWidget* const owner : {static_cast<QWidget*>(window), static_cast<QWidget*>(nullptr)}) {
        QMessageBox box(owner);
        box.setWindowModality(Qt::ApplicationModal);
        box.show();
        chooseFromOutside(*menu, *entry);
        pressFromOutside(*button);
        QCOMPARE(window->clicked, 0);
    }
    chooseFromOutside(*menu, *entry);
    pressFromOutside(*button);
    QCOMPARE(window->clicked, 2);
}

void TestFormWindow::commandsOfAWindowThatAllOthersWaitForAct()
{
    m_world->window(u"frmMainMenu"_s)->showModeless();
    PlainWindow* window = m_world->window(u"a"_s);
    QMenu* menu = window->addMenu(u"mnuData"_s, u"データ(&D)"_s);
    QMenu* submenu = window->addSubmenu(menu, u"mnuMore"_s, u"その他(&M)"_s);
    const QAction* entry =
        window->addEntry(submenu, u"mnuCount"_s, u"数える(&C)"_s, &PlainWindow::mnuCount_Click);
    QPushButton* button =
        window->addButton(window, u"cmdCount"_s, u"数える(&C)"_s, &PlainWindow::mnuCount_Click);
    QTimer::singleShot(0, window, [&] {
        chooseFromOutside(*submenu, *entry);
        pressFromOutside(*button);
        QCOMPARE(window->clicked, 2);
        window->close();
    });
    window->showModal();
}

void TestFormWindow::aModalShowingOutlastsARefusal()
{
    PlainWindow* window = m_world->window(u"a"_s);
    window->question = [window] { return window->asked > 1; };
    bool stayed = false;
    QTimer::singleShot(0, window, [&] {
        stayed = !window->unload() && window->isVisible();
        QTimer::singleShot(0, window, [window] { window->unload(); });
    });
    window->showModal();
    QVERIFY(stayed);
    QVERIFY(m_world->registry.loaded().empty());
}

void TestFormWindow::aModalShowingEndsWhenTheWindowIsDeleted()
{
    PlainWindow* window = m_world->window(u"a"_s);
    QTimer::singleShot(0, qApp, [window] { delete window; });
    window->showModal();
    QVERIFY(m_world->registry.loaded().empty());
}

void TestFormWindow::aVisibleWindowBecomesModal()
{
    PlainWindow* window = m_world->window(u"a"_s);
    window->showModeless();
    QVERIFY(!window->isModal());
    bool wasModal = false;
    QTimer::singleShot(0, window, [&] {
        wasModal = window->isModal() && window->isVisible();
        window->unload();
    });
    window->showModal();
    QVERIFY(wasModal);
}

void TestFormWindow::menusAreFoundByTheirNames()
{
    PlainWindow* window = m_world->window(u"a"_s);
    QMenu* menu = window->addMenu(u"mnuData"_s, u"データ&D)"_s);
    QMenu* submenu = window->addSubmenu(menu, u"mnuEntry"_s, u"新規データ登録(&E)"_s);
    QAction* entry = window->addEntry(submenu, u"mnuEntryMain"_s, u"定義データ(&M)"_s);
    QAction* line = window->addLine(menu, u"mnuDataLine"_s);
    QCOMPARE(window->findChild<QMenu*>(u"mnuData"_s), menu);
    QCOMPARE(window->findChild<QMenu*>(u"mnuEntry"_s), submenu);
    QCOMPARE(window->findChild<QAction*>(u"mnuEntry"_s), submenu->menuAction());
    QCOMPARE(window->findChild<QAction*>(u"mnuEntryMain"_s), entry);
    QCOMPARE(window->findChild<QAction*>(u"mnuDataLine"_s), line);
    QVERIFY(line->isSeparator());
    QCOMPARE(window->menuBar()->actions(), QList<QAction*>{menu->menuAction()});
    QVERIFY(!window->menuBar()->isNativeMenuBar());
}

void TestFormWindow::captionsStandAsGiven()
{
    PlainWindow* window = m_world->window(u"a"_s);
    QMenu* menu = window->addMenu(u"mnuData"_s, u"データ&D)"_s);
    QCOMPARE(menu->title(), u"データ&D)"_s);
    QCOMPARE(window->addEntry(menu, u"x"_s, u"画面の切り替え(&F2)"_s)->text(), u"画面の切り替え(&F2)"_s);
    QVERIFY(!menu->toolTipsVisible());
}

void TestFormWindow::entriesAndButtonsRunTheirHandlers()
{
    PlainWindow* window = m_world->window(u"a"_s);
    QMenu* menu = window->addMenu(u"mnuData"_s, u"表"_s);
    window->addEntry(menu, u"mnuCount"_s, u"数える"_s, &PlainWindow::mnuCount_Click)->trigger();
    QCOMPARE(window->clicked, 1);
    window->addEntry(menu, u"mnuTen"_s, u"十"_s, [window] { window->clicked += 10; })->trigger();
    QCOMPARE(window->clicked, 11);
    window->addEntry(menu, u"mnuNothing"_s, u"無"_s)->trigger();
    QCOMPARE(window->clicked, 11);
    const QPushButton* button =
        window->addButton(window, u"cmdCount"_s, u"数える(&C)"_s, &PlainWindow::mnuCount_Click);
    QCOMPARE(button, window->findChild<QPushButton*>(u"cmdCount"_s));
    QCOMPARE(button->text(), u"数える(&C)"_s);
    window->findChild<QPushButton*>(u"cmdCount"_s)->click();
    QCOMPARE(window->clicked, 12);
}

void TestFormWindow::failuresOfEntriesAndButtonsAreThoseOfTheirClicks_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("location");
    QTest::newRow("an entry") << u"mnuEnd"_s << u"mnuEnd_Click"_s;
    QTest::newRow("a button") << u"cmdOK"_s << u"cmdOK_Click"_s;
    QTest::newRow("a button of an array") << u"cmdSize(1)"_s << u"cmdSize_Click"_s;
}

void TestFormWindow::failuresOfEntriesAndButtonsAreThoseOfTheirClicks()
{
    QFETCH(const QString, name);
    QFETCH(const QString, location);
    PlainWindow* window = m_world->window(u"a"_s);
    const auto fail = [] { throw Error(errors::DiskFull); };
    m_world->dialogs.expect(untrapped(errors::DiskFull));
    if (name.startsWith(u"mnu"))
        window->addEntry(window->addMenu(u"mnuData"_s, u"表"_s), name, name, fail)->trigger();
    else
        window->addButton(window, name, name, fail)->click();
    QVERIFY(m_world->log.lines.value(0).contains(u"LOCATION : "_s + location + u", "_s));
}

void TestFormWindow::menuBarShowsWhatHasChanged()
{
    PlainWindow* window = m_world->window(u"a"_s);
    QMainWindow plainWindow; // with the same changes, as the toolkit has it
    QMenuBar& plain = *plainWindow.menuBar();
    plain.setNativeMenuBar(false);
    QList<QMenu*> menus;
    QList<QAction*> entries;
    for (int i = 0; i < 2; ++i) {
        const QString name = u"mnu%1"_s.arg(i);
        menus << window->addMenu(name, u"データ(&%1)"_s.arg(i));
        entries << plain.addMenu(u"データ(&%1)"_s.arg(i))->menuAction();
    }
    for (QMainWindow* shown : {static_cast<QMainWindow*>(window), &plainWindow}) {
        shown->resize(400, 200);
        shown->show();
    }
    const auto bothLookAlike = [&] {
        QCoreApplication::processEvents();
        QCOMPARE(window->menuBar()->grab().toImage(), plain.grab().toImage());
        for (int i = 0; i < 2; ++i)
            QCOMPARE(window->menuBar()->actionGeometry(menus[i]->menuAction()),
                     plain.actionGeometry(entries[i]));
    };
    bothLookAlike();
    for (const bool enabled : {false, true, false}) {
        menus.first()->menuAction()->setEnabled(enabled);
        entries.first()->setEnabled(enabled);
        bothLookAlike();
    }
    menus.first()->setTitle(u"とても長い名前(&L)"_s);
    entries.first()->setText(u"とても長い名前(&L)"_s);
    bothLookAlike();
    menus.last()->menuAction()->setVisible(false);
    entries.last()->setVisible(false);
    bothLookAlike();
    menus.last()->menuAction()->setVisible(true);
    entries.last()->setVisible(true);
    bothLookAlike();
}

void TestFormWindow::enterHeldDownPressesTheButtonOnce()
{
    PlainWindow* window = m_world->window(u"a"_s);
    auto* button = new QPushButton(u"実行"_s, window);
    const QSignalSpy clicked(button, &QPushButton::clicked);
    button->setFocus();
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
        quillon::testing::holdKey(*window, key);
        QTest::keyClick(window, Qt::Key_Escape); // another key presses nothing
    }
    QCOMPARE(clicked.size(), 2);
}

void TestFormWindow::everyNewDataWindowIsFresh()
{
    DataWindow& first = m_world->registry.newDataWindow(u"M"_s);
    DataWindow& second = m_world->registry.newDataWindow(u"M"_s);
    DataWindow& third = m_world->registry.newDataWindow(u"R"_s);
    QVERIFY(&first != &second);
    QCOMPARE(third.windowName(), u"frmRefDoc"_s);
    QCOMPARE(m_world->loadedNames(), QStringList({u"frmMainData"_s, u"frmMainData"_s, u"frmRefDoc"_s}));
    QCOMPARE(m_world->registry.loadedSharedWindow(u"frmMainData"_s), nullptr);
}

void TestFormWindow::theRegistrationWindowIsShared()
{
    DataWindow& first = m_world->registry.registrationWindow(u"M"_s);
    QCOMPARE(&m_world->registry.registrationWindow(u"M"_s), &first);
    QVERIFY(&m_world->registry.newDataWindow(u"M"_s) != &first);
    QCOMPARE(m_world->registry.registrationWindow(u"R"_s).windowName(), u"frmRefDoc"_s);
    QCOMPARE(m_world->registry.registrationWindow(u"F"_s).windowName(), u"frmRefFileEntry"_s);
}

void TestFormWindow::anUnloadedSharedWindowIsMadeAnew()
{
    const LoadedWindow* first = &m_world->registry.sharedWindow(u"frmFind"_s);
    QVERIFY(m_world->registry.sharedWindow(u"frmFind"_s).unload());
    const LoadedWindow* second = &m_world->registry.sharedWindow(u"frmFind"_s);
    QVERIFY(first != second); // the first is deleted later
    QCOMPARE(m_world->loadedNames(), QStringList(u"frmFind"_s));
}

void TestFormWindow::unknownWindowsAreRefused()
{
    WindowRegistry& registry = m_world->registry;
    QCOMPARE(errorOf([&] { registry.sharedWindow(u"frmNone"_s); }), errors::InvalidArgument);
    QCOMPARE(errorOf([&] { registry.showAuxiliary(u""_s); }), errors::InvalidArgument);
    for (const QString& kind : {u"X"_s, u"m"_s, u""_s}) {
        QCOMPARE(errorOf([&] { registry.newDataWindow(kind); }), errors::ObjectNotSet);
        QCOMPARE(errorOf([&] { registry.registrationWindow(kind); }), errors::ObjectNotSet);
    }
    QCOMPARE(errorOf([&] { registry.newDataWindow(u"F"_s); }), errors::ObjectNotSet);
    WindowRegistry empty;
    QCOMPARE(errorOf([&] { empty.newDataWindow(u"M"_s); }), errors::ObjectNotSet);
    QCOMPARE(errorOf([&] { empty.registrationWindow(u"F"_s); }), errors::ObjectNotSet);
    QVERIFY(registry.loaded().empty());
}

void TestFormWindow::auxiliaryWindowsAreShown()
{
    m_world->registry.showAuxiliary(u"frmFind"_s);
    const auto* window = dynamic_cast<FormWindow*>(m_world->registry.loadedSharedWindow(u"frmFind"_s));
    QVERIFY(window != nullptr && window->isVisible() && !window->isModal());
    m_world->registry.showAuxiliary(u"frmFind"_s);
    QCOMPARE(m_world->loadedNames(), QStringList(u"frmFind"_s));
}

void TestFormWindow::dataWindowsAreToldApart()
{
    m_world->window(u"frmMainMenu"_s);
    DataWindow& data = m_world->registry.newDataWindow(u"R"_s);
    QCOMPARE(m_world->registry.loaded()[0]->asDataWindow(), nullptr);
    QCOMPARE(m_world->registry.loaded()[1]->asDataWindow(), &data);
}

void TestFormWindow::smallWindowOpensOverTheMainWindow()
{
    m_world->window(u"frmManual"_s)->showModeless();
    PlainWindow* mainWindow = m_world->window(u"frmMainMenu"_s);
    m_world->registry.setMainWindow(*mainWindow);
    mainWindow->setGeometry(100, 80, 500, 400);
    mainWindow->show();
    PlainWindow* window = m_world->window(u"frmEntryInfo"_s);
    window->setWindowTitle(u"とても長い名前を持っている小さな画面の例"_s);
    window->resize(120, 90);
    window->openOverMainWindow();
    window->showModeless();
    const QPoint apart = window->geometry().center() - mainWindow->geometry().center();
    QVERIFY(apart.manhattanLength() <= 2);
    QVERIFY(window->width() > window->fontMetrics().horizontalAdvance(window->windowTitle()));
    // Where the person has moved it it stays.
    window->move(10, 20);
    window->showModeless();
    QCOMPARE(window->pos(), QPoint(10, 20));
}

void TestFormWindow::smallWindowStaysOnTheScreen()
{
    PlainWindow* mainWindow = m_world->window(u"frmMainMenu"_s);
    m_world->registry.setMainWindow(*mainWindow);
    mainWindow->setGeometry(-300, -200, 320, 220);
    mainWindow->show();
    PlainWindow* window = m_world->window(u"frmEntryInfo"_s);
    window->resize(300, 200);
    window->openOverMainWindow();
    window->showModeless();
    QVERIFY(window->screen()->availableGeometry().contains(window->geometry()));
}

void TestFormWindow::windowIsNoLargerThanItsScreen()
{
    PlainWindow* window = m_world->window(u"frmEntryInfo"_s);
    auto* body = new QWidget;
    body->setMinimumSize(3000, 2000);
    window->setContents(body);
    window->resize(5000, 4000);
    window->showModeless();
    QCoreApplication::processEvents();
    const QRect room = window->screen()->availableGeometry();
    QVERIFY2(room.contains(window->frameGeometry()), QTest::toString(window->frameGeometry()));
    QCOMPARE(body->size(), QSize(3000, 2000)); // it scrolls
    // One that fits is as large as it was made.
    PlainWindow* small = m_world->window(u"frmFind"_s);
    small->resize(420, 310);
    small->showModeless();
    QCOMPARE(small->size(), QSize(420, 310));
    // What the person makes larger stays as the person wants it.
    small->resize(1500, 310);
    QCoreApplication::processEvents();
    QCOMPARE(small->width(), 1500);
}

void TestFormWindow::leastSizeIsNoLargerThanTheScreen()
{
    PlainWindow* window = m_world->window(u"frmEntryInfo"_s);
    window->keepAtLeast(90000, 6000); // twips
    window->showModeless();
    window->resize(100, 100);
    QCoreApplication::processEvents();
    QCOMPARE(window->width(), window->roomOnScreen().width());
    QCOMPARE(window->frameSize().height(), 400);
}

void TestFormWindow::windowThatGrowsStaysOnTheScreen()
{
    PlainWindow* window = m_world->window(u"frmEntryInfo"_s);
    auto* body = new QWidget;
    window->setContents(body);
    window->resize(200, 200);
    window->showModeless();
    const QRect room = window->screen()->availableGeometry();
    window->move(room.right() - 250, room.bottom() - 250);
    body->setMinimumSize(500, 400);
    QCoreApplication::processEvents();
    QVERIFY(window->width() >= 500 && window->height() >= 400);
    QVERIFY2(room.contains(window->frameGeometry()), QTest::toString(window->frameGeometry()));
}

QTEST_MAIN(TestFormWindow)
#include "test_form_window.moc"

#include "app/shell/session_end.h"
#include "core/data_records.h"
#include "tests/support/window_probe.h"
#include "tests/support/window_world.h"
#include "ui/data/frmMainData.h"
#include "ui/data/frmRefFileEntry.h"
#include "ui/main/frmMainMenu.h"

#include <QDir>
#include <QEventLoopLocker>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTimer>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// What the program does when the session of the person is to end. No box may appear in any of it.
class TestSessionEnd : public QObject
{
    Q_OBJECT

    std::unique_ptr<WindowWorld> world;
    std::unique_ptr<SessionEnd> sessionEnd;
    int ends = 0;
    int refusals = 0;

    /// A definition in a window of its own.
    frmMainData& showDefinition()
    {
        world->open(world->createDatabase());
        WindowWorld::addRow(world->session().RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        ShowData(world->session(), u"M-991231-001"_s);
        WindowWorld::processEvents();
        return *world->window<frmMainData>(u"frmMainData"_s);
    }
    static QPlainTextEdit& content(frmMainData& window)
    {
        return *WindowWorld::control<QPlainTextEdit>(window, u"txtFields(2)"_s);
    }
    /// The system asks whether the session may end. True when it is refused.
    bool isRefused() const
    {
        const int before = refusals;
        Q_EMIT qGuiApp->commitDataRequest(*qGuiApp->findChild<QSessionManager*>());
        WindowWorld::processEvents();
        return refusals > before;
    }
    static void quit()
    {
        QEvent quit(QEvent::Quit);
        QCoreApplication::sendEvent(qGuiApp, &quit);
        WindowWorld::processEvents();
    }

private Q_SLOTS:
    static void initTestCase() { QGuiApplication::setQuitOnLastWindowClosed(false); } // as in the program
    void init()
    {
        ends = 0;
        refusals = 0;
        world = std::make_unique<WindowWorld>();
        sessionEnd = std::make_unique<SessionEnd>(
            world->program.windows(), [this] { ++ends; }, [this](QSessionManager&) { ++refusals; });
    }
    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        QCOMPARE(world->eventLog.lines, QStringList());
        sessionEnd.reset();
        world.reset();
    }

    void quittingEndsAndAsksNothing()
    {
        quit();
        QCOMPARE(ends, 1);
        QVERIFY(world->mainWindow().isVisible()); // nothing was closed
    }

    void quittingAsksNothingForUnsavedTextEither()
    {
        content(showDefinition()).setPlainText(u"書きかけ"_s);
        quit();
        QCOMPARE(ends, 1);
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s, u"frmMainData"_s}));
    }

    void withNothingUnsavedTheSessionMayEnd()
    {
        QVERIFY(!isRefused());
        frmMainData& window = showDefinition();
        QVERIFY(!isRefused());
        // What has been typed and taken back.
        content(window).setPlainText(u"書きかけ"_s);
        content(window).setPlainText(u"液体"_s);
        QVERIFY(!isRefused());
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuEntryMain"_s));
        QVERIFY(!isRefused()); // an empty registration
        QCOMPARE(ends, 0);     // others may refuse
        QCOMPARE(world->windowCount(u"frmMainData"_s), 2);
    }

    void unsavedTextRefusesTheEnd()
    {
        frmMainData& window = showDefinition();
        content(window).setPlainText(u"書きかけ"_s);
        QVERIFY(isRefused());
        QVERIFY(window.isVisible());
        QCOMPARE(window.fieldText(2), u"書きかけ"_s);
        world->dialogs.expect({.text = u"本データを更新しました。"_s, .title = u"定義"_s});
        QVERIFY(WindowWorld::choose(window, u"mnuDataUpdate"_s));
        QVERIFY(!isRefused());
        QCOMPARE(ends, 0);
    }

    void unsavedRegistrationRefusesTheEnd()
    {
        showDefinition();
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuEntryMain"_s));
        auto* window = world->window<frmMainData>(u"frmMainData"_s, 1);
        QVERIFY(window);
        WindowWorld::control<QLineEdit>(*window, u"txtFields(0)"_s)->setText(u"火"_s);
        QVERIFY(isRefused());
        QVERIFY(window->isVisible());
    }

    void compositionRefusesTheEndAndGoesOn()
    {
        frmMainData& window = showDefinition();
        window.activateWindow();
        content(window).setFocus();
        compose(content(window), u"です"_s);
        QVERIFY(isRefused());
        QCOMPARE(window.fieldText(2), u"液体"_s); // not confirmed by the question
        compose(content(window), QString());
        QVERIFY(!isRefused());
    }

    void pathToBeRegisteredRefusesTheEnd()
    {
        QVERIFY(QDir(world->folder.path()).mkdir(u"RefFile"_s));
        showDefinition();
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuEntryRefFile"_s));
        auto* window = world->window<frmRefFileEntry>(u"frmRefFileEntry"_s);
        QVERIFY(window);
        QVERIFY(!isRefused());
        WindowWorld::control<QLineEdit>(*window, u"txtFields(0)"_s)->setText(u"図.png"_s);
        QVERIFY(isRefused());
        QVERIFY(window->isVisible());
    }

    void closedWindowRefusesNothing()
    {
        frmMainData& window = showDefinition();
        WindowWorld::control<QLineEdit>(window, u"txtFields(0)"_s)->setText(u"湯"_s);
        QVERIFY(isRefused());
        window.unloadAnswered();
        QVERIFY(!isRefused());
    }

    void noHelperOfTheToolkitEndsTheProgram()
    {
        QTimer::singleShot(0, this, [] { const QEventLoopLocker helper; });
        QTimer::singleShot(100, this, [] { QCoreApplication::exit(7); });
        QCOMPARE(QCoreApplication::exec(), 7);
        QCOMPARE(ends, 0);
    }
};

QTEST_MAIN(TestSessionEnd)
#include "test_session_end.moc"

#include "app/shell/frmSplash.h"
#include "core/data_records.h"
#include "store/kept/copies.h"
#include "store/kept/history.h"
#include "tests/support/window_world.h"
#include "ui/data/frmMainData.h"
#include "ui/main/frmMainMenu.h"

#include <QAction>
#include <QDir>
#include <QPointer>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestProgram : public QObject
{
    Q_OBJECT

    std::unique_ptr<WindowWorld> world;

    void openWithTwoDefinitions()
    {
        world->open(world->createDatabase());
        WindowWorld::addRow(world->session().RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        WindowWorld::addRow(world->session().RsMain, {u"火"_s, u"M-991231-002"_s, u"熱い"_s});
    }

    MessageBox shutdownQuestion() const
    {
        return {.text = u"Quillonを終了しますか。"_s,
                .title = u"Quillon システム運用部"_s,
                .buttons = Buttons::OkCancel};
    }

private Q_SLOTS:
    void init() { world = std::make_unique<WindowWorld>(); }
    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        QCOMPARE(world->eventLog.lines, QStringList());
        world.reset();
    }

    void theMainWindowIsOneAndIsTheSessions()
    {
        QCOMPARE(&world->program.mainWindow(), &world->mainWindow());
        QCOMPARE(&world->session().mainWindow(), static_cast<MainWindowPort*>(&world->mainWindow()));
        QCOMPARE(world->loadedNames(), QStringList{u"frmMainMenu"_s});
    }

    void closingAllWindowsLeavesTheMainWindow()
    {
        openWithTwoDefinitions();
        ShowData(world->session(), u"M-991231-001"_s);
        ShowData(world->session(), u"M-991231-002"_s);
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuInfoEntry"_s));
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuInfoSystem"_s));
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s, u"frmMainData"_s, u"frmMainData"_s,
                                                    u"frmEntryInfo"_s, u"frmSplash"_s}));
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuDataCloseAll"_s));
        QCOMPARE(world->loadedNames(), QStringList{u"frmMainMenu"_s});
        QVERIFY(world->mainWindow().isVisible());
    }

    void closingAllWindowsWithNoneIsNothing()
    {
        openWithTwoDefinitions();
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuDataCloseAll"_s));
        QCOMPARE(world->loadedNames(), QStringList{u"frmMainMenu"_s});
    }

    void cancelKeepsTheMainWindow_data()
    {
        QTest::addColumn<bool>("byMenu");
        QTest::newRow("close box") << false;
        QTest::newRow("menu entry") << true;
    }

    void cancelKeepsTheMainWindow()
    {
        QFETCH(bool, byMenu);
        openWithTwoDefinitions();
        ShowData(world->session(), u"M-991231-001"_s);
        world->dialogs.expect(shutdownQuestion(), Answer::Cancel);
        if (byMenu)
            QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuEnd"_s));
        else
            QVERIFY(!world->mainWindow().close());
        WindowWorld::processEvents();
        QVERIFY(world->mainWindow().isVisible());
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s, u"frmMainData"_s}));
        QCOMPARE(world->ends, 0);
    }

    void okEndsTheProgramOnce()
    {
        world->dialogs.expect(shutdownQuestion(), Answer::Ok);
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuEnd"_s));
        QCOMPARE(world->ends, 1);
    }

    void theEndAsksNoWindowAnything()
    {
        const QString path = world->createDatabase();
        QPointer<frmMainData> watched;
        {
            Program program({world->dialogs, world->eventLog, world->clock, world->desktop, world->files},
                            world->folder.path());
            program.mainWindow().openChosenFile(path);
            WindowWorld::addRow(program.session().RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
            ShowData(program.session(), u"M-991231-001"_s);
            watched = dynamic_cast<frmMainData*>(program.windows().loaded().back());
            QVERIFY(watched);
            watched->setFieldText(2, u"書きかけ"_s); // closing the window would ask about this
            world->dialogs.expect(shutdownQuestion(), Answer::Ok);
            QVERIFY(program.mainWindow().unload());
        }
        QVERIFY(watched.isNull());
    }

    void whatIsDeletedAndTheDatabaseAtTheEndAreKept()
    {
        const QString path = world->createDatabase();
        const QString folder = world->folder.filePath(u"kept"_s);
        {
            Program program({.dialogs = world->dialogs,
                             .eventLog = world->eventLog,
                             .clock = world->clock,
                             .desktop = world->desktop,
                             .files = world->files,
                             .keptFolder = folder},
                            world->folder.path());
            program.mainWindow().openChosenFile(path);
            WindowWorld::addRow(program.session().RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
            WindowWorld::addRow(program.session().RsMain, {u"火"_s, u"M-991231-002"_s, u"熱い"_s});
            QVERIFY(DeleteData(program.session(), u"M-991231-001"_s, 0));
        }
        const kept::Place place(folder, path);
        kept::History history(place);
        QVERIFY(history.readOlder());
        QCOMPARE(history.row(history.events().at(0)).text(0), u"水"_s);
        QCOMPARE(kept::listCopies(place).at(0).rows, 1);
    }

    void withoutAPlaceNothingIsKept()
    {
        world->open(world->createDatabase());
        WindowWorld::addRow(world->session().RsMain, {u"水"_s, u"M-991231-001"_s, u"液体"_s});
        const QDir folder(world->folder.path());
        const QStringList before = folder.entryList();
        QVERIFY(DeleteData(world->session(), u"M-991231-001"_s, 0));
        QVERIFY(!world->session().keeper->keptFolder());
        QCOMPARE(folder.entryList(), before);
    }

    void everyWindowThatTheMenusOpenExists()
    {
        world->open(world->createDatabase());
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuEntryMain"_s));
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuInfoEntry"_s));
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuInfoSystem"_s));
        QCOMPARE(world->loadedNames(),
                 QStringList({u"frmMainMenu"_s, u"frmMainData"_s, u"frmEntryInfo"_s, u"frmSplash"_s}));
    }
};

QTEST_MAIN(TestProgram)
#include "test_program.moc"

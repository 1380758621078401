#include "app/shell/start_up.h"
#include "tests/restore/restore_world.h"
#include "tests/support/modal_script.h"
#include "tests/support/window_probe.h"
#include "ui/restore/frmKeptDatabases.h"

#include <QLineEdit>
#include <QPushButton>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// Choosing the database to take something back from, as a run without a file begins.
class TestKeptDatabasesWindow : public QObject
{
    Q_OBJECT

    std::unique_ptr<RestoreWorld> world;
    std::unique_ptr<ModalScript> modal;

    static ReportList& list(frmKeptDatabases& window)
    {
        return *window.findChild<ReportList*>(u"lsvDatabase"_s);
    }
    static void press(frmKeptDatabases& window, const QString& button)
    {
        QTest::mouseClick(window.findChild<QPushButton*>(button), Qt::LeftButton);
    }
    QString shown() { return world->control<QLineEdit>(u"txtDatabase"_s)->text(); }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<RestoreWorld>();
        modal = std::make_unique<ModalScript>(world->program.windows());
    }
    void cleanup()
    {
        QCOMPARE(modal->takeComplaints(), QStringList());
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        modal.reset();
        world.reset();
    }

    void databasesAreOfferedWithTheTimesOfWhatIsKept()
    {
        world->makeCopy();
        modal->expect<frmKeptDatabases>(u"frmKeptDatabases"_s, [&](frmKeptDatabases& window) {
            QCOMPARE(window.windowTitle(), u"復元するデータベースの選択"_s);
            QCOMPARE(headersOf(list(window).rows()),
                     QStringList({u"データベース"_s, u"最後の控え"_s, u"最後の履歴"_s, u"場所"_s}));
            QCOMPARE(list(window).accessibleName(), u"データベース一覧"_s);
            QCOMPARE(labelsOf(list(window)), QStringList(u"控えか履歴のあるデータベース(&L) ："_s));
            QCOMPARE(window.findChild<QPushButton*>(u"cmdFile"_s)->text(), u"ファイルを指定(&F)"_s);
            QCOMPARE(rowsOf(list(window).rows()),
                     QStringList(u"知識.mdb|2026/01/31 12:00:00|なし|"_s +
                                 QDir::toNativeSeparators(QFileInfo(world->path).canonicalFilePath())));
            press(window, u"cmdOK"_s);
        });
        QVERIFY(Restore(world->program));
        QCOMPARE(QFileInfo(shown()).fileName(), u"知識.mdb"_s);
    }

    void oneThatIsGoneOrWasRenamedIsOfferedUnderItsFormerName()
    {
        QVERIFY(DeleteData(world->session(), RestoreWorld::Water, 0));
        world->session().closeDatabase();
        QVERIFY(QFile::remove(world->path));
        modal->expect<frmKeptDatabases>(u"frmKeptDatabases"_s, [&](frmKeptDatabases& window) {
            QCOMPARE(list(window).rows().rowCount(), 1);
            QCOMPARE(list(window).rows().text(0, 0).toString(), u"知識.mdb (見つかりません)"_s);
            press(window, u"cmdOK"_s);
        });
        world->dialogs.expect(
            restoreBox(u"データベース「知識.mdb」が見つかりません。\r\n"
                       u"このデータベースの控えは残されていません。\r\n"
                       u"［失われたデータ］の一覧で、上書きや削除の前の内容を見ることができます。"_s));
        QVERIFY(Restore(world->program));
        WindowWorld::processEvents();
        QCOMPARE(world->list(u"lsvLost"_s).rows().rowCount(), 1);
    }

    void aFileCanBeNamedInstead()
    {
        world->dialogs.expect(FileDialog{.purpose = FileDialog::Purpose::Open,
                                         .filter = u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)|*.mdb"_s,
                                         .folder = world->folder.path()},
                              world->path);
        modal->expect<frmKeptDatabases>(u"frmKeptDatabases"_s, [&](frmKeptDatabases& window) {
            QVERIFY(!window.findChild<QPushButton*>(u"cmdOK"_s)->isEnabled()); // nothing is kept yet
            press(window, u"cmdFile"_s);
        });
        QVERIFY(Restore(world->program));
        QCOMPARE(shown(), world->path);
    }

    void cancelLeavesTheWindowEmpty()
    {
        modal->expect<frmKeptDatabases>(u"frmKeptDatabases"_s,
                                        [&](frmKeptDatabases& window) { press(window, u"cmdCancel"_s); });
        QVERIFY(Restore(world->program));
        QCOMPARE(shown(), QString());
        QVERIFY(world->window().isVisible());
    }

    void aFileOnTheCommandLineIsShownAtOnce()
    {
        QVERIFY(DeleteData(world->session(), RestoreWorld::Water, 0));
        QVERIFY(Restore(world->program, u"知識.mdb"_s));
        WindowWorld::processEvents();
        QCOMPARE(shown(), world->path);
        QCOMPARE(world->list(u"lsvLost"_s).rows().rowCount(), 1);
    }

    void fromAnywhereTheFilesBesideTheDatabaseAreMeant()
    {
        const QString elsewhere = world->folder.filePath(u"よそ"_s);
        QVERIFY(QDir().mkpath(elsewhere + u"/RefFile"_s));
        world->path = elsewhere + u"/知識.mdb"_s;
        QVERIFY(QFile::copy(world->folder.filePath(u"知識.mdb"_s), world->path));
        QVERIFY(QDir(world->folder.filePath(u"RefFile"_s)).removeRecursively());
        world->show();
        QCOMPARE(world->session().CurrentFolder, elsewhere);
    }
};

QTEST_MAIN(TestKeptDatabasesWindow)
#include "test_kept_databases_window.moc"

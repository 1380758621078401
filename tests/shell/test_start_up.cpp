#include "app/shell/start_up.h"

#include "app/base/system_files.h"
#include "app/shell/frmSplash.h"
#include "app/shell/program.h"
#include "core/close_all_form.h"
#include "store/database.h"
#include "store/schema.h"
#include "tests/old_files/old_file_writer.h"
#include "tests/support/scripted_dialogs.h"
#include "tests/support/test_folder.h"
#include "tests/support/test_ports.h"
#include "tests/support/window_world.h"
#include "ui/main/frmMainMenu.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QTimer>
#include <QtTest>

#include <functional>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

/// A file system that has everything, or nothing, and writes down what it was asked.
class AskedFiles : public SystemFiles
{
public:
    explicit AskedFiles(CallLog log) : calls(std::move(log)) {}

    bool entryExists(const QString& path) const override
    {
        calls.note(u"entryExists "_s + path);
        return hasEverything;
    }
    bool fileExists(const QString& path) const override { return entryExists(path); }

    mutable CallLog calls;
    bool hasEverything = true;
};

/// Writes down when the windows of the start appear and go, and what the splash window shows when it appears.
class WindowWatch : public QObject
{
public:
    explicit WindowWatch(CallLog log) : calls(std::move(log)) { qApp->installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const QString name = watched->objectName();
        if (name == u"frmSplash" || name == u"frmMainMenu") {
            if (event->type() == QEvent::Show)
                calls.note(name + u" appears"_s + (name == u"frmSplash" ? looks(*watched) : QString()));
            if (event->type() == QEvent::Hide)
                calls.note(name + u" goes"_s);
        }
        return false;
    }

private:
    static QString looks(const QObject& splash)
    {
        QString text = u": "_s + splash.findChild<QLabel*>(u"lblVersion"_s)->text();
        if (!splash.findChild<QWidget*>(u"pgbSplash"_s)->isHidden())
            text += u", progress"_s;
        if (splash.findChild<QTimer*>(u"tmrSwitch"_s)->isActive())
            text += u", the timer runs"_s;
        if (static_cast<const QWidget&>(splash).windowModality() == Qt::ApplicationModal)
            text += u", modal"_s;
        return text;
    }

    CallLog calls;
};

MessageBox missingFolder()
{
    return {.text = u"カレントフォルダ内に【RefFile】フォルダが見つかりませんでした。"
                    u"ファイルデータをリンク／表示するには"
                    u"カレントフォルダ内に【RefFile】フォルダが必要です。"_s,
            .title = u"Quillon システム運用部"_s};
}

} // namespace

class TestStartUp : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestFolder> folder;
    CallLog calls;
    ScriptedDialogs dialogs{calls};
    MemoryEventLog eventLog{calls};
    FixedClock clock;
    RecordingDesktop desktop{calls};
    RealFiles files{calls};
    AskedFiles askedFiles{calls};
    std::unique_ptr<Program> program;
    QStringList duringSplash; // the loaded windows while the splash window is on the screen
    std::function<void(QWidget& splash)> actInSplash; // what the person does there

    void makeProgram(const QString& currentFolder, Files& fileSystem)
    {
        program = std::make_unique<Program>(Program::Ports{.dialogs = dialogs,
                                                           .eventLog = eventLog,
                                                           .clock = clock,
                                                           .desktop = desktop,
                                                           .files = fileSystem,
                                                           .manualFolder = currentFolder},
                                            currentFolder);
    }

    QStringList loadedNames()
    {
        QStringList names;
        for (const LoadedWindow* window : program->windows().loaded())
            names << window->windowName();
        return names;
    }

    /// Runs the start with a splash window whose time passes at once.
    bool start(const std::optional<QString>& file = std::nullopt)
    {
        QTimer::singleShot(0, this, [this] {
            duringSplash = loadedNames();
            auto* splash = dynamic_cast<frmSplash*>(program->windows().loaded().back());
            if (splash == nullptr || splash->windowModality() != Qt::ApplicationModal || !splash->isVisible())
                duringSplash << u"no modal splash window"_s;
            if (splash != nullptr && actInSplash)
                actInSplash(*splash);
            for (int tick = 1; splash != nullptr && tick <= 30; ++tick)
                splash->tmrSwitch_Timer();
        });
        return Main(*program, file);
    }

    QString statusText()
    {
        const auto labels = program->mainWindow().findChildren<QLabel*>();
        QStringList texts;
        for (const QLabel* label : labels)
            texts << label->text();
        return texts.join(u'|');
    }

private Q_SLOTS:
    void init()
    {
        folder = std::make_unique<TestFolder>();
        QVERIFY(QDir(folder->path()).mkdir(u"RefFile"_s));
        duringSplash.clear();
        actInSplash = {};
        eventLog.lines.clear();
        askedFiles.hasEverything = true;
        calls.take();
    }

    void cleanup()
    {
        program.reset();
        QCOMPARE(dialogs.takeComplaints(), QStringList());
    }

    void theSplashComesAloneAndThenTheMainWindow()
    {
        makeProgram(folder->path(), files);
        QVERIFY(start());
        QCOMPARE(duringSplash, QStringList{u"frmSplash"_s});
        QCOMPARE(loadedNames(), QStringList{u"frmMainMenu"_s});
        QVERIFY(program->mainWindow().isVisible());
        QCOMPARE(program->mainWindow().windowTitle(), u"Quillon メイン画面"_s);
        QVERIFY(program->session().OpenDb == nullptr);
    }

    void everyStepComesInItsOrder()
    {
        askedFiles.hasEverything = false;
        makeProgram(folder->path(), askedFiles);
        const WindowWatch watch(calls);
        dialogs.expect(missingFolder());
        dialogs.meanwhile([this] { QCOMPARE(loadedNames(), QStringList()); });
        QVERIFY(start());
        QVERIFY(compareLines(
            calls.lines(),
            {u"entryExists "_s + folder->path() + QDir::separator() + u"RefFile"_s,
             messageBoxCall(missingFolder().text),
             u"frmSplash appears: System Ver.1.30 (Ver.2.00β), progress, the timer runs, modal"_s,
             u"frmSplash goes"_s, u"frmMainMenu appears"_s}));
    }

    void aMissingFolderIsToldAndTheStartGoesOn()
    {
        QVERIFY(QDir(folder->path()).rmdir(u"RefFile"_s));
        makeProgram(folder->path(), files);
        dialogs.expect(missingFolder());
        QVERIFY(start());
        QVERIFY(program->mainWindow().isVisible());
        QVERIFY(!QDir(folder->path()).exists(u"RefFile"_s));
    }

    void aPlainFileOfThatNameWillDo()
    {
        QVERIFY(QDir(folder->path()).rmdir(u"RefFile"_s));
        QFile file(folder->filePath(u"RefFile"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        makeProgram(folder->path(), files);
        QVERIFY(start());
    }

    void atARootTheSeparatorIsDoubled()
    {
        const QString root = QDir::toNativeSeparators(QDir::rootPath());
        makeProgram(root, askedFiles);
        QVERIFY(start());
        QCOMPARE(calls.lines().value(0), u"entryExists "_s + root + QDir::separator() + u"RefFile"_s);
    }

    void theDoubledSeparatorFindsWhatIsThere()
    {
        // The folder of the tests lies somewhere below the root; the first step on the way to it is there for sure.
        QString top = QFileInfo(folder->path()).canonicalFilePath();
        while (!QFileInfo(QFileInfo(top).path()).isRoot())
            top = QFileInfo(top).path();
        const QString root = QDir::toNativeSeparators(QFileInfo(top).path());
        QVERIFY(root.endsWith(QDir::separator()));
        const SystemFiles system;
        QVERIFY(system.entryExists(root + QDir::separator() + QFileInfo(top).fileName()));
        QVERIFY(!system.entryExists(root + QDir::separator() + u"quillon-無い"_s));
        QVERIFY(system.entryExists(folder->path() + QDir::separator() + QDir::separator() + u"RefFile"_s));
    }

    void withoutACurrentFolderTheStartEndsWithAReport()
    {
        makeProgram(QString(), files);
        dialogs.expect(MessageBox{.text = u"対処不能なエラーが発生しました。\r\nLOCATION : Main"
                                          u"\r\nEXPLANATION : "_s +
                                          standardDescription(76),
                                  .title = u"Quillon 障害対策部"_s});
        QVERIFY(!Main(*program, u"QUILLON.mdb"_s));
        QCOMPARE(loadedNames(), QStringList());
        QCOMPARE(eventLog.lines.size(), 1);
        QVERIFY(eventLog.lines.first().contains(u"LOCATION : Main, ErrorNumber : 76"_s));
    }

#ifdef Q_OS_UNIX
    void aFolderThatIsGoneIsNoCurrentFolder()
    {
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(folder->path()));
        QCOMPARE(currentFolderOfProcess(), QDir(folder->path()).canonicalPath());
        QVERIFY(QDir(folder->path()).removeRecursively());
        const QString found = currentFolderOfProcess();
        QVERIFY(QDir::setCurrent(before));
        QCOMPARE(found, QString());
    }
#endif

    void aNameThatBeginsWithAColonIsOneLikeOthers()
    {
#ifdef Q_OS_UNIX
        const auto database = Database::create(folder->path() + u"/:memory:"_s);
        for (const TableSchema* table : schema::all())
            database->execute(table->statement);
        makeProgram(folder->path(), files);
        QVERIFY(start(u":memory:"_s));
        QVERIFY(program->session().OpenDb != nullptr);
        QVERIFY2(statusText().contains(u"データベース (:memory:)が展開されています｡ "_s),
                 qPrintable(statusText()));
#else
        QSKIP("Such names are not allowed here.");
#endif
    }

    void helpReadBeforeTheMainWindowIsClosedLikeAllOthers_data()
    {
        QTest::addColumn<bool>("inSplash");
        QTest::newRow("asked for in the splash window") << true;
        QTest::newRow("asked for in the box before it") << false;
    }

    void helpReadBeforeTheMainWindowIsClosedLikeAllOthers()
    {
        QFile page(folder->filePath(u"manual.html"_s));
        QVERIFY(page.open(QIODevice::WriteOnly));
        page.write("<h2 id=\"a\">a</h2>");
        page.close();
        const auto askForHelp = [](QWidget& window) { QTest::keyClick(&window, Qt::Key_F1); };
        QFETCH(const bool, inSplash);
        if (inSplash) {
            actInSplash = askForHelp;
        } else {
            QVERIFY(QDir(folder->path()).rmdir(u"RefFile"_s));
            dialogs.expect(missingFolder());
            dialogs.meanwhile([&] {
                QMessageBox box;
                box.open();
                askForHelp(box);
            });
        }
        makeProgram(folder->path(), files);
        QVERIFY(start());
        QCOMPARE(loadedNames(), QStringList({u"frmMainMenu"_s, u"frmManual"_s}));
        CloseAllForm(program->session());
        QCOMPARE(loadedNames(), QStringList{u"frmMainMenu"_s});
    }

    void aFileIsOpenedOnceTheMainWindowStands()
    {
        const auto database = Database::create(folder->filePath(u"知識 1.mdb"_s));
        for (const TableSchema* table : schema::all())
            database->execute(table->statement);
        makeProgram(folder->path(), files);
        // A relative name counts from the folder of the start.
        QVERIFY(start(u"知識 1.mdb"_s));
        QVERIFY(program->session().OpenDb != nullptr);
        QCOMPARE(program->session().OpenDb->path(), folder->filePath(u"知識 1.mdb"_s));
        QVERIFY2(statusText().contains(u"データベース (知識 1.mdb)が展開されています｡ "_s),
                 qPrintable(statusText()));
        QVERIFY2(statusText().contains(u"表示データ数 ： 0"_s), qPrintable(statusText()));
    }

    void anOldFileIsConvertedAfterTheQuestion()
    {
        QFile file(folder->filePath(u"旧.mdb"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(writeOldFile(oldTables(5), {.format = 3}).bytes);
        file.close();
        makeProgram(folder->path(), files);
        dialogs.expect(MessageBox{.text = u"以前のデータベースエンジンのファイルです。\r\n"
                                          u"変換した写しを作成して展開します。"_s,
                                  .title = u"データベースコンバート処理"_s,
                                  .buttons = Buttons::OkCancel});
        QVERIFY(start(u"旧.mdb"_s));
        QVERIFY(program->session().OpenDb != nullptr);
        QCOMPARE(program->session().OpenDb->path(), folder->filePath(u"旧-変換.mdb"_s));
    }

    void aMissingFileIsToldAsInTheFileMenu()
    {
        makeProgram(folder->path(), files);
        dialogs.expect(MessageBox{.text = u"指定されたファイルが見つかりません。"_s,
                                  .title = u"Quillon データ調査分析部"_s});
        dialogs.meanwhile([this] { QVERIFY(program->mainWindow().isVisible()); });
        QVERIFY(start(u"missing.mdb"_s));
        QVERIFY(program->session().OpenDb == nullptr);
    }
};

QTEST_MAIN(TestStartUp)
#include "test_start_up.moc"

// A file of the older engine is chosen or dropped: a copy of it is made and opened, after a question.
#include "core/data_records.h"
#include "store/database.h"
#include "store/record_set.h"
#include "store/session.h"
#include "tests/faults/faulty_disk.h"
#include "tests/old_files/old_file_writer.h"
#include "tests/support/compare_text.h"
#include "tests/support/drag.h"
#include "tests/support/window_world.h"
#include "ui/data/frmMainData.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"
#include "ui/widgets/status_panels.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QProgressBar>
#include <QTest>
#include <QUrl>
#include <QWindow>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestOldFiles : public QObject
{
    Q_OBJECT

    const QString Title = u"データベースコンバート処理"_s;

    std::unique_ptr<WindowWorld> world;
    frmMainMenu* window = nullptr;
    ReportList* list = nullptr;

    QString status() const { return WindowWorld::control<StatusPanels>(*window, u"sbStatus"_s)->text(1); }
    static std::vector<OldTable> tables()
    {
        auto sample = oldTables();
        sample[0].rows = {{u"水"_s, u"M-991231-001"_s, u"液体"_s},
                          {u"火"_s, u"M-991231-002"_s, std::nullopt}};
        sample[1].rows = {{u"文献"_s, u"R-991231-001"_s, u"本文です。"_s.repeated(100)}};
        sample[5].rows = {{u"A"_s, u"歴史"_s}};
        return sample;
    }
    QString write(const QByteArray& bytes, const QString& name = u"QUILLON.mdb"_s) const
    {
        QFile file(world->folder.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write the file");
        return file.fileName();
    }
    static QByteArray read(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void expectQuestion(Answer answer)
    {
        world->dialogs.expect(MessageBox{.text = u"以前のデータベースエンジンのファイルです。\r\n"
                                                 u"変換した写しを作成して展開します。"_s,
                                         .title = Title,
                                         .buttons = Buttons::OkCancel},
                              answer);
    }
    void expectFailure(const QString& description)
    {
        world->dialogs.expect(MessageBox{
            .text = u"対処不能なエラーが発生しました。\r\nLOCATION : OpenDbFile\r\nEXPLANATION : "_s +
                    description,
            .title = u"Quillon 障害対策部"_s});
    }
    void expectNotes(const QString& text)
    {
        world->dialogs.expect(MessageBox{
            .text =
                u"変換した写し「QUILLON-変換.mdb」には、元のファイルのとおりでないところがあります。\r\n"_s +
                text,
            .title = Title});
    }
    /// The copy is open and shown.
    void isOpen(const QString& name = u"QUILLON-変換.mdb"_s)
    {
        QVERIFY(compareText(status(), u"データベース ("_s + name + u")が展開されています｡ "_s));
        QCOMPARE(list->rows().rowCount(), 3);
        QVERIFY(compareText(list->rows().text(0, 0), u"水"));
        QCOMPARE(window->nodeCount(), 10);
        QVERIFY(compareText(world->session().OpenDb->path(), world->folder.filePath(name)));
        QVERIFY(!WindowWorld::control<QProgressBar>(*window, u"pgbMain"_s)->isVisible());
    }
    QStringList names() const
    {
        return QDir(world->folder.path()).entryList({u"QUILLON*"_s}, QDir::Files, QDir::Name);
    }
    /// A database before, with a window whose text was changed.
    frmMainData* openEdited()
    {
        const QString path = world->createDatabase(u"前.mdb"_s);
        WindowWorld::addRow(RecordSet::openTable(Database::open(path), schema::Main()),
                            {u"木"_s, u"M-991231-001"_s, u"定義"_s});
        window->openChosenFile(path);
        ShowData(world->session(), u"M-991231-001"_s);
        auto* edited = world->window<frmMainData>(u"frmMainData"_s);
        edited->setFieldText(2, u"新しい"_s);
        return edited;
    }
    static MessageBox closingQuestion()
    {
        return {.text = u"現在のデータを更新しますか。"_s, .buttons = Buttons::YesNoCancel};
    }
    FileDialog fileDialog(const QString& name) const
    {
        return {.purpose = FileDialog::Purpose::Open,
                .filter = u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)|*.mdb"_s,
                .fileName = name,
                .folder = name.isEmpty() ? QString() : world->folder.path()};
    }

private Q_SLOTS:
    void init()
    {
        FaultyDisk::instance(); // below every database of this program
        world = std::make_unique<WindowWorld>();
        window = &world->mainWindow();
        list = WindowWorld::control<ReportList>(*window, u"lsvData"_s);
    }
    void cleanup()
    {
        FaultyDisk::instance().heal();
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void chosenFileIsConvertedAndOpened_data()
    {
        QTest::addColumn<int>("format");
        QTest::newRow("format 3") << 3;
        QTest::newRow("format 4") << 4;
    }
    void chosenFileIsConvertedAndOpened()
    {
        QFETCH(int, format);
        const QByteArray bytes = writeOldFile(tables(), {.format = format}).bytes;
        const QString path = write(bytes);
        world->dialogs.expect(fileDialog({}), path);
        expectQuestion(Answer::Ok);
        QVERIFY(WindowWorld::choose(*window, u"mnuFileOpen"_s));
        isOpen();
        QCOMPARE(read(path), bytes);
        QCOMPARE(names(), QStringList({u"QUILLON-変換.mdb"_s, u"QUILLON.mdb"_s}));
        // The present file is the copy: a cancelled dialog opens that again, without a question.
        world->dialogs.expect(fileDialog(world->folder.filePath(u"QUILLON-変換.mdb"_s)), std::nullopt);
        QVERIFY(WindowWorld::choose(*window, u"mnuFileOpen"_s));
        isOpen();
    }

    void fileOfTheConsoleIsConvertedAndOpened()
    {
        world->dialogs.expect(fileDialog({}), write(writeOldFile(tables()).bytes));
        expectQuestion(Answer::Ok);
        window->ExecSystemCommand(u"OPEN"_s);
        isOpen();
    }

    void longConversionsShowThatTheProgramIsAtWork()
    {
        /// Notes the pointer of the program when a control appears.
        class Watch : public QObject
        {
        public:
            std::vector<Qt::CursorShape> shapes;

        protected:
            bool eventFilter(QObject*, QEvent* event) override
            {
                const QCursor* pointer = QGuiApplication::overrideCursor();
                if (event->type() == QEvent::Show)
                    shapes.push_back(pointer == nullptr ? Qt::ArrowCursor : pointer->shape());
                return false;
            }
        };
        auto many = tables();
        for (int i = 0; i < 500; ++i)
            many[1].rows.push_back({u"文献"_s, u"R-991230-%1"_s.arg(i), u""_s});
        const QString path = write(writeOldFile(many).bytes);
        auto* bar = WindowWorld::control<QProgressBar>(*window, u"pgbMain"_s);
        Watch watch;
        bar->installEventFilter(&watch);
        expectQuestion(Answer::Ok);
        world->dialogs.meanwhile([&] { QVERIFY(!bar->isVisible()); });
        window->openChosenFile(path);
        bar->removeEventFilter(&watch);
        QVERIFY(!watch.shapes.empty());
        QCOMPARE(watch.shapes.front(), Qt::WaitCursor);
        QVERIFY(!bar->isVisible());
        WindowWorld::processEvents();
        QVERIFY(QGuiApplication::overrideCursor() == nullptr);
    }

    void everyCopyHasANameOfItsOwn()
    {
        const QString path = write(writeOldFile(tables()).bytes);
        for (const QString& name :
             {u"QUILLON-変換.mdb"_s, u"QUILLON-変換-2.mdb"_s, u"QUILLON-変換-3.mdb"_s}) {
            expectQuestion(Answer::Ok);
            window->openChosenFile(path);
            isOpen(name);
        }
    }

    void cancelLeavesEverything()
    {
        frmMainData* edited = openEdited();
        const QString statusBefore = status();
        const auto before = world->session().OpenDb;
        expectQuestion(Answer::Cancel);
        window->openChosenFile(write(writeOldFile(tables()).bytes));
        QCOMPARE(names(), QStringList(u"QUILLON.mdb"_s));
        QCOMPARE(world->session().OpenDb, before);
        QVERIFY(compareText(status(), statusBefore));
        QCOMPARE(list->rows().rowCount(), 1);
        world->dialogs.expect(fileDialog(before->path()), std::nullopt);
        window->mnuFileOpen_Click();
        world->dialogs.expect(closingQuestion(), Answer::No);
        QVERIFY(edited->unload());
    }

    void copyStaysWhenAWindowIsToStayOpen()
    {
        frmMainData* edited = openEdited();
        const auto before = world->session().OpenDb;
        expectQuestion(Answer::Ok);
        world->dialogs.expect(closingQuestion(), Answer::Cancel);
        window->openChosenFile(write(writeOldFile(tables()).bytes));
        QCOMPARE(world->session().OpenDb, before);
        QCOMPARE(names(), QStringList({u"QUILLON-変換.mdb"_s, u"QUILLON.mdb"_s}));
        world->dialogs.expect(closingQuestion(), Answer::No);
        QVERIFY(edited->unload());
    }

    void lossesAreToldAfterTheOpening()
    {
        QByteArray bytes = writeOldFile(tables()).bytes;
        bytes[bytes.lastIndexOf("LVAL") - 4] = 0; // the page of the long text
        expectQuestion(Answer::Ok);
        expectNotes(u"文献データ R-991231-001「文献」の内容: 本文が壊れていて、読み取れません。"_s);
        world->dialogs.meanwhile([this] { isOpen(); });
        window->openChosenFile(write(bytes));
    }

    void manyLossesAreWrittenIntoAList()
    {
        auto many = tables();
        QString shown;
        for (int i = 0; i < 10; ++i) {
            many.push_back({.name = u"表%1"_s.arg(i), .columns = {{u"欄"_s, 10}}, .rows = {}});
            const QString line =
                u"テーブル「表%1」は Quillon のものではないため、読み取りませんでした。"_s.arg(i);
            shown += i < 8 ? line + u"\r\n"_s : QString();
        }
        write("mine", u"QUILLON-変換.txt"_s);
        expectQuestion(Answer::Ok);
        expectNotes(shown +
                    u"ほかに 2 件あります。\r\n全部の一覧を「QUILLON-変換-2.txt」に書き出しました。"_s);
        window->openChosenFile(write(writeOldFile(many).bytes));
        isOpen();
        QCOMPARE(read(world->folder.filePath(u"QUILLON-変換.txt"_s)), QByteArray("mine"));
        const QString written = QString::fromUtf8(read(world->folder.filePath(u"QUILLON-変換-2.txt"_s)));
        QCOMPARE(written.count(u"\r\n"_s), 10);
        QVERIFY(
            written.endsWith(u"テーブル「表9」は Quillon のものではないため、読み取りませんでした。\r\n"));
    }

    void listThatCannotBeWrittenIsTold()
    {
#ifdef Q_OS_UNIX
        openEdited();
        QDir folder(world->folder.path());
        QVERIFY(folder.mkdir(u"棚"_s));
        auto many = tables();
        QString shown;
        for (int i = 0; i < 9; ++i) {
            many.push_back({.name = u"表%1"_s.arg(i), .columns = {{ u"欄"_s, 10 }}, .rows = {}});
            shown +=
                i < 8 ? u"テーブル「表%1」は Quillon のものではないため、読み取りませんでした。\r\n"_s.arg(i)
                      : QString();
        }
        expectQuestion(Answer::Ok);
        world->dialogs.expect(closingQuestion(), Answer::Cancel);
        world->dialogs.meanwhile([&] { QVERIFY(folder.rename(u"棚"_s, u"他の棚"_s)); });
        expectNotes(shown + u"ほかに 1 件あります。\r\n全部の一覧を書き出すことはできませんでした。"_s +
                    u"「"_s + world->folder.filePath(u"棚/QUILLON-変換.txt"_s) + u"」に書き込めません。"_s +
                    standardDescription(errors::PathNotFound));
        window->openChosenFile(write(writeOldFile(many).bytes, u"棚/QUILLON.mdb"_s));
        world->dialogs.expect(closingQuestion(), Answer::No);
        QVERIFY(world->window<frmMainData>(u"frmMainData"_s)->unload());
#else
        QSKIP("A folder in use keeps its name here.");
#endif
    }

    void unreadableFilesAreToldAndLeaveNothing_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        const QByteArray whole = writeOldFile(tables()).bytes;
        QTest::newRow("encrypted") << writeOldFile(tables(), {.encryptionKey = 1}).bytes
                                   << u"ファイルは暗号化されているため、読み取れません。"
                                      u"作成したプログラムで暗号化を解除してからやり直してください。"_s;
        QTest::newRow("cut")
            << whole.first(5000)
            << u"ファイルの先頭しか残っていないため、読み取れません。控えのファイルを指定してください。"_s;
        QTest::newRow("another program's") << writeOldFile({{u"住所録"_s, {{u"氏名"_s, 20}}, {}}}).bytes
                                           << u"Quillon のデータベースのテーブルを一つも読み取れません。"
                                              u"Quillon のデータベースか確認してください。"_s;
    }
    void unreadableFilesAreToldAndLeaveNothing()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        const auto before = openEdited();
        expectQuestion(Answer::Ok);
        expectFailure(text);
        window->openChosenFile(write(bytes));
        QCOMPARE(names(), QStringList(u"QUILLON.mdb"_s));
        QCOMPARE(list->rows().rowCount(), 1); // that of the database before
        world->dialogs.expect(closingQuestion(), Answer::No);
        QVERIFY(before->unload());
    }

    void fullDiskIsToldAndLeavesNothing()
    {
        expectQuestion(Answer::Ok);
        world->dialogs.meanwhile([] {
            FaultyDisk::instance().failAt(15, DiskFailure::ShortWrite, FaultyDisk::Duration::FromThenOn);
        });
        expectFailure(standardDescription(errors::DiskFull));
        window->openChosenFile(write(writeOldFile(tables()).bytes));
        FaultyDisk::instance().heal();
        QCOMPARE(names(), QStringList(u"QUILLON.mdb"_s));
    }

    void folderThatMayNotBeWrittenIsTold()
    {
#ifdef Q_OS_UNIX
        const QString path = write(writeOldFile(tables()).bytes);
        QVERIFY(QFile::setPermissions(path, QFile::Permissions(0x6666)));
        QVERIFY(QFile::setPermissions(world->folder.path(), QFile::Permissions(0x5555)));
        const bool administrator = geteuid() == 0;
        if (administrator)
            QCOMPARE(seteuid(65534), 0);
        expectQuestion(Answer::Ok);
        expectFailure(u"変換した写し「"_s + world->folder.filePath(u"QUILLON-変換.mdb"_s) +
                      u"」を作成できません。"_s + standardDescription(errors::CannotOpen));
        window->openChosenFile(path);
        if (administrator)
            QCOMPARE(seteuid(0), 0);
        QVERIFY(QFile::setPermissions(world->folder.path(), QFile::Permissions(0x7755)));
#else
        QSKIP("Rights are set otherwise here.");
#endif
    }

    void droppedFileIsConvertedAndOpened_data()
    {
        QTest::addColumn<QString>("on");
        QTest::newRow("on the tree") << u"tvwCategory"_s;
        QTest::newRow("on the list") << u"lsvData"_s;
        QTest::newRow("on the status bar") << u"sbStatus"_s;
    }
    void droppedFileIsConvertedAndOpened()
    {
        QFETCH(QString, on);
        auto* control = WindowWorld::control<QWidget>(*window, on);
        const QPoint place = control->mapTo(window, control->rect().center());
        Drag drag(*window->windowHandle());
        drag.data().setUrls({QUrl::fromLocalFile(write(writeOldFile(tables()).bytes))});
        QVERIFY(drag.moveTo(place));
        QVERIFY(drag.dropAt(place));
        QCOMPARE(world->dialogs.takeComplaints(), QStringList()); // no box before the drag has ended
        expectQuestion(Answer::Ok);
        WindowWorld::processEvents();
        isOpen();
    }

    void otherThingsAreNotTaken_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::newRow("a database of today") << QStringList(u"今.mdb"_s);
        QTest::newRow("two files") << QStringList({u"QUILLON.mdb"_s, u"QUILLON.mdb"_s});
        QTest::newRow("nothing of this name") << QStringList(u"ない.mdb"_s);
    }
    void otherThingsAreNotTaken()
    {
        QFETCH(QStringList, names);
        write(writeOldFile(tables()).bytes);
        world->createDatabase(u"今.mdb"_s);
        QList<QUrl> urls;
        for (const QString& name : names)
            urls += QUrl::fromLocalFile(world->folder.filePath(name));
        for (const QString& on : {u"tvwCategory"_s, u"lsvData"_s}) {
            auto* control = WindowWorld::control<QWidget>(*window, on);
            Drag drag(*window->windowHandle());
            drag.data().setUrls(urls);
            QVERIFY(!drag.moveTo(control->mapTo(window, control->rect().center())));
        }
    }
};

QTEST_MAIN(TestOldFiles)
#include "test_old_files.moc"

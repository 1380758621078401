#include "app/base/platform/background.h"
#include "app/base/platform/cloning.h"
#include "app/base/platform/command_line.h"
#include "app/base/platform/event_log.h"
#include "app/base/platform/file_identity.h"
#include "app/base/platform/files.h"
#include "app/base/platform/renaming.h"
#include "app/base/platform/system_error.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QtTest>

#include <array>
#include <thread>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

#ifdef Q_OS_UNIX
#include <cerrno>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;

class TestPlatformFiles : public QObject
{
    Q_OBJECT

    static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static void makeFile(const QString& path)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }

private Q_SLOTS:
    void aFolderIsRenamedWithAllThatIsInIt()
    {
        const QTemporaryDir folder;
        const QString from = folder.filePath(u"前"_s);
        const QString to = folder.filePath(u"後"_s);
        QVERIFY(QDir().mkdir(from));
        makeFile(from + u"/資料"_s);
        QVERIFY(platform::renameFolder(from, to));
        QVERIFY(QFile::exists(to + u"/資料"_s));
        QVERIFY(!QFile::exists(from));
        // What stands there stays, also when there is nothing in it; nor does anything come of nothing.
        QVERIFY(QDir().mkdir(from));
        QVERIFY(!platform::renameFolder(to, from));
        QVERIFY(QFile::exists(to + u"/資料"_s));
        QVERIFY(!platform::renameFolder(folder.filePath(u"無"_s), folder.filePath(u"新"_s)));
    }

    void aFileTakesThePlaceOfAnother()
    {
        const QTemporaryDir folder;
        const QString from = folder.filePath(u"新"_s);
        const QString to = folder.filePath(u"旧"_s);
        const auto write = [](const QString& path, const QByteArray& content) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(content);
        };
        write(to, "old");
        write(from, "new");
        QVERIFY(platform::renameOver(from, to));
        QCOMPARE(contentOf(to), QByteArray("new"));
        QVERIFY(!QFile::exists(from));
        QVERIFY(!platform::renameOver(from, to));
        QCOMPARE(contentOf(to), QByteArray("new"));
    }

    void everyWayToAFileEndsInOnePath()
    {
        const QTemporaryDir folder;
        const QString root = QFileInfo(folder.path()).canonicalFilePath();
        makeFile(folder.filePath(u"資料"_s));
        QVERIFY(QDir(folder.path()).mkdir(u"中"_s));
        QCOMPARE(platform::canonicalPath(folder.filePath(u"資料"_s)), root + u"/資料"_s);
        QCOMPARE(platform::canonicalPath(folder.filePath(u"中/../資料"_s)), root + u"/資料"_s);
        QCOMPARE(platform::canonicalPath(folder.filePath(u"中"_s)), root + u"/中"_s);
        QCOMPARE(platform::canonicalPath(folder.filePath(u"無"_s)), QString());
    }

    void ordinaryFilesAreToldFromEverythingElse()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(u"資料 1.txt"_s);
        makeFile(file);
        QVERIFY(platform::isOrdinaryFile(file));
        QVERIFY(!platform::isOrdinaryFile(folder.path()));
        QVERIFY(!platform::isOrdinaryFile(folder.filePath(u"missing"_s)));
        QVERIFY(!platform::isOrdinaryFile(QString()));
    }

    void whatIsKnownOfAShortcutIsItsOwn()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(u"近道.lnk"_s);
        QFile shortcut(file);
        QVERIFY(shortcut.open(QIODevice::WriteOnly));
        QCOMPARE(shortcut.write("12345"), 5);
        shortcut.close();
        QCOMPARE(platform::sizeAndTime(file).size, 5);
        constexpr qint64 Minute = 60'000;
        QVERIFY(qAbs(platform::sizeAndTime(file).modified - QDateTime::currentMSecsSinceEpoch()) < Minute);
        QCOMPARE(platform::sizeAndTime(folder.filePath(u"無い.lnk"_s)).size, 0);
        QCOMPARE(platform::sizeAndTime(folder.filePath(u"無い.lnk"_s)).modified, 0);
    }

    void whatIsKnownOfAFileIsWhatQtSays()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(u"資料.txt"_s);
        makeFile(file);
        QVERIFY(QFile::resize(file, 1234));
        QCOMPARE(platform::sizeAndTime(file).size, 1234);
        QCOMPARE(platform::sizeAndTime(file).modified, QFileInfo(file).lastModified().toMSecsSinceEpoch());
    }

    void aFileThatIsElsewhereIsNotAtHand()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(u"資料.txt"_s);
        makeFile(file);
        QVERIFY(platform::isAtHand(file));
        QVERIFY(platform::isAtHand(folder.filePath(u"無い"_s)));
#ifdef Q_OS_WIN
        const std::wstring name = QDir::toNativeSeparators(file).toStdWString();
        SetFileAttributesW(name.c_str(), FILE_ATTRIBUTE_OFFLINE);
        if ((GetFileAttributesW(name.c_str()) & FILE_ATTRIBUTE_OFFLINE) == 0)
            QSKIP("This disk does not keep what is marked so.");
        QVERIFY(!platform::isAtHand(file));
#endif
    }

    void namesOfOneFileHaveOneKey_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("other");
        QTest::newRow("the same") << u"資料 1.txt"_s << u"資料 1.txt"_s;
        QTest::newRow("letters") << u"big.txt"_s << u"BIG.Txt"_s;
        QTest::newRow("wide letters") << u"ａｂｃ"_s << u"ＡＢＣ"_s;
        QTest::newRow("with a mark") << u"é"_s << u"É"_s;
        QTest::newRow("Greek") << u"ω"_s << u"Ω"_s;
        QTest::newRow("one letter for two") << u"straße"_s << u"STRASSE"_s;
        QTest::newRow("kana") << u"あ"_s << u"ア"_s;
        QTest::newRow("small kana") << u"つ"_s << u"っ"_s;
        QTest::newRow("wide and narrow") << u"a"_s << u"ａ"_s;
    }

    void namesOfOneFileHaveOneKey()
    {
        QFETCH(QString, name);
        QFETCH(QString, other);
        const QTemporaryDir folder;
        makeFile(folder.filePath(name));
        const bool isOneFile = platform::isOrdinaryFile(folder.filePath(other));
        QCOMPARE(platform::nameKey(name) == platform::nameKey(other), isOneFile);
#ifndef Q_OS_WIN
        QCOMPARE(platform::nameKey(name), name);
#endif
        QCOMPARE(platform::nameKey(QString()), QString());
    }

    void aFolderHoldsItsShortcuts()
    {
        const QTemporaryDir folder;
        QVERIFY(QDir(folder.path()).mkdir(u"中"_s));
        makeFile(folder.filePath(u"資料.txt"_s));
        makeFile(folder.filePath(u"壊れた.lnk"_s));
        QStringList expected = {u"壊れた.lnk"_s, u"資料.txt"_s};
#ifdef Q_OS_WIN
        QVERIFY(QFile::link(folder.path(), folder.filePath(u"フォルダへ.lnk"_s)));
        expected << u"フォルダへ.lnk"_s;
#endif
        QStringList names = platform::namesOfFiles(folder.path());
        names.sort();
        expected.sort();
        QCOMPARE(names, expected);
        QCOMPARE(platform::namesOfFiles(folder.filePath(u"無い"_s)), QStringList());
    }

#ifdef Q_OS_UNIX
    void pipesAndDevicesAreNoOrdinaryFiles()
    {
        const QTemporaryDir folder;
        const QString pipe = folder.filePath(u"pipe"_s);
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QVERIFY(!platform::isOrdinaryFile(pipe));
        QVERIFY(!platform::isOrdinaryFile(u"/dev/null"_s));
    }

    void linksAreWhatTheyLeadTo()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(u"file"_s);
        makeFile(file);
        QVERIFY(QFile::link(file, folder.filePath(u"link"_s)));
        QVERIFY(QFile::link(folder.path(), folder.filePath(u"to folder"_s)));
        QVERIFY(QFile::link(folder.filePath(u"nothing"_s), folder.filePath(u"dangling"_s)));
        QVERIFY(platform::isOrdinaryFile(folder.filePath(u"link"_s)));
        QVERIFY(!platform::isOrdinaryFile(folder.filePath(u"to folder"_s)));
        QVERIFY(!platform::isOrdinaryFile(folder.filePath(u"dangling"_s)));
    }

    void aFileWithALeadingDotIsAnOrdinaryOne()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(u".profile"_s);
        makeFile(file);
        QVERIFY(platform::isOrdinaryFile(file));
    }

    void logLinesGoBesideTheProgram()
    {
        const QTemporaryDir folder;
        platform::writeEventLog(u"一行目"_s, folder.path());
        platform::writeEventLog(u"二行目"_s, folder.path());
        QCOMPARE(contentOf(folder.filePath(u"Quillon.log"_s)), QByteArray("一行目\n二行目\n"));
    }

    void logLinesGoToTheStateFolderWhenTheProgramsIsNotWritable()
    {
        const QTemporaryDir state;
        qputenv("XDG_STATE_HOME", QFile::encodeName(state.filePath(u"a/b"_s)));
        // Nobody, not even the administrator, can create files there.
        platform::writeEventLog(u"一行目"_s, u"/proc/self"_s);
        QCOMPARE(contentOf(state.filePath(u"a/b/quillon/Quillon.log"_s)), QByteArray("一行目\n"));
    }

    void logLinesGoToTheStateFolderWhenTheLogIsNoOrdinaryFile()
    {
        const QTemporaryDir program;
        const QTemporaryDir state;
        qputenv("XDG_STATE_HOME", QFile::encodeName(state.path()));
        const QString pipe = program.filePath(u"Quillon.log"_s);
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        platform::writeEventLog(u"一行目"_s, program.path());
        QCOMPARE(contentOf(state.filePath(u"quillon/Quillon.log"_s)), QByteArray("一行目\n"));
    }

    void aRelativeStateFolderIsIgnored()
    {
        const QTemporaryDir home;
        qputenv("HOME", QFile::encodeName(home.path()));
        qputenv("XDG_STATE_HOME", "relative");
        platform::writeEventLog(u"一行目"_s, u"/proc/self"_s);
        QCOMPARE(contentOf(home.filePath(u".local/state/quillon/Quillon.log"_s)), QByteArray("一行目\n"));
        QVERIFY(!QFile::exists(u"relative"_s));
    }

    void aCloneHasTheContentOrIsNotThere()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(u"元"_s);
        const QString clone = folder.filePath(u"写し"_s);
        makeFile(file);
        // Whether it can be made is up to the file system.
        const bool isMade = platform::cloneFile(file, clone);
        QCOMPARE(QFile::exists(clone), isMade);
        if (isMade)
            QCOMPARE(contentOf(clone), contentOf(file));
        QVERIFY(!platform::cloneFile(folder.filePath(u"nothing"_s), folder.filePath(u"other"_s)));
        QVERIFY(!QFile::exists(folder.filePath(u"other"_s)));
    }

    void aFileThatIsThereIsNotClonedOver()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(u"元"_s);
        const QString other = folder.filePath(u"別"_s);
        makeFile(file);
        makeFile(other);
        QVERIFY(!platform::cloneFile(file, other));
        QVERIFY(QFile::exists(other));
    }

    void aThreadCanStandBackBehindAllOthers()
    {
        int before = 0;
        int after = 0;
        std::thread([&] {
            before = getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)));
            platform::workInBackground();
            after = getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)));
        }).join();
        QCOMPARE(after, 19);
        // The others are not touched.
        QCOMPARE(getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid))), before);
    }

    void whatNoLogTakesGoesToTheErrorStream()
    {
        qputenv("XDG_STATE_HOME", "/proc/self");
        QTemporaryFile stream;
        QVERIFY(stream.open());
        const int kept = dup(STDERR_FILENO);
        QVERIFY(dup2(stream.handle(), STDERR_FILENO) >= 0);
        platform::writeEventLog(u"一行目"_s, u"/proc/self"_s);
        dup2(kept, STDERR_FILENO);
        close(kept);
        QVERIFY(!QFile::exists(u"/proc/self/quillon"_s));
        QCOMPARE(contentOf(stream.fileName()), QByteArray("一行目\n"));
    }

    void failuresOfTheSystemHaveTheSentenceThatIsTrue_data()
    {
        QTest::addColumn<int>("failure");
        QTest::addColumn<qint32>("number");
        QTest::addColumn<QString>("sentence");
        const auto standard = [](int failure, qint32 number) {
            QTest::addRow("%d", failure) << failure << number << standardDescription(number);
        };
        standard(ENOENT, errors::FileNotFound);
        standard(ENOTDIR, errors::FileNotFound);
        standard(EACCES, errors::PermissionDenied);
        standard(ENOSPC, errors::DiskFull);
        standard(ENOMEM, errors::OutOfMemory);
        standard(EIO, errors::PathFileAccess);
        QTest::newRow("too large") << EFBIG << errors::PathFileAccess
                                   << u"ファイルの大きさが上限を超えるため書き込めません。"
                                      u"別のディスクを使用してください。"_s;
        QTest::newRow("read-only disk") << EROFS << errors::PermissionDenied
                                        << u"ディスクが読み取り専用のため書き込めません。"
                                           u"別のディスクを使用してください。"_s;
        QTest::newRow("long name") << ENAMETOOLONG << errors::PathFileAccess
                                   << u"ファイルまたはフォルダの名前が長すぎます。"
                                      u"短い名前に変えてからやり直してください。"_s;
    }

    void failuresOfTheSystemHaveTheSentenceThatIsTrue()
    {
        QFETCH(int, failure);
        QFETCH(qint32, number);
        QFETCH(QString, sentence);
        const Error error = platform::errorOfSystem(failure, errors::FileNotFound);
        QCOMPARE(error.number, number);
        QCOMPARE(error.description, sentence);
    }

    void permissionsAreThoseOfThePersonWhoRunsTheProgram()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(u"file"_s);
        makeFile(file);
        QVERIFY(platform::mayWriteIn(folder.path()));
        QVERIFY(platform::mayReadAndWrite(file));
        QVERIFY(!platform::mayWriteIn(folder.filePath(u"nowhere"_s)));
        QVERIFY(!platform::mayReadAndWrite(folder.filePath(u"nothing"_s)));
        QVERIFY(QFile::setPermissions(file, QFile::ReadOwner));
        // The administrator may write what is marked as read-only.
        QCOMPARE(platform::mayReadAndWrite(file), geteuid() == 0);
    }

    void argumentsKeepEveryCharacter()
    {
        QByteArray program = "quillon";
        QByteArray name = "水 'x' \"y\".mdb";
        std::array<char*, 3> words = {program.data(), name.data(), nullptr};
        QCOMPARE(platform::arguments(2, words.data()), QStringList({u"quillon"_s, u"水 'x' \"y\".mdb"_s}));
    }
#endif
};

QTEST_GUILESS_MAIN(TestPlatformFiles)
#include "test_platform_files.moc"

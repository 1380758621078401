#include "app/base/error.h"
#include "app/base/system_files.h"
#include "tests/support/errors_of.h"

#include <QTemporaryDir>
#include <QtTest>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#endif

#ifdef Q_OS_WIN
#include <windows.h>
#endif

#ifdef Q_OS_LINUX
#include <sys/file.h>
#include <sys/syscall.h>

#include <cerrno>

namespace
{

/// Which calls fail.
struct Failing {
    bool unlink = false;
    bool sync = false;
};

Failing& failing()
{
    static Failing calls;
    return calls;
}

} // namespace

// The program's own calls arrive here first.
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the system's is none to be used
extern "C" int unlink(const char* path) noexcept
{
    if (failing().unlink) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(syscall(SYS_unlink, path));
}

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): as above
extern "C" int fsync(int file)
{
    if (failing().sync) {
        errno = EDQUOT;
        return -1;
    }
    return static_cast<int>(syscall(SYS_fsync, file));
}
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(cannot be read)");
}

void makeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
    QCOMPARE(file.write(content), content.size());
}

#ifdef Q_OS_UNIX
/// Gives up what only the administrator may, as long as it lives.
class OrdinaryPerson
{
public:
    OrdinaryPerson() : m_before(geteuid())
    {
        constexpr uid_t Nobody = 65534;
        if (m_before == 0 && seteuid(Nobody) != 0)
            qFatal("cannot become an ordinary person");
    }
    ~OrdinaryPerson()
    {
        if (seteuid(m_before) != 0)
            qFatal("cannot become the administrator again");
    }
    OrdinaryPerson(const OrdinaryPerson&) = delete;
    OrdinaryPerson& operator=(const OrdinaryPerson&) = delete;

private:
    uid_t m_before;
};

/// Lets every write beyond a size fail as long as it lives.
class SizeLimit
{
public:
    explicit SizeLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
            qFatal("cannot limit the size of files");
    }
    ~SizeLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }
    SizeLimit(const SizeLimit&) = delete;
    SizeLimit& operator=(const SizeLimit&) = delete;

private:
    rlimit m_before = {};
};
#endif

} // namespace

class TestCopying : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> root; // holds the folder "outside" and the folder "RefFile"
    SystemFiles files;

    QString source() { return root->filePath(u"outside/資料.txt"_s); }
    QString folder() { return root->filePath(u"RefFile"_s); }
    QString inFolder(const QString& name) { return folder() + u'/' + name; }
    /// Everything in the folder, hidden or not.
    QStringList entries()
    {
        return QDir(folder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                        QDir::NoDotAndDotDot);
    }
    void copy(const QString& from, const QString& name) { copyTo(folder(), from, name, {}); }
    void copyTo(const QString& where, const QString& from, const QString& name,
                const Files::Progress& progress) const
    {
        const auto staged = files.stageCopy(from, where, name, progress);
        staged->place({});
        staged->keep();
    }

private Q_SLOTS:
    void init()
    {
        root = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir(root->path()).mkdir(u"outside"_s) && QDir(root->path()).mkdir(u"RefFile"_s));
        makeFile(source(), "water\r\n\0ice"_ba);
    }

    void cleanup() { root.reset(); }

    void copyHasTheSameBytes_data()
    {
        QTest::addColumn<qsizetype>("size");
        for (const qsizetype size : {0, 1, (1 << 20) - 1, 1 << 20, (1 << 20) + 1, 3 * (1 << 20) + 7})
            QTest::addRow("%d bytes", static_cast<int>(size)) << size;
    }

    void copyHasTheSameBytes()
    {
        QFETCH(qsizetype, size);
        QByteArray content(size, 'x');
        for (qsizetype i = 0; i < size; ++i)
            content[i] = static_cast<char>(i * 7 + i / 251);
        makeFile(source(), content);
        qint64 before = 0;
        copyTo(folder(), source(), u"a"_s, [&](qint64 done, qint64 total) {
            // A half copied file never bears the name.
            const bool asItShouldBe = done > before && total == size && !entries().contains(u"a"_s);
            before = done;
            return asItShouldBe;
        });
        QCOMPARE(before, size); // the last call tells that everything is done
        QVERIFY(contentOf(inFolder(u"a"_s)) == content);
        QVERIFY(contentOf(source()) == content);
        QCOMPARE(entries(), QStringList(u"a"_s));
    }

    void everyBareNameIsTaken_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("Japanese") << u"水の資料（表示）.pdf"_s;
        QTest::newRow("blanks") << u" 水 の 資料"_s;
        QTest::newRow("quotes") << u"'水' `ls`.txt"_s;
        QTest::newRow("leading dot") << u".profile"_s;
        QTest::newRow("leading dash") << u"-rf"_s;
#ifndef Q_OS_WIN
        QTest::newRow("three dots") << u"..."_s;
        QTest::newRow("a blank at the end") << u"水の資料 "_s;
        QTest::newRow("double quotes") << u"\"氷\".txt"_s;
        QTest::newRow("what separates names elsewhere") << u"a\\b"_s;
        QTest::newRow("a drive elsewhere") << u"C:a"_s;
#endif
        QTest::newRow("as long as can be") << QString(255, u'x');
        QTest::newRow("as long as can be in Japanese") << QString(85, u'水');
    }

    void everyBareNameIsTaken()
    {
        QFETCH(QString, name);
        copy(source(), name);
        QCOMPARE(entries(), QStringList(name));
        QCOMPARE(contentOf(inFolder(name)), contentOf(source()));
    }

    void nameThatIsMoreThanANameIsRefused_data()
    {
        QTest::addColumn<QString>("name");
        QStringList names = {u""_s, u"."_s, u".."_s, u"../a"_s, u"a/b"_s, u"/a"_s, u"a/"_s, u"a\0b"_s};
#ifdef Q_OS_WIN
        names << u"a\\b"_s << u"C:a"_s << u"a:b"_s << u"..."_s << u"a "_s << u"a?"_s << u"\"a\""_s;
#endif
        for (const QString& name : names)
            QTest::addRow("<%s>", qPrintable(name)) << name;
    }

    void nameThatIsMoreThanANameIsRefused()
    {
        QFETCH(QString, name);
        QCOMPARE(errorOf([&] { copy(source(), name); }), errors::PathFileAccess);
        QCOMPARE(entries(), QStringList());
        QCOMPARE(QDir(root->path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size(), 2);
    }

    void fileOfTheSameNameIsReplaced()
    {
        makeFile(inFolder(u"a"_s), QByteArray(5000, 'o'));
        copy(source(), u"a"_s);
        QCOMPARE(contentOf(inFolder(u"a"_s)), contentOf(source()));
        QCOMPARE(entries(), QStringList(u"a"_s));
    }

    void fileCopiedOntoItselfStaysAsItIs()
    {
        makeFile(inFolder(u"a"_s), "content");
        copy(inFolder(u"a"_s), u"a"_s);
        QCOMPARE(contentOf(inFolder(u"a"_s)), "content"_ba);
        QCOMPARE(entries(), QStringList(u"a"_s));
    }

    void missingSourceIsToldAndLeavesTheFolderAsItWas()
    {
        makeFile(inFolder(u"a"_s), "old");
        QCOMPARE(errorOf([&] { copy(root->filePath(u"outside/missing"_s), u"a"_s); }), errors::FileNotFound);
        QCOMPARE(errorOf([&] { copy(source() + u"/below"_s, u"a"_s); }), errors::FileNotFound);
        QCOMPARE(errorOf([&] { copy(QString(), u"a"_s); }), errors::FileNotFound);
        QCOMPARE(entries(), QStringList(u"a"_s));
        QCOMPARE(contentOf(inFolder(u"a"_s)), "old"_ba);
    }

    void missingFolderIsTold()
    {
        const auto errorOfCopyingTo = [&](const QString& where) {
            return errorOf([&] { copyTo(where, source(), u"a"_s, {}); });
        };
        QCOMPARE(errorOfCopyingTo(root->filePath(u"nowhere"_s)), errors::PathNotFound);
        QCOMPARE(errorOfCopyingTo(source()), errors::PathNotFound); // a plain file in the folder's place
        QCOMPARE(errorOfCopyingTo(source() + u"/below"_s), errors::PathNotFound);
        QVERIFY(!QFile::exists(root->filePath(u"nowhere"_s)));
    }

    void folderIsNoSource()
    {
        QCOMPARE(errorOf([&] { copy(root->filePath(u"outside"_s), u"a"_s); }), errors::PathFileAccess);
        QCOMPARE(entries(), QStringList());
    }

    void folderInTheTargetsPlaceStays()
    {
        QVERIFY(QDir(folder()).mkdir(u"a"_s));
        QCOMPARE(errorOf([&] { copy(source(), u"a"_s); }), errors::PathFileAccess);
        makeFile(inFolder(u"a/inner"_s), "inner");
        QCOMPARE(errorOf([&] { copy(source(), u"a"_s); }), errors::PathFileAccess);
        QCOMPARE(entries(), QStringList(u"a"_s));
        QCOMPARE(contentOf(inFolder(u"a/inner"_s)), "inner"_ba);
    }

    void copyOfWhatIsReadOnlyMayBeWrittenAndReplacesWhatIsReadOnly()
    {
        constexpr QFileDevice::Permissions ReadOnly = QFileDevice::ReadOwner | QFileDevice::ReadUser;
        QVERIFY(QFile::setPermissions(source(), ReadOnly));
        copy(source(), u"a"_s);
        QVERIFY(QFile::permissions(inFolder(u"a"_s)).testFlag(QFileDevice::WriteOwner));
        QVERIFY(QFile::setPermissions(inFolder(u"a"_s), ReadOnly));
        copy(source(), u"a"_s);
        QVERIFY(QFile::permissions(inFolder(u"a"_s)).testFlag(QFileDevice::WriteOwner));
        QCOMPARE(entries(), QStringList(u"a"_s));
    }

#ifdef Q_OS_WIN
    void fileThatAnotherProgramHasForItselfIsToldAsThat()
    {
        const QString path = QDir::toNativeSeparators(source());
        const HANDLE held = CreateFileW(reinterpret_cast<const wchar_t*>(path.utf16()), GENERIC_READ, 0,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        QVERIFY(held != INVALID_HANDLE_VALUE);
        QString told;
        try {
            copy(source(), u"a"_s);
        } catch (const Error& error) {
            told = error.description;
        }
        CloseHandle(held);
        QCOMPARE(told,
                 u"ファイルは他のプログラムが使用中です。そのプログラムを終了してからやり直してください。"_s);
        QCOMPARE(entries(), QStringList());
    }
#endif

    void nameThatIsTooLongLeavesNothing()
    {
        QCOMPARE(errorOf([&] { copy(source(), QString(256, u'x')); }), errors::PathFileAccess);
#ifndef Q_OS_WIN // where not its bytes are counted
        QCOMPARE(errorOf([&] { copy(source(), QString(86, u'水')); }), errors::PathFileAccess);
#endif
        QCOMPARE(entries(), QStringList());
    }

    void failureWhileCopyingLeavesNothing()
    {
        makeFile(source(), QByteArray(3 << 20, 'x'));
        makeFile(inFolder(u"a"_s), "old");
        int calls = 0;
        const auto giveUp = [&](qint64, qint64) {
            if (++calls == 2)
                throw Error(errors::OutOfMemory);
            return true;
        };
        QCOMPARE(errorOf([&] { copyTo(folder(), source(), u"a"_s, giveUp); }), errors::OutOfMemory);
        QCOMPARE(entries(), QStringList(u"a"_s));
        QCOMPARE(contentOf(inFolder(u"a"_s)), "old"_ba);
    }

    void copyThatIsEndedLeavesNothing()
    {
        makeFile(source(), QByteArray(3 << 20, 'x'));
        makeFile(inFolder(u"a"_s), "old");
        int calls = 0;
        QVERIFY(!files.stageCopy(source(), folder(), u"a"_s, [&](qint64, qint64) { return ++calls < 2; }));
        QCOMPARE(calls, 2);
        QCOMPARE(entries(), QStringList(u"a"_s));
        QCOMPARE(contentOf(inFolder(u"a"_s)), "old"_ba);
    }

    void copyThatIsNotPlacedLeavesNothing()
    {
        makeFile(inFolder(u"a"_s), "old");
        QVERIFY(files.stageCopy(source(), folder(), u"a"_s, {}) != nullptr);
        QCOMPARE(entries(), QStringList(u"a"_s));
        QCOMPARE(contentOf(inFolder(u"a"_s)), "old"_ba);
    }

    void copyThatIsNotKeptGivesWayToWhatHadItsName()
    {
        makeFile(inFolder(u"a"_s), "old");
        {
            const auto staged = files.stageCopy(source(), folder(), u"a"_s, {});
            QCOMPARE(contentOf(inFolder(u"a"_s)), "old"_ba);
            staged->place({});
            QCOMPARE(contentOf(inFolder(u"a"_s)), contentOf(source()));
        }
        QCOMPARE(entries(), QStringList(u"a"_s));
        QCOMPARE(contentOf(inFolder(u"a"_s)), "old"_ba);
    }

    void copyOfANewNameStaysOnceItIsPlaced()
    {
        files.stageCopy(source(), folder(), u"a"_s, {})->place({});
        QCOMPARE(contentOf(inFolder(u"a"_s)), contentOf(source()));
        QCOMPARE(entries(), QStringList(u"a"_s));
    }

    void copyIsAsOldAsItsFile()
    {
        const QDateTime date(QDate(1999, 12, 31), QTime(23, 45, 6));
        QFile file(source());
        QVERIFY(file.open(QIODevice::ReadWrite) && file.setFileTime(date, QFileDevice::FileModificationTime));
        file.close();
        copy(source(), u"a"_s);
        // Not every system tells the hour of the last century right.
        const QDateTime old = QFileInfo(source()).lastModified();
        QVERIFY(qAbs(old.daysTo(date)) <= 1);
        QCOMPARE(QFileInfo(inFolder(u"a"_s)).lastModified(), old);
    }

#ifdef Q_OS_LINUX
    void halfCopiesThatNobodyHoldsAreRemoved()
    {
        makeFile(inFolder(u"a"_s), "old");
        makeFile(inFolder(u".quillon-copy-abcdef"_s), "half");
        makeFile(inFolder(u".quillon"_s), "of somebody");
        QVERIFY(QDir(folder()).mkdir(u".quillon-former-x-abcdef"_s)); // an end before anything was put there
        const QString held = inFolder(u".quillon-copy-123456"_s);
        makeFile(held, "half");
        const int holder = open(QFile::encodeName(held).constData(), O_RDONLY | O_CLOEXEC);
        QCOMPARE(flock(holder, LOCK_EX | LOCK_NB), 0);
        const auto staged = files.stageCopy(source(), folder(), u"b"_s, {});
        const auto judge = [](const QString&, const QString&) { return Files::Replacement::Done; };
        files.settleReplacements(folder(), judge);
        QCOMPARE(entries(), QStringList({u".quillon"_s, u".quillon-copy-123456"_s, u"a"_s}));
        close(holder);
        files.settleReplacements(folder(), judge);
        QCOMPARE(entries(), QStringList({u".quillon"_s, u"a"_s}));
        staged->place({});
        QCOMPARE(contentOf(inFolder(u"b"_s)), contentOf(source()));
    }

    void formerContentGoesWhereItIsJudgedTo_data()
    {
        QTest::addColumn<Files::Replacement>("replacement");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("stays");
        QTest::newRow("done") << Files::Replacement::Done << "new"_ba << false;
        QTest::newRow("broken off") << Files::Replacement::BrokenOff << "old"_ba << false;
        QTest::newRow("not known") << Files::Replacement::NotKnown << "new"_ba << true;
    }

    void formerContentGoesWhereItIsJudgedTo()
    {
        QFETCH(Files::Replacement, replacement);
        QFETCH(QByteArray, content);
        QFETCH(bool, stays);
        makeFile(inFolder(u"水 1.txt"_s), "old");
        makeFile(source(), "new");
        const pid_t child = fork();
        QVERIFY(child >= 0);
        if (child == 0) {
            const auto staged = files.stageCopy(source(), folder(), u"水 1.txt"_s, {});
            staged->place(u"0123-F-1"_s);
            _exit(0);
        }
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);
        QCOMPARE(contentOf(inFolder(u"水 1.txt"_s)), "new"_ba);
        QStringList asked;
        files.settleReplacements(folder(), [&](const QString& mark, const QString& name) {
            asked << mark + u'|' + name;
            return replacement;
        });
        QCOMPARE(asked, QStringList(u"0123-F-1|水 1.txt"_s));
        QCOMPARE(contentOf(inFolder(u"水 1.txt"_s)), content);
        QCOMPARE(entries().size(), stays ? 2 : 1);
    }

    void replacementThatIsGoingOnIsLeftAlone()
    {
        makeFile(inFolder(u"a"_s), "old");
        const auto staged = files.stageCopy(source(), folder(), u"a"_s, {});
        staged->place(u"0123-F-1"_s);
        files.settleReplacements(
            folder(), [](const QString&, const QString&) { return Files::Replacement::BrokenOff; });
        QCOMPARE(contentOf(inFolder(u"a"_s)), contentOf(source()));
        staged->keep();
        QCOMPARE(entries(), QStringList(u"a"_s));
    }

    void copyingEndsWhenNothingCanBeUnlinkedAnyMore()
    {
        makeFile(inFolder(u"a"_s), "old");
        failing().unlink = true;
        copy(source(), u"a"_s);
        failing().unlink = false;
        QCOMPARE(contentOf(inFolder(u"a"_s)), contentOf(source()));
        // What could not be removed is by the next.
        files.settleReplacements(folder(),
                                 [](const QString&, const QString&) { return Files::Replacement::Done; });
        QCOMPARE(entries(), QStringList(u"a"_s));
    }

    void tooManyOpenFilesAreToldAsThat()
    {
        const QString told = u"同時に開けるファイルの数の上限に達しました。"_s;
        rlimit before = {};
        getrlimit(RLIMIT_NOFILE, &before);
        const auto descriptionOf = [&](const std::function<void()>& operation) {
            const rlimit none{0, before.rlim_max};
            setrlimit(RLIMIT_NOFILE, &none);
            QString description;
            try {
                operation();
            } catch (const Error& error) {
                description = error.description;
            }
            setrlimit(RLIMIT_NOFILE, &before);
            return description;
        };
        QVERIFY(descriptionOf([&] { files.stageCopy(source(), folder(), u"a"_s, {}); }).startsWith(told));
        QVERIFY(descriptionOf([&] { files.readFile(source(), 100); }).startsWith(told));
        copy(source(), u"a"_s);
    }

    void namesAreOnTheDiskBeforeACopyCountsAsPlaced()
    {
        makeFile(inFolder(u"a"_s), "old");
        const auto staged = files.stageCopy(source(), folder(), u"a"_s, {});
        failing().sync = true;
        QCOMPARE(errorOf([&] { staged->place({}); }), errors::DiskFull);
        failing().sync = false;
        QCOMPARE(contentOf(inFolder(u"a"_s)), "old"_ba);
        QCOMPARE(entries(), QStringList(u"a"_s));
    }

    void programThatEndsWhileCopyingLeavesNothing()
    {
        makeFile(source(), QByteArray(3 << 20, 'x'));
        makeFile(inFolder(u"a"_s), "old");
        const pid_t child = fork();
        QVERIFY(child >= 0);
        if (child == 0) {
            // The bytes are on their way: what a crash or a power failure does.
            files.stageCopy(source(), folder(), u"a"_s, [](qint64, qint64) -> bool { _exit(17); });
            _exit(0);
        }
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 17);
        QCOMPARE(contentOf(inFolder(u"a"_s)), "old"_ba);
        QStringList left = entries();
        const int nameless =
            open(QFile::encodeName(folder()).constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
        if (nameless < 0) // a file system where every file has a name
            left.removeIf([](const QString& entry) { return entry.startsWith(u".quillon-"); });
        else
            close(nameless);
        QCOMPARE(left, QStringList(u"a"_s));
    }

    void copyReplacesWhateverHasItsName_data()
    {
        QTest::addColumn<QString>("present");
        QTest::newRow("nothing") << QString();
        QTest::newRow("file") << u"file"_s;
        QTest::newRow("link to a file") << u"link"_s;
        QTest::newRow("link to nothing") << u"dangling"_s;
    }

    void copyReplacesWhateverHasItsName()
    {
        QFETCH(QString, present);
        const QString elsewhere = root->filePath(u"elsewhere"_s);
        makeFile(elsewhere, "mine");
        if (present == u"file")
            makeFile(inFolder(u"a"_s), "old");
        else if (!present.isEmpty())
            QVERIFY(
                QFile::link(present == u"link" ? elsewhere : root->filePath(u"nothing"_s), inFolder(u"a"_s)));
        copy(source(), u"a"_s);
        QVERIFY(!QFileInfo(inFolder(u"a"_s)).isSymLink());
        QCOMPARE(contentOf(inFolder(u"a"_s)), contentOf(source()));
        QCOMPARE(contentOf(elsewhere), "mine"_ba);
        QCOMPARE(entries(), QStringList(u"a"_s));
    }
#endif

#ifdef Q_OS_UNIX
    void pipesAndDevicesAreNoSourcesAndNobodyWaitsForThem()
    {
        const QString pipe = root->filePath(u"outside/pipe"_s);
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        for (const QString& strange : {pipe, u"/dev/null"_s, u"/dev/zero"_s})
            QCOMPARE(errorOf([&] { copy(strange, u"a"_s); }), errors::PathFileAccess);
        QCOMPARE(entries(), QStringList());
    }

    void pipeInTheTargetsPlaceIsReplacedLikeAFile()
    {
        QCOMPARE(mkfifo(QFile::encodeName(inFolder(u"a"_s)).constData(), 0600), 0);
        copy(source(), u"a"_s);
        QCOMPARE(contentOf(inFolder(u"a"_s)), contentOf(source()));
    }

    void linkAsSourceIsCopiedAsTheFileItLeadsTo()
    {
        const QString link = root->filePath(u"outside/link"_s);
        QVERIFY(QFile::link(source(), link));
        copy(link, u"a"_s);
        QVERIFY(!QFileInfo(inFolder(u"a"_s)).isSymLink());
        QCOMPARE(contentOf(inFolder(u"a"_s)), contentOf(source()));
        QVERIFY(QFile::link(u"nowhere"_s, root->filePath(u"outside/dangling"_s)));
        QCOMPARE(errorOf([&] { copy(root->filePath(u"outside/dangling"_s), u"b"_s); }), errors::FileNotFound);
    }

    void linkInTheTargetsPlaceIsReplacedAndNotFollowed()
    {
        makeFile(root->filePath(u"outside/precious"_s), "precious");
        QVERIFY(QFile::link(u"../outside/precious"_s, inFolder(u"a"_s)));
        copy(source(), u"a"_s);
        QVERIFY(!QFileInfo(inFolder(u"a"_s)).isSymLink());
        QCOMPARE(contentOf(inFolder(u"a"_s)), contentOf(source()));
        QCOMPARE(contentOf(root->filePath(u"outside/precious"_s)), "precious"_ba);
    }

    void fileCopiedOntoALinkToItselfBecomesAFile()
    {
        QVERIFY(QFile::link(source(), inFolder(u"a"_s)));
        copy(source(), u"a"_s);
        copy(inFolder(u"a"_s), u"a"_s);
        QCOMPARE(contentOf(inFolder(u"a"_s)), "water\r\n\0ice"_ba);
        QCOMPARE(contentOf(source()), "water\r\n\0ice"_ba);
    }

    void folderMayBeALink()
    {
        QVERIFY(QFile::link(u"RefFile"_s, root->filePath(u"link"_s)));
        copyTo(root->filePath(u"link"_s), source(), u"a"_s, {});
        QCOMPARE(entries(), QStringList(u"a"_s));
    }

    void whoeverCouldReadTheFileCanReadTheCopy_data()
    {
        QTest::addColumn<int>("source");
        QTest::addColumn<int>("copy");
        QTest::newRow("ordinary") << 0644 << 0644;
        QTest::newRow("private") << 0600 << 0600;
        QTest::newRow("read-only") << 0444 << 0644;
        QTest::newRow("program of the administrator") << 06755 << 0755;
    }

    void whoeverCouldReadTheFileCanReadTheCopy()
    {
        QFETCH(int, source);
        QFETCH(int, copy);
        QCOMPARE(chmod(QFile::encodeName(this->source()).constData(), static_cast<mode_t>(source)), 0);
        // Twice: a copy can be replaced whatever its source was.
        for (int i = 0; i < 2; ++i)
            this->copy(this->source(), u"a"_s);
        struct stat status = {};
        QCOMPARE(stat(QFile::encodeName(inFolder(u"a"_s)).constData(), &status), 0);
        QCOMPARE(static_cast<int>(status.st_mode & 07777), copy);
    }

    void whatMayNotBeReadOrWrittenIsTold()
    {
        makeFile(inFolder(u"a"_s), "old");
        const auto open = [&](const QString& path, mode_t mode) {
            QCOMPARE(chmod(QFile::encodeName(path).constData(), mode), 0);
        };
        open(root->path(), 0777);
        open(root->filePath(u"outside"_s), 0777);
        open(folder(), 0777);
        open(source(), 0);
        {
            const OrdinaryPerson person;
            QCOMPARE(errorOf([&] { copy(source(), u"a"_s); }), errors::PermissionDenied);
        }
        open(source(), 0644);
        open(folder(), 0555);
        {
            const OrdinaryPerson person;
            QCOMPARE(errorOf([&] { copy(source(), u"a"_s); }), errors::PermissionDenied);
        }
        open(folder(), 0777);
        QCOMPARE(entries(), QStringList(u"a"_s));
        QCOMPARE(contentOf(inFolder(u"a"_s)), "old"_ba);
        {
            const OrdinaryPerson person;
            copy(source(), u"a"_s);
        }
        QCOMPARE(contentOf(inFolder(u"a"_s)), contentOf(source()));
    }

    void writingThatFailsHalfWayLeavesNothing()
    {
        makeFile(source(), QByteArray(3 << 20, 'x'));
        makeFile(inFolder(u"a"_s), "old");
        {
            const SizeLimit limit((2 << 20) + 100);
            QCOMPARE(errorOf([&] { copy(source(), u"a"_s); }), errors::PathFileAccess);
        }
        QCOMPARE(entries(), QStringList(u"a"_s));
        QCOMPARE(contentOf(inFolder(u"a"_s)), "old"_ba);
    }
#endif

#ifdef Q_OS_LINUX
    void readingThatFailsLeavesNothing()
    {
        makeFile(inFolder(u"a"_s), "old");
        // An ordinary file to look at, but nothing can be read at its beginning.
        QCOMPARE(errorOf([&] { copy(u"/proc/self/mem"_s, u"a"_s); }), errors::PathFileAccess);
        QCOMPARE(entries(), QStringList(u"a"_s));
        QCOMPARE(contentOf(inFolder(u"a"_s)), "old"_ba);
    }

    void fileThatIsLongerThanItSaysIsCopiedToItsEnd()
    {
        copy(u"/proc/self/status"_s, u"a"_s);
        QVERIFY(contentOf(inFolder(u"a"_s)).startsWith("Name:"));
    }
#endif
};

QTEST_GUILESS_MAIN(TestCopying)
#include "test_copying.moc"

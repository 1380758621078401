// Registering outside files, without a window.
#include "app/base/platform/any_names.h"
#include "core/file_registration.h"
#include "store/record_set.h"
#include "tests/support/compare_text.h"
#include "tests/support/errors_of.h"
#include "tests/support/test_world.h"
#include "tests/support/troubled_database.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <QUrl>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const QString Picture = u"F-991231-001"_s;

#ifdef Q_OS_UNIX
/// Ends the program at a moment of a replacement: 1 when the copy has been placed, 2 when it is to be kept.
class EndingAt : public SystemFiles
{
public:
    explicit EndingAt(int moment) : m_moment(moment) {}

    std::unique_ptr<StagedCopy> stageCopy(const QString& source, const QString& folder, const QString& name,
                                          const Progress& progress) const override
    {
        return std::make_unique<Copy>(SystemFiles::stageCopy(source, folder, name, progress), m_moment);
    }

private:
    class Copy : public StagedCopy
    {
    public:
        Copy(std::unique_ptr<StagedCopy> copy, int moment) : m_copy(std::move(copy)), m_moment(moment) {}
        void place(const QString& mark) override
        {
            m_copy->place(mark);
            if (m_moment == 1)
                _exit(17);
        }
        void keep() override { _exit(17); }
        void leave() override { m_copy->leave(); }

    private:
        std::unique_ptr<StagedCopy> m_copy;
        int m_moment;
    };

    int m_moment;
};
#endif

} // namespace

class TestRegisteringFiles : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestWorld> world;

    Session& session() { return world->session; }
    QStringList fileRows() { return TestWorld::rowsOf(session().RsRefFile); }
    QStringList memberships() { return TestWorld::rowsOf(session().RsCategory); }
    QString pathOf(const QString& name) const { return world->folder.filePath(name); }
    QString write(const QString& name, const QByteArray& content) const
    {
        QFile file(pathOf(name));
        if (!QDir().mkpath(QFileInfo(file).path()) || !file.open(QIODevice::WriteOnly) ||
            file.write(content) != content.size())
            qFatal("cannot write a test file");
        return file.fileName();
    }
    QByteArray copied(const QString& name) const
    {
        QFile file(pathOf(u"RefFile/"_s + name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no such file)");
    }
    QStringList copies() const
    {
        return QDir(pathOf(u"RefFile"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    }
    /// The hidden ones, too.
    QStringList everything() const
    {
        return QDir(pathOf(u"RefFile"_s)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    FileRegistration registerPath(const QString& path, const std::optional<QString>& category = {},
                                  const QString& identifier = Picture)
    {
        FileEntry entry{.path = path, .identifier = identifier, .category = {}};
        if (category)
            entry.category = CategoryRow{.name = u"分類"_s, .identifier = *category};
        return RegisterFile(session(), entry, {});
    }
    void addCategories(const QStringList& identifiers)
    {
        for (const QString& identifier : identifiers)
            TestWorld::addRow(session().RsCategoryID, {identifier, u"分類"_s});
    }
    qint32 errorOfRegistering(const QString& path, const std::optional<QString>& category = {})
    {
        return errorOf([&] { registerPath(path, category); });
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        world->openDatabase(world->createDatabase());
        QVERIFY(QDir(world->folder.path()).mkdir(u"RefFile"_s));
        addCategories({u"A"_s, u"A-B"_s});
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void fileIsCopiedNamedAndFiled()
    {
        const QString path = write(u"from here/図 1.txt"_s, "content");
        QCOMPARE(registerPath(path, u"A-B"_s), FileRegistration::Registered);
        QCOMPARE(copied(u"図 1.txt"_s), QByteArray("content"));
        QCOMPARE(fileRows(), QStringList({u"図 1.txt|F-991231-001|未入力"_s}));
        QCOMPARE(memberships(), QStringList({u"A-B|F-991231-001"_s}));
        QVERIFY(QFile::exists(path));
    }

    void fileWithoutCategoryIsFiledNowhere()
    {
        QCOMPARE(registerPath(write(u"a.txt"_s, "a")), FileRegistration::Registered);
        QCOMPARE(fileRows().size(), 1);
        QCOMPARE(memberships(), QStringList());
    }

    void fileIsNotFiledInACategoryThatIsGone()
    {
        QCOMPARE(registerPath(write(u"a.txt"_s, "a"), u"Z"_s), FileRegistration::Registered);
        QCOMPARE(fileRows().size(), 1);
        QCOMPARE(memberships(), QStringList());
    }

    void withoutIdentifierNothingIsCopied()
    {
        QCOMPARE(errorOf([&] { registerPath(write(u"a.txt"_s, "a"), {}, QString()); }),
                 errors::InvalidArgument);
        QCOMPARE(copies(), QStringList());
        QCOMPARE(fileRows(), QStringList());
    }

    void rowAndMembershipAreWrittenAtOnce()
    {
        const QString path = write(u"a.txt"_s, "a");
        const WriteCounter writes(*session().OpenDb);
        QCOMPARE(registerPath(path, u"A"_s), FileRegistration::Registered);
        QCOMPARE(writes.count, 1);
    }

    void progressBeginsWithTheCopying()
    {
        const QString path = write(u"a.txt"_s, "content");
        QList<std::pair<qint64, qint64>> steps;
        QStringList copiesAtFirst{u"never asked"_s};
        const auto note = [&](qint64 done, qint64 total) {
            if (steps.isEmpty())
                copiesAtFirst = copies();
            steps.append({done, total});
            return true;
        };
        RegisterFile(session(), {.path = path, .identifier = Picture, .category = {}}, note);
        QCOMPARE(copiesAtFirst, QStringList());
        QCOMPARE(steps.first(), std::pair(qint64(0), qint64(0)));
        QCOMPARE(steps.last(), std::pair(qint64(7), qint64(7)));
    }

    void whatIsNoFileIsNotFound()
    {
        QVERIFY(QDir(world->folder.path()).mkdir(u"folder"_s));
        write(u"a.txt"_s, "a");
        for (const QString& name : {u"missing.txt"_s, u"folder"_s, u"folder/"_s, u"a.txt/"_s})
            QCOMPARE(registerPath(pathOf(name)), FileRegistration::FileNotFound);
        QCOMPARE(registerPath(QString()), FileRegistration::FileNotFound);
        QCOMPARE(copies(), QStringList());
        QCOMPARE(fileRows(), QStringList());
    }

    void missingFolderOfFilesIsNotMade()
    {
        QVERIFY(QDir(world->folder.path()).rmdir(u"RefFile"_s));
        QCOMPARE(registerPath(write(u"a.txt"_s, "a")), FileRegistration::NoFolderForFiles);
        QCOMPARE(registerPath(pathOf(u"missing.txt"_s)), FileRegistration::FileNotFound);
        QVERIFY(!QFile::exists(pathOf(u"RefFile"_s)));
        QCOMPARE(fileRows(), QStringList());
    }

    void copyThatFailsWritesNothing_data()
    {
        QTest::addColumn<qint32>("number");
        QTest::newRow("full disk") << errors::DiskFull;
        QTest::newRow("no permission") << errors::PermissionDenied;
    }

    void copyThatFailsWritesNothing()
    {
        QFETCH(qint32, number);
        const QString path = write(u"a.txt"_s, "a");
        world->files.copyFailure = number;
        QCOMPARE(errorOfRegistering(path, u"A"_s), number);
        QCOMPARE(fileRows(), QStringList());
        QCOMPARE(memberships(), QStringList());
    }

    void rowThatCannotBeWrittenIsRefusedBeforeTheCopy_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<qint32>("number");
        QTest::newRow("name too long") << QString(51, u'a') << Picture << errors::FieldTooSmall;
        QTest::newRow("identifier too long") << u"a.txt"_s << u"F-991231-1000"_s << errors::FieldTooSmall;
        QTest::newRow("no identifier") << u"a.txt"_s << QString() << errors::InvalidArgument;
    }

    void rowThatCannotBeWrittenIsRefusedBeforeTheCopy()
    {
        QFETCH(QString, name);
        QFETCH(QString, identifier);
        QFETCH(qint32, number);
        TestWorld::addRow(session().RsRefFile, {u"先客"_s, u"F-991231-000"_s, u"未入力"_s});
        const QString path = write(name, "a");
        QCOMPARE(errorOf([&] { registerPath(path, u"A"_s, identifier); }), number);
        QCOMPARE(copies(), QStringList());
        QCOMPARE(fileRows(), QStringList({u"先客|F-991231-000|未入力"_s}));
        QCOMPARE(memberships(), QStringList());
    }

    void identifierTakenMeanwhileGivesWayToTheNextFreeOne()
    {
        TestWorld::addRow(session().RsRefFile, {u"先客"_s, Picture, u"未入力"_s});
        const FileEntry entry{.path = write(u"a.txt"_s, "a"),
                              .identifier = Picture,
                              .category = CategoryRow{.name = u"分類"_s, .identifier = u"A"_s}};
        QString identifier;
        QCOMPARE(RegisterFile(session(), entry, {}, &identifier), FileRegistration::Registered);
        QCOMPARE(identifier, u"F-991231-002"_s);
        QCOMPARE(fileRows().last(), u"a.txt|F-991231-002|未入力"_s);
        QCOMPARE(memberships(), QStringList(u"A|F-991231-002"_s));
    }

    void refusalOfANameTellsTheNameAndHowLongItMayBe()
    {
        const QString name = QString(47, u'長') + u".txt"_s;
        QString told;
        try {
            registerPath(write(name, "a"));
        } catch (const Error& error) {
            told = error.description;
        }
        QVERIFY(compareText(
            told,
            u"ファイル名「%1」は長すぎます（51 文字）。50 文字以内の名前に変えてから登録してください。"_s.arg(
                name)));
    }

    void membershipThatIsRefusedTakesTheRowWithIt()
    {
        TestWorld::addRow(session().RsCategory, {u"A"_s, Picture});
        const QString path = write(u"a.txt"_s, "a");
        QCOMPARE(errorOfRegistering(path, u"A"_s), errors::DuplicateKey);
        QCOMPARE(fileRows(), QStringList());
        QCOMPARE(memberships().size(), 1);
        QCOMPARE(copied(u"a.txt"_s), QByteArray("a")); // a new name stays
    }

    void categoryThatIsGoneDoesNotComeBack()
    {
        QCOMPARE(registerPath(write(u"a.txt"_s, "a"), u"GONE"_s), FileRegistration::Registered);
        QCOMPARE(fileRows().size(), 1);
        QCOMPARE(memberships(), QStringList());
    }

    void fileOfAnotherDatumStaysWhenTheRowCannotBeWritten_data()
    {
        QTest::addColumn<int>("lock");
        QTest::newRow("another program writes") << int(ForeignLock::Kind::Writing);
        QTest::newRow("another program reads") << int(ForeignLock::Kind::Reading);
        QTest::newRow("another program has it alone") << int(ForeignLock::Kind::Exclusive);
    }

    void fileOfAnotherDatumStaysWhenTheRowCannotBeWritten()
    {
        QFETCH(int, lock);
        write(u"RefFile/a.txt"_s, "of another datum");
        TestWorld::addRow(session().RsRefFile, {u"a.txt"_s, u"F-991231-000"_s, u"未入力"_s});
        const QString path = write(u"a.txt"_s, "new");
        {
            const ForeignLock other(*session().OpenDb, static_cast<ForeignLock::Kind>(lock));
            QCOMPARE(errorOfRegistering(path, u"A"_s), errors::Locked);
        }
        QCOMPARE(copied(u"a.txt"_s), QByteArray("of another datum"));
        QCOMPARE(copies(), QStringList(u"a.txt"_s));
        QCOMPARE(fileRows(), QStringList({u"a.txt|F-991231-000|未入力"_s}));
        QCOMPARE(memberships(), QStringList());
    }

    void fileOfAnotherDatumStaysWhenTheMembershipIsRefused()
    {
        write(u"RefFile/a.txt"_s, "of another datum");
        TestWorld::addRow(session().RsCategory, {u"A"_s, Picture});
        QCOMPARE(errorOfRegistering(write(u"a.txt"_s, "new"), u"A"_s), errors::DuplicateKey);
        QCOMPARE(copied(u"a.txt"_s), QByteArray("of another datum"));
        QCOMPARE(copies(), QStringList(u"a.txt"_s));
    }

    void whatAnAbruptEndLeavesInTheFolderIsSettledByTheRow_data()
    {
#ifdef Q_OS_UNIX
        QTest::addColumn<int>("moment");
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("placed, the row not yet durable") << 1 << "of another datum"_ba;
        QTest::newRow("the row durable, the former content still there") << 2 << "new"_ba;
#endif
    }

    void whatAnAbruptEndLeavesInTheFolderIsSettledByTheRow()
    {
#ifdef Q_OS_UNIX
        QFETCH(int, moment);
        QFETCH(QByteArray, content);
        write(u"RefFile/a.txt"_s, "of another datum");
        TestWorld::addRow(session().RsRefFile, {u"a.txt"_s, u"F-991231-001"_s, u"未入力"_s});
        const QString path = write(u"a.txt"_s, "new");
        const QString database = session().OpenDb->path();
        const pid_t child = fork();
        QVERIFY(child >= 0);
        if (child == 0) {
            EndingAt files(moment);
            TestWorld other;
            other.openDatabase(database);
            Session session({.dialogs = other.dialogs,
                             .eventLog = other.eventLog,
                             .clock = other.clock,
                             .desktop = other.desktop,
                             .files = files,
                             .windows = other.windows},
                            world->folder.path());
            session.OpenDb = other.session.OpenDb;
            session.RsRefFile = other.session.RsRefFile;
            session.RsCategory = other.session.RsCategory;
            session.RsCategoryID = other.session.RsCategoryID;
            RegisterFile(session, {.path = path, .identifier = u"F-991231-002"_s, .category = {}}, {});
            _exit(0);
        }
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);
        QCOMPARE(WEXITSTATUS(status), 17);
        QCOMPARE(copied(u"a.txt"_s), QByteArray("new"));
        QCOMPARE(everything().size(), 2); // the former content, too
        QCOMPARE(fileRows().size(), moment);
        // The next registration, of whatever file.
        QCOMPARE(registerPath(write(u"b.txt"_s, "b"), {}, u"F-991231-003"_s), FileRegistration::Registered);
        QCOMPARE(copied(u"a.txt"_s), content);
        QCOMPARE(everything(), QStringList({u"a.txt"_s, u"b.txt"_s}));
#else
        QSKIP("There is no such end here.");
#endif
    }

    void whatBelongsToAnotherDatabaseIsLeftToIt()
    {
        write(u"RefFile/a.txt"_s, "new");
        const QString left = u"RefFile/.quillon-former-00000000-F-991231-001-abcdef/a.txt"_s;
        write(left, "former");
        QCOMPARE(registerPath(write(u"b.txt"_s, "b")), FileRegistration::Registered);
        QCOMPARE(copied(u"a.txt"_s), QByteArray("new"));
        QVERIFY(QFile::exists(pathOf(left)));
        // Until the name is replaced for good.
        QCOMPARE(registerPath(write(u"a.txt"_s, "newer"), {}, u"F-991231-002"_s),
                 FileRegistration::Registered);
        QCOMPARE(copied(u"a.txt"_s), QByteArray("newer"));
        QCOMPARE(everything(), QStringList({u"a.txt"_s, u"b.txt"_s}));
    }

    void copyThatIsCancelledChangesNothing_data()
    {
        QTest::addColumn<int>("calls"); // of the progress until it is cancelled
        QTest::newRow("before it begins") << 1;
        QTest::newRow("in the middle") << 2;
        QTest::newRow("at the end") << 4;
    }

    void copyThatIsCancelledChangesNothing()
    {
        QFETCH(int, calls);
        write(u"RefFile/a.txt"_s, "of another datum");
        const QString path = write(u"a.txt"_s, QByteArray(3 << 20, 'x'));
        const auto cancel = [&](qint64, qint64) { return --calls > 0; };
        QCOMPARE(RegisterFile(session(),
                              {.path = path,
                               .identifier = Picture,
                               .category = CategoryRow{.name = u"分類"_s, .identifier = u"A"_s}},
                              cancel),
                 FileRegistration::Cancelled);
        QCOMPARE(calls, 0);
        QCOMPARE(copied(u"a.txt"_s), QByteArray("of another datum"));
        QCOMPARE(copies(), QStringList(u"a.txt"_s));
        QCOMPARE(fileRows(), QStringList());
        QCOMPARE(memberships(), QStringList());
    }

    void nameThatIsNoTextIsRegisteredAsItCanBeRead_data()
    {
#ifdef Q_OS_UNIX
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("name");
        QTest::newRow("code page 932") << "\x83\x65\x83\x58\x83\x67.txt"_ba << u"テスト.txt"_s;
        QTest::newRow("a second byte like a separator") << "\x95\x5c.txt"_ba << u"表.txt"_s;
        QTest::newRow("partly UTF-8") << "a\xff\\b.txt"_ba << u"a・_b.txt"_s;
#endif
    }

    void nameThatIsNoTextIsRegisteredAsItCanBeRead()
    {
#ifdef Q_OS_UNIX
        QFETCH(QByteArray, bytes);
        QFETCH(QString, name);
        QVERIFY(QDir(world->folder.path()).mkdir(u"古い書庫"_s));
        const QByteArray path = QFile::encodeName(pathOf(u"古い書庫/"_s)) + bytes;
        {
            const int file = open(path.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
            if (file < 0)
                QSKIP("This file system has no such names.");
            QCOMPARE(::write(file, "old", 3), 3);
            close(file);
        }
        const QStringList offered = platform::filesWithUnreadableNames(pathOf(u"古い書庫"_s));
        QCOMPARE(offered.size(), 1);
        const QString address = platform::addressOfPath(offered.first());
        QCOMPARE(address, u"file://"_s + QString::fromLatin1(path.toPercentEncoding("/")));
        QCOMPARE(registerPath(address), FileRegistration::Registered);
        QCOMPARE(fileRows(), QStringList(name + u"|F-991231-001|未入力"_s));
        QCOMPARE(copied(name), "old"_ba);
#else
        QSKIP("Every name is text here.");
#endif
    }

    void pathMayComeAsItWasCopiedElsewhere_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("after");
        QTest::addColumn<bool>("encoded");
        QTest::newRow("blank at the end") << QString() << u" "_s << false;
        QTest::newRow("line break at the end") << QString() << u" \r\n"_s << false;
        QTest::newRow("full-width blank at the end") << QString() << u"\u3000"_s << false;
        QTest::newRow("quotation marks") << u"\""_s << u"\""_s << false;
        QTest::newRow("quotation marks and a line break") << u"\""_s << u"\"\n"_s << false;
        QTest::newRow("single quotation marks") << u"'"_s << u"'"_s << false;
        QTest::newRow("address") << u"file://"_s << QString() << true;
        QTest::newRow("address with the computer") << u"file://localhost"_s << QString() << true;
        QTest::newRow("address in quotation marks") << u"\"FILE://"_s << u"\" "_s << true;
    }

    void pathMayComeAsItWasCopiedElsewhere()
    {
        QFETCH(QString, before);
        QFETCH(QString, after);
        QFETCH(bool, encoded);
#ifdef Q_OS_WIN
        const QString name = u"図 100%20#1.txt"_s;
#else
        const QString name = u"図 100%20#1?.txt"_s;
#endif
        QString path = write(name, "content");
        if (encoded) {
            const QString root = path.startsWith(u'/') ? QString() : u"/"_s; // before the letter of a drive
            path = root + QString::fromLatin1(QUrl::toPercentEncoding(path, "/"));
        }
        QCOMPARE(registerPath(before + path + after), FileRegistration::Registered);
        QCOMPARE(fileRows(), QStringList({name + u"|F-991231-001|未入力"_s}));
    }

    void pathAsItStandsGoesBeforeWhatItMayMean()
    {
#ifdef Q_OS_WIN
        QSKIP("No name ends in a blank here.");
#endif
        write(u"a.txt"_s, "without");
        const QString path = write(u"a.txt "_s, "with a blank");
        QCOMPARE(registerPath(path), FileRegistration::Registered);
        QCOMPARE(copied(u"a.txt "_s), QByteArray("with a blank"));
    }

    void lockedDatabaseGetsTheFileLater()
    {
        const QString path = write(u"a.txt"_s, "a");
        {
            const ForeignLock other(*session().OpenDb, ForeignLock::Kind::Writing);
            QCOMPARE(errorOfRegistering(path, u"A"_s), errors::Locked);
        }
        {
            const ForeignLock reader(*session().OpenDb, ForeignLock::Kind::Reading);
            QCOMPARE(errorOfRegistering(path, u"A"_s), errors::Locked);
        }
        QCOMPARE(fileRows(), QStringList());
        QCOMPARE(memberships(), QStringList());
        QVERIFY(othersMayWrite(session().OpenDb->path()));
        QCOMPARE(registerPath(path, u"A"_s), FileRegistration::Registered);
        QCOMPARE(fileRows().size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestRegisteringFiles)
#include "test_registering_files.moc"

#include "tests/cli/cli_world.h"

#include "store/record_set.h"

#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

/// A terminal, and a person who looks at it and types.
class Terminal
{
public:
    explicit Terminal(unsigned short columns) : m_person(posix_openpt(O_RDWR | O_NOCTTY))
    {
        grantpt(m_person);
        unlockpt(m_person);
        // Open all the time, so that what was written is not lost between two programs.
        m_held = open(ptsname(m_person), O_RDWR | O_NOCTTY);
        winsize size = {};
        size.ws_row = 25;
        size.ws_col = columns;
        ioctl(m_person, TIOCSWINSZ, &size);
    }
    ~Terminal()
    {
        close(m_held);
        close(m_person);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    QString name() const { return QString::fromLocal8Bit(ptsname(m_person)); }
    bool type(const QByteArray& keys) const
    {
        return write(m_person, keys.constData(), keys.size()) == keys.size();
    }

    /// Everything that stands there by now, as soon as it holds `text`; without that, after some patience.
    QString seen(const QString& text)
    {
        constexpr int Patience = 30'000;
        pollfd waiting = {.fd = m_person, .events = POLLIN, .revents = 0};
        while (!QString::fromUtf8(m_seen).contains(text) && poll(&waiting, 1, Patience) == 1) {
            std::array<char, 4096> bytes = {};
            const ssize_t count = read(m_person, bytes.data(), bytes.size());
            if (count <= 0)
                break;
            m_seen += QByteArray(bytes.data(), count);
        }
        return QString::fromUtf8(m_seen);
    }

private:
    int m_person;
    int m_held = -1;
    QByteArray m_seen;
};

} // namespace

/// What the command line program does where a person sits before it.
class TestCliTerminal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_world = std::make_unique<CliWorld>();
        m_world->fillDatabase();
        m_world->variables = {{u"TERM"_s, u"xterm"_s}};
    }

    void whatDestroysAsksFirst_data()
    {
        QTest::addColumn<QByteArray>("typed");
        QTest::addColumn<int>("status");
        QTest::newRow("y") << QByteArray("y\n") << 0;
        QTest::newRow("yes") << QByteArray("YES\n") << 0;
        QTest::newRow("in Japanese") << u"はい\n"_s.toUtf8() << 0;
        QTest::newRow("n") << QByteArray("n\n") << 1;
        QTest::newRow("nothing") << QByteArray("\n") << 1;
        QTest::newRow("the end of the input") << QByteArray("\x04") << 1;
    }

    void whatDestroysAsksFirst()
    {
        QFETCH(QByteArray, typed);
        QFETCH(int, status);
        Terminal terminal(80);
        QProcess program;
        program.setStandardInputFile(terminal.name());
        program.setStandardErrorFile(terminal.name());
        m_world->start(program, {u"delete"_s, u"M-991231-001"_s});
        QCOMPARE(terminal.seen(u"[y/N] "_s), u"<水> を削除しますか。 [y/N] "_s);
        QVERIFY(terminal.type(typed));
        QCOMPARE(CliWorld::answerOf(program).status, status);
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain).size(), status == 0 ? 1 : 2);
        if (status == 0)
            QVERIFY(
                terminal.seen(u"< 水 >を削除しました。\r\n"_s).endsWith(u"\r\n< 水 >を削除しました。\r\n"_s));
    }

    void anInterruptedQuestionIsNoYes()
    {
        Terminal terminal(80);
        QProcess program;
        program.setStandardInputFile(terminal.name());
        program.setStandardErrorFile(terminal.name());
        m_world->start(program, {u"delete"_s, u"M-991231-001"_s, u"M-991231-002"_s});
        QVERIFY(terminal.seen(u"[y/N] "_s).endsWith(u"[y/N] "_s));
        QVERIFY(terminal.type("y\n"));
        QVERIFY(terminal.seen(u"<火> を削除しますか。 [y/N] "_s).endsWith(u"[y/N] "_s));
        ::kill(static_cast<pid_t>(program.processId()), SIGINT);
        QCOMPARE(CliWorld::answerOf(program).status, 5);
        const QString end = u"quillon-cli: 2 件中 1 件を削除しました。\r\n"_s;
        QVERIFY(terminal.seen(end).endsWith(end));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain), QStringList{u"火|M-991231-002|燃える"_s});
    }

    void anInterruptionBeforeTheFirstWriteSaysSo()
    {
        Terminal terminal(80);
        QProcess program;
        program.setStandardInputFile(terminal.name());
        program.setStandardErrorFile(terminal.name());
        m_world->start(program, {u"delete"_s, u"M-991231-001"_s});
        QVERIFY(terminal.seen(u"[y/N] "_s).endsWith(u"[y/N] "_s));
        ::kill(static_cast<pid_t>(program.processId()), SIGINT);
        QCOMPARE(CliWorld::answerOf(program).status, 5);
        QVERIFY(terminal.seen(u"中断しました。\r\n"_s).endsWith(u"quillon-cli: 中断しました。\r\n"_s));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain).size(), 2);
    }

    void namesFitTheTerminal_data()
    {
        QTest::addColumn<CliWorld::Variables>("variables");
        QTest::addColumn<QString>("lines");
        QTest::newRow("with colours") << CliWorld::Variables{{u"TERM"_s, u"xterm"_s}}
                                      << u"\x1B[36mM-991231-001  \x1B[m定義  水\r\n"
                                         u"\x1B[36mM-991231-002  \x1B[m定義  火\r\n"
                                         u"\x1B[36mM-991231-003  \x1B[m定義  長い名…\r\n"_s;
        const QString plain =
            u"M-991231-001  定義  水\r\nM-991231-002  定義  火\r\nM-991231-003  定義  長い名…\r\n"_s;
        QTest::newRow("without") << CliWorld::Variables{{u"TERM"_s, u"xterm"_s}, {u"NO_COLOR"_s, u"1"_s}}
                                 << plain;
        QTest::newRow("a terminal that has none") << CliWorld::Variables{{u"TERM"_s, u"dumb"_s}} << plain;
    }

    void namesFitTheTerminal()
    {
        QFETCH(CliWorld::Variables, variables);
        QFETCH(QString, lines);
        m_world->variables = variables;
        TestWorld::addRow(m_world->session.RsMain, {u"長い名前のデータ"_s, u"M-991231-003"_s, u"長い"_s});
        Terminal terminal(28);
        QProcess program;
        program.setStandardOutputFile(terminal.name());
        m_world->start(program, {u"list"_s, u"--kind=definition"_s});
        QCOMPARE(CliWorld::answerOf(program).status, 0);
        QCOMPARE(terminal.seen(u"…\r\n"_s), lines);
    }

    void aTextSteersNoTerminal()
    {
        TestWorld::addRow(m_world->session.RsMain,
                          {u"悪い\x1B[2J名"_s, u"M-991231-003"_s, u"悪い\x1B[2J文"_s});
        Terminal terminal(80);
        QProcess program;
        program.setStandardOutputFile(terminal.name());
        m_world->start(program, {u"show"_s, u"M-991231-003"_s});
        QCOMPARE(CliWorld::answerOf(program).status, 0);
        const QString text = terminal.seen(u"文\r\n"_s);
        QVERIFY(text.contains(u"名称      悪い\uFFFD[2J名\r\n"_s));
        QVERIFY(text.endsWith(u"\r\n悪い\uFFFD[2J文\r\n"_s));
        // What goes into a pipe is the text itself.
        QVERIFY(m_world->run({u"show"_s, u"M-991231-003"_s}).output.endsWith(u"\n悪い\x1B[2J文\n"_s));
    }

    void aTerminalIsToldHowFarALongWorkIs()
    {
        QVERIFY(m_world->write(u"表.csv"_s, u"名称\n山\n"_s.toUtf8()));
        Terminal terminal(80);
        QProcess program;
        program.setStandardErrorFile(terminal.name());
        m_world->start(program, {u"import"_s, u"csv"_s, u"表.csv"_s});
        QCOMPARE(CliWorld::answerOf(program).status, 0);
        // What stood there is gone when the report comes.
        QCOMPARE(terminal.seen(u"\r\x1B[K"_s), u"\r100 %\x1B[K\r\x1B[K"_s);
        // Nobody looks at a pipe.
        QCOMPARE(m_world->run({u"import"_s, u"csv"_s, u"表.csv"_s}).errors, QString());
    }

    void anInterruptedImportBringsNothing_data()
    {
        QTest::addColumn<QString>("database");
        QTest::newRow("into a database") << u"QUILLON.mdb"_s;
        QTest::newRow("into a new one") << u"新しい.mdb"_s;
    }

    void anInterruptedImportBringsNothing()
    {
        QFETCH(QString, database);
        QByteArray table = u"名称,定義,分類\n"_s.toUtf8();
        constexpr int Rows = 200'000; // that it cannot be over before anybody has seen the first of it
        for (int i = 0; i < Rows; ++i)
            table += "n" + QByteArray::number(i) + ",t,c\n";
        QVERIFY(m_world->write(u"表.csv"_s, table));
        const QStringList before = m_world->everything();
        m_world->database = database;
        QCOMPARE(interrupted({u"import"_s, u"csv"_s, u"表.csv"_s}), Stopped);
        QCOMPARE(m_world->everything(), before);
        QCOMPARE(m_world->names(), QStringList({u"QUILLON.mdb"_s, u"表.csv"_s}));
    }

    void anInterruptedArchiveBringsNoFileEither()
    {
        QVERIFY(makeLargeFile());
        QCOMPARE(m_world->run({u"export"_s, u"archive"_s, u"書庫"_s}).status, 0);
        QVERIFY(QDir(m_world->folder.path()).mkdir(u"別の所"_s));
        m_world->database = u"別の所/新しい.mdb"_s;
        QCOMPARE(interrupted({u"--home"_s, u"別の所"_s, u"import"_s, u"archive"_s, u"書庫"_s}), Stopped);
        QVERIFY(QDir(m_world->path(u"別の所"_s)).isEmpty());
    }

    void anInterruptedExportLeavesNothing_data()
    {
        QTest::addColumn<QString>("format");
        for (const char* const format : {"archive", "markdown", "html"})
            QTest::newRow(format) << QString::fromLatin1(format);
    }

    void anInterruptedExportLeavesNothing()
    {
        QFETCH(QString, format);
        QVERIFY(makeLargeFile());
        m_world->session.OpenDb->connection().execute(
            u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 900) "
            u"INSERT INTO RefDoc SELECT '名' || i, printf('R-991230-%03d', i), '文' FROM n"_s);
        const QStringList before = m_world->names();
        QCOMPARE(interrupted({u"export"_s, format, u"出力"_s}), Stopped);
        QCOMPARE(m_world->names(), before);
    }

    void anInterruptedCheckSaysSo()
    {
        makeDanglingLinks();
        QProcess program;
        m_world->start(program, {u"check"_s, u"--json"_s});
        QVERIFY(program.waitForReadyRead(60'000)); // the rest of it waits for somebody to read it
        ::kill(static_cast<pid_t>(program.processId()), SIGINT);
        const Answered answered = CliWorld::answerOf(program);
        QCOMPARE(answered.status, 5);
        QCOMPARE(answered.errors, u"quillon-cli: 中断しました。\n"_s);
        QCOMPARE(m_world->session.RsLink->recordCount(), Links + 1);
    }

    void aRepairIsDoneAltogetherOrNotAtAll()
    {
        makeDanglingLinks();
        QProcess program;
        m_world->start(program, {u"check"_s, u"--repair"_s});
        QVERIFY(program.waitForStarted());
        ::kill(static_cast<pid_t>(program.processId()), SIGINT); // whatever it may be doing
        program.waitForFinished(60'000);
        const qint64 links = m_world->session.RsLink->recordCount();
        QVERIFY2(links == 1 || links == Links + 1, qPrintable(QString::number(links)));
    }

private:
    static constexpr qint64 Links = 100'000;

    void makeDanglingLinks()
    {
        m_world->session.OpenDb->connection().execute(
            u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
            u"INSERT INTO Link SELECT 'M-991231-001', printf('M-%06d-999', i) FROM n"_s.arg(Links));
    }

    /// A file that takes some time to be copied, and hardly any room.
    bool makeLargeFile() const
    {
        constexpr qint64 Size = qint64{300} << 20;
        return QDir(m_world->folder.path()).mkdir(u"RefFile"_s) && m_world->write(u"RefFile/水.txt"_s, "w") &&
               QFile::resize(m_world->path(u"RefFile/水.txt"_s), Size);
    }

    inline static const Answered Stopped = answer(5, QString());

    /// Interrupts a command as soon as it says how far it is, and answers how it ends.
    Answered interrupted(const QStringList& words)
    {
        Terminal terminal(80);
        QProcess program;
        program.setStandardErrorFile(terminal.name());
        m_world->start(program, words);
        if (!terminal.seen(u" %"_s).contains(u" %"))
            return answer(-1, u"it does not say how far it is"_s);
        ::kill(static_cast<pid_t>(program.processId()), SIGINT);
        const Answered answered = CliWorld::answerOf(program);
        const QString end = u"quillon-cli: 中止しました。何も書き込んでいません。\r\n"_s;
        return terminal.seen(end).endsWith(end) ? answered : answer(-1, u"it does not say why it ends"_s);
    }

    std::unique_ptr<CliWorld> m_world;
};

QTEST_GUILESS_MAIN(TestCliTerminal)
#include "test_cli_terminal.moc"

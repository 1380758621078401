#include "tests/cli/cli_world.h"

#include "store/record_set.h"
#include "store/sqlite/transaction.h"

#include <csignal>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// What the command line program does when something stands in its way.
class TestCliFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_world = std::make_unique<CliWorld>();
        m_world->fillDatabase();
    }

    void aDatabaseThatCannotBeUsedIsTold_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("not there") << u"ない.mdb"_s;
        QTest::newRow("a folder") << u"folder"_s;
        QTest::newRow("no database") << u"text.mdb"_s;
        QTest::newRow("empty") << u"empty.mdb"_s;
    }

    void aDatabaseThatCannotBeUsedIsTold()
    {
        QFETCH(QString, name);
        QVERIFY(QDir(m_world->folder.path()).mkdir(u"folder"_s));
        QVERIFY(m_world->write(u"text.mdb"_s, QByteArray(5000, 'x')));
        QVERIFY(m_world->write(u"empty.mdb"_s, {}));
        m_world->database = name;
        for (const QStringList& words :
             {QStringList{u"list"_s}, QStringList{u"show"_s, u"M-991231-001"_s},
              QStringList{u"add"_s, u"definition"_s, u"名"_s, u"--text"_s, u"文"_s},
              QStringList{u"stats"_s}}) {
            const Answered answered = m_world->run(words);
            QCOMPARE(answered.status, 3);
            QCOMPARE(answered.output, QString());
            QVERIFY2(answered.errors.startsWith(u"quillon-cli: "_s) && answered.errors.count(u'\n') == 1,
                     qPrintable(answered.errors));
        }
        QVERIFY(!QFile::exists(m_world->path(u"ない.mdb"_s)));
    }

    void theDatabaseIsTakenFromTheEnvironment()
    {
        m_world->database.clear();
        QCOMPARE(m_world->run({u"stats"_s}),
                 answer(2, {},
                        u"quillon-cli: データベースを --database または環境変数 QUILLON_DATABASE で"
                        u"指定してください。\n"
                        u"使い方: quillon-cli [--database FILE] [--home FOLDER] stats\n"
                        u"使い方は quillon-cli stats --help で表示されます。\n"_s));
        m_world->variables = {{u"QUILLON_DATABASE"_s, u"QUILLON.mdb"_s}};
        QCOMPARE(m_world->run({u"categories"_s, u"--identifiers"_s}), answer(0, u"A\nA-A\nB\n"_s));
    }

    void aWriterThatComesSecondGivesUp()
    {
        const sqlite::Transaction write(m_world->session.OpenDb->connection());
        const Answered answered = m_world->run({u"category"_s, u"rename"_s, u"A"_s, u"天然"_s});
        QCOMPARE(answered.status, 3);
        QVERIFY(answered.errors.startsWith(u"quillon-cli: "_s));
        QCOMPARE(m_world->run({u"link"_s, u"M-991231-001"_s, u"M-991231-002"_s}).status, 3);
        // Readers do not mind.
        QCOMPARE(m_world->run({u"categories"_s, u"--identifiers"_s}), answer(0, u"A\nA-A\nB\n"_s));
    }

    void aReaderThatWaitsKeepsNobodyFromWriting()
    {
        m_world->session.OpenDb->execute(
            u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 60000) INSERT INTO Main "
            u"SELECT 'n' || i, printf('M-%06d-%03d', i / 900, i % 900), 't' || i FROM n"_s);
        QProcess program;
        m_world->start(program, {u"list"_s, u"--json"_s});
        // Nobody reads on: the program stands in the middle of its list.
        QVERIFY(program.waitForReadyRead());
        TestWorld::addRow(m_world->session.RsCategoryID, {u"C"_s, u"歴史"_s});
        QCOMPARE(CliWorld::answerOf(program).status, 0);
    }

    void unreadableFilesAreRefused()
    {
        QCOMPARE(m_world->run({u"add"_s, u"document"_s, u"本"_s, u"--file"_s, u"ない.txt"_s}).status, 1);
        QVERIFY(QDir(m_world->folder.path()).mkdir(u"folder"_s));
        const Answered folder = m_world->run({u"add"_s, u"document"_s, u"本"_s, u"--file"_s, u"folder"_s});
        QCOMPARE(folder.status, 4);
        QVERIFY(folder.errors.startsWith(u"quillon-cli: "_s));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsRefDoc).size(), 1);
    }

    void createFailsWhereNothingCanBeMade()
    {
        m_world->database = u"ない所/新しい.mdb"_s;
        const Answered answered = m_world->run({u"create"_s});
        QCOMPARE(answered.status, 3);
        QVERIFY(answered.errors.startsWith(u"quillon-cli: "_s));
    }

#ifdef Q_OS_UNIX
    void aFullDiskIsToldAndNothingIsHalfDone()
    {
        QProcess program;
        program.setStandardOutputFile(u"/dev/full"_s);
        m_world->start(program, {u"list"_s});
        const Answered answered = CliWorld::answerOf(program);
        QCOMPARE(answered.status, 5);
        QVERIFY2(answered.errors.startsWith(u"quillon-cli: 結果を最後まで出力できませんでした。"_s),
                 qPrintable(answered.errors));
    }

    void whereTheDatabaseCannotGrowNothingIsHalfDone()
    {
        QVERIFY(m_world->write(u"text.txt"_s, QByteArray(60'000, 'a')));
        const qint64 size = QFileInfo(m_world->path(u"QUILLON.mdb"_s)).size();
        QProcess shell;
        shell.setProcessEnvironment(m_world->environment());
        shell.setWorkingDirectory(m_world->folder.path());
        // As on a disk on which there is no room for more.
        shell.start(
            u"/bin/bash"_s,
            {u"-c"_s,
             u"trap '' XFSZ; ulimit -f %1; exec \"$0\" --database QUILLON.mdb add document 本 --file text.txt"_s
                 .arg(size / 1024 + 8),
             QStringLiteral(QUILLON_CLI)});
        const Answered answered = CliWorld::answerOf(shell);
        QCOMPARE(answered.status, 3);
        QCOMPARE(answered.output, QString());
        QVERIFY2(answered.errors.startsWith(u"quillon-cli: "_s), qPrintable(answered.errors));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsRefDoc).size(), 1);
        QCOMPARE(m_world->run({u"check"_s}).errors.section(u'\n', 0, 0),
                 u"1 件の問題があります。"_s); // the file of its datum
    }

    void aClosedPipeEndsQuietly()
    {
        m_world->session.OpenDb->execute(
            u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 60000) INSERT INTO Main "
            u"SELECT 'n' || i, printf('M-%06d-%03d', i / 900, i % 900), 't' || i FROM n"_s);
        QProcess shell;
        shell.setProcessEnvironment(m_world->environment());
        shell.setWorkingDirectory(m_world->folder.path());
        shell.start(u"/bin/bash"_s,
                    {u"-c"_s, u"\"$0\" --database QUILLON.mdb list | head -n 1; echo ${PIPESTATUS[0]}"_s,
                     QStringLiteral(QUILLON_CLI)});
        QCOMPARE(CliWorld::answerOf(shell), answer(0, u"M-991231-001  定義  水\n0\n"_s));
    }

    void aFolderIsNoText()
    {
        QProcess shell;
        shell.setProcessEnvironment(m_world->environment());
        shell.setWorkingDirectory(m_world->folder.path());
        shell.start(u"/bin/bash"_s, {u"-c"_s, u"\"$0\" --database QUILLON.mdb add document 本 - < ."_s,
                                     QStringLiteral(QUILLON_CLI)});
        QCOMPARE(CliWorld::answerOf(shell),
                 answer(4, {}, u"quillon-cli: 標準入力を読み込めませんでした。\n"_s));
    }

    void anInterruptionBetweenTwoWritesTellsWhatWasDone()
    {
        QProcess program;
        m_world->start(program, {u"add"_s, u"document"_s, u"本"_s, u"-"_s});
        QVERIFY(program.waitForStarted());
        program.write("始まり");
        QVERIFY(program.waitForBytesWritten());
        // The signals are taken before anything is read; until then there is nothing to be interrupted.
        QTRY_VERIFY(takesInterruptions(program.processId()));
        ::kill(static_cast<pid_t>(program.processId()), SIGINT);
        const Answered answered = CliWorld::answerOf(program);
        QCOMPARE(answered, answer(5, {}, u"quillon-cli: 中断しました。\n"_s));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsRefDoc).size(), 1);
    }

private:
    /// Whether a process has a handler of its own for SIGINT.
    static bool takesInterruptions(qint64 process)
    {
        QFile status(u"/proc/%1/status"_s.arg(process));
        if (!status.open(QIODevice::ReadOnly))
            return false;
        for (const QByteArray& line : status.readAll().split('\n')) {
            if (line.startsWith("SigCgt:"))
                return (line.mid(7).trimmed().toULongLong(nullptr, 16) >> (SIGINT - 1) & 1U) != 0;
        }
        return false;
    }
#endif

private:
    std::unique_ptr<CliWorld> m_world;
};

QTEST_GUILESS_MAIN(TestCliFailures)
#include "test_cli_failures.moc"

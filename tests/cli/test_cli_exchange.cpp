#include "tests/cli/cli_world.h"
#include "tests/old_files/old_file_writer.h"

#include "store/record_set.h"

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

QString reportOf(qint64 added, qint64 skipped, qint64 renamed, qint64 linked, qint64 filed, qint64 categories)
{
    const auto number = [](qint64 count) { return QString::number(count).rightJustified(9) + u'\n'; };
    return u"追加したデータ      "_s + number(added) + u"既にあるデータ      "_s + number(skipped) +
           u"識別符号の変更      "_s + number(renamed) + u"追加したリンク      "_s + number(linked) +
           u"追加した分類        "_s + number(filed) + u"追加したカテゴリ    "_s + number(categories);
}

} // namespace

/// What comes in and goes out, run as a shell does.
class TestCliExchange : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_world = std::make_unique<CliWorld>();
        m_world->fillDatabase();
        QVERIFY(QDir(m_world->folder.path()).mkdir(u"RefFile"_s));
        QVERIFY(m_world->write(u"RefFile/水.txt"_s, "water"));
    }

    void anArchiveGoesOutAndComesIn()
    {
        QCOMPARE(m_world->run({u"export"_s, u"archive"_s, u"書庫"_s}),
                 answer(0, u"書き出したデータ            4\n作成したファイル            9\n"_s));
        const QString before = m_world->run({u"list"_s, u"--json"_s}).output;
        QVERIFY(QDir(m_world->folder.path()).mkdir(u"別の所"_s));
        m_world->database = u"別の所/新しい.mdb"_s;
        const QStringList import{u"--home"_s, u"別の所"_s, u"import"_s, u"archive"_s, u"書庫"_s};
        const QString whole = reportOf(4, 0, 0, 1, 2, 3);
        QCOMPARE(m_world->run(import + QStringList{u"--dry-run"_s}),
                 answer(0, whole, u"--dry-run のため、何も書き込んでいません。\n"_s));
        QVERIFY(!QFile::exists(m_world->path(u"別の所/新しい.mdb"_s)));
        QCOMPARE(m_world->run(import), answer(0, whole));
        QCOMPARE(m_world->run({u"list"_s, u"--json"_s}).output, before);
        QVERIFY(QFile::exists(m_world->path(u"別の所/RefFile/水.txt"_s)));
        // Once more there is nothing to do.
        QCOMPARE(m_world->run(import + QStringList{u"--json"_s}),
                 answer(1,
                        u"{\"added\":0,\"skipped\":4,\"renamed\":0,\"linked\":0,\"filed\":0,\"categories\":0,"
                        u"\"notes\":[]}\n"_s));
    }

    void whatStandsThereIsNotReplaced()
    {
        QVERIFY(QDir(m_world->folder.path()).mkdir(u"書庫"_s));
        const Answered answered = m_world->run({u"export"_s, u"archive"_s, u"書庫"_s});
        QCOMPARE(answered.status, 4);
        QVERIFY(answered.errors.startsWith(u"quillon-cli: "_s));
        QVERIFY(QDir(m_world->path(u"書庫"_s)).isEmpty());
    }

    void whatIsNoArchiveLeavesNothingBehind()
    {
        m_world->database = u"新しい.mdb"_s;
        const Answered answered = m_world->run({u"import"_s, u"archive"_s, u"RefFile"_s});
        QCOMPARE(answered.status, 4);
        QCOMPARE(answered.output, QString());
        QVERIFY(answered.errors.startsWith(u"quillon-cli: "_s));
        QVERIFY(!QFile::exists(m_world->path(u"新しい.mdb"_s)));
    }

    void aSourceThatIsNotThereIsToldAlike_data()
    {
        QTest::addColumn<QString>("format");
        for (const char* const format : {"archive", "csv", "text", "markdown", "old"})
            QTest::newRow(format) << QString::fromLatin1(format);
    }

    void aSourceThatIsNotThereIsToldAlike()
    {
        QFETCH(QString, format);
        m_world->database = u"新しい.mdb"_s;
        for (const QString& source : {u"ない"_s, u"ない所/ない"_s}) {
            QCOMPARE(m_world->run({u"import"_s, format, source}),
                     answer(1, {},
                            u"quillon-cli: 「"_s + m_world->path(source) +
                                u"」が見つかりません。場所と名前を確認してください。\n"_s));
            QVERIFY(!QFile::exists(m_world->path(u"新しい.mdb"_s)));
        }
    }

    void whatBringsNothingMakesNoDatabase()
    {
        QVERIFY(QDir(m_world->folder.path()).mkdir(u"空"_s));
        QVERIFY(m_world->write(u"空.csv"_s, u"名称\n"_s.toUtf8()));
        QVERIFY(m_world->write(u"空/読めない.txt"_s, QByteArray("\xFF\0\xFF", 3)));
        m_world->database = u"新しい.mdb"_s;
        for (const QStringList& import :
             {QStringList{u"markdown"_s, u"空"_s}, QStringList{u"text"_s, u"空"_s},
              QStringList{u"csv"_s, u"空.csv"_s}}) {
            QCOMPARE(m_world->run(QStringList{u"import"_s} + import).status, 1);
            QVERIFY(!QFile::exists(m_world->path(u"新しい.mdb"_s)));
        }
    }

#ifdef Q_OS_LINUX
    void aFullDiskTakesNoExportAndIsNoTroubleOfTheDatabase_data()
    {
        QTest::addColumn<QString>("format");
        for (const char* const format : {"archive", "csv", "markdown", "html", "picture"})
            QTest::newRow(format) << QString::fromLatin1(format);
    }

    void aFullDiskTakesNoExportAndIsNoTroubleOfTheDatabase()
    {
        QFETCH(QString, format);
        QVERIFY(QDir(m_world->folder.path()).mkdir(u"小さい"_s));
        for (int i = 2; i < 40; ++i)
            TestWorld::addRow(
                m_world->session.RsRefDoc,
                {u"本%1"_s.arg(i), u"R-991231-%1"_s.arg(i, 3, 10, QChar(u'0')), QString(3000, u'字')});
        for (int i = 2; i < 40; ++i)
            TestWorld::addRow(m_world->session.RsLink,
                              {u"M-991231-001"_s, u"R-991231-%1"_s.arg(i, 3, 10, QChar(u'0'))});
        // A disk of its own for one command, as every user may have it, but for those whom the system forbids it.
        const auto onSmallDisk = [&](const QString& command) {
            QProcess shell;
            shell.setProcessEnvironment(m_world->environment());
            shell.setWorkingDirectory(m_world->folder.path());
            shell.start(u"unshare"_s, {u"--user"_s, u"--map-root-user"_s, u"--mount"_s, u"/bin/sh"_s, u"-c"_s,
                                       u"mount -t tmpfs -o size=8k none 小さい && "_s + command,
                                       QStringLiteral(QUILLON_CLI), format});
            return CliWorld::answerOf(shell);
        };
        if (onSmallDisk(u":"_s).status != 0)
            QSKIP("this system lets nobody mount a small disk");
        const Answered answered = onSmallDisk(
            u"{ \"$0\" --database QUILLON.mdb export \"$1\" 小さい/出力; status=$?; ls -A 小さい; exit $status; }"_s);
        QCOMPARE(answered.status, 4);
        QCOMPARE(answered.output, QString());
        QVERIFY2(answered.errors.startsWith(u"quillon-cli: "_s) && answered.errors.count(u'\n') == 1,
                 qPrintable(answered.errors));
    }
#endif

    void whatIsToBeKnownStandsInTheReport()
    {
        QVERIFY(m_world->write(u"RefFile/山.txt"_s, "mountain"));
        const QString file = m_world->path(u"RefFile/山.txt"_s);
        const QString inJson = QString(file).replace(u'\\', u"\\\\"_s);
        const QString text = u"このファイルを登録したファイルデータはありません。"_s;
        QCOMPARE(m_world->run({u"export"_s, u"archive"_s, u"書庫"_s}),
                 answer(0, u"書き出したデータ            4\n作成したファイル           10\n"_s + file +
                               u": "_s + text + u'\n'));
        QCOMPARE(m_world->run({u"export"_s, u"archive"_s, u"書庫2"_s, u"--json"_s}),
                 answer(0, u"{\"written\":4,\"files\":10,\"notes\":[{\"where\":\""_s + inJson +
                               u"\",\"text\":\""_s + text + u"\"}]}\n"_s));
    }

    void anOldFileComesIn()
    {
        auto tables = oldTables();
        tables[0].rows = {{u"水"_s, u"M-991231-001"_s, u"液体"_s}, {u"火"_s, u"M-991231-002"_s, u"熱い"_s}};
        tables[4].rows = {{u"M-991231-002"_s, u"M-991231-001"_s}};
        tables[5].rows = {{u"A"_s, u"自然"_s}};
        tables[6].rows = {{u"A"_s, u"M-991231-001"_s}};
        QVERIFY(m_world->write(u"古い.mdb"_s, writeOldFile(tables).bytes));
        m_world->database = u"新しい.mdb"_s;
        QCOMPARE(m_world->run({u"import"_s, u"old"_s, u"古い.mdb"_s}), answer(0, reportOf(2, 0, 0, 1, 1, 1)));
        QCOMPARE(
            m_world->run({u"show"_s, u"M-991231-001"_s, u"--json"_s}).output,
            u"{\"identifier\":\"M-991231-001\",\"kind\":\"definition\",\"name\":\"水\",\"text\":\"液体\","
            u"\"categories\":[\"A\"],\"links\":[\"M-991231-002\"]}\n"_s);
        QVERIFY(m_world->write(u"違う.mdb"_s, QByteArray(9000, 'x')));
        QCOMPARE(m_world->run({u"import"_s, u"old"_s, u"違う.mdb"_s}).status, 4);
    }

    void whatIsLostOfADamagedOldFileIsNoSuccess()
    {
        auto tables = oldTables();
        tables[0].rows = {{u"水"_s, u"M-991231-001"_s, u"液体"_s}};
        QByteArray bytes = writeOldFile(tables).bytes;
        bytes[5 * 4096 - 1] = 3; // the only row says that it has no text
        QVERIFY(m_world->write(u"古い.mdb"_s, bytes));
        m_world->database = u"新しい.mdb"_s;
        QCOMPARE(m_world->run({u"import"_s, u"old"_s, u"古い.mdb"_s}),
                 answer(5,
                        reportOf(1, 0, 0, 0, 0, 0) +
                            u"定義データ M-991231-001「水」の内容: 項目が壊れていて、読み取れません。\n"_s,
                        u"元のファイルに読み取れないところがあります。\n"_s));
    }

    void aFolderOfNotesComesInAndGoesOut()
    {
        QVERIFY(QDir(m_world->folder.path()).mkpath(u"覚え書き/地形"_s));
        QVERIFY(m_world->write(u"覚え書き/山.md"_s, u"高い。[[川]] がある。\n"_s.toUtf8()));
        QVERIFY(m_world->write(u"覚え書き/川.md"_s, u"流れる。\n"_s.toUtf8()));
        QVERIFY(m_world->write(u"覚え書き/地形/谷.txt"_s, u"低い。\n"_s.toUtf8()));
        m_world->database = u"新しい.mdb"_s;
        const Answered notes = m_world->run({u"import"_s, u"markdown"_s, u"覚え書き"_s});
        QCOMPARE(notes.status, 0);
        QVERIFY2(notes.output.startsWith(reportOf(2, 0, 0, 1, 0, 0)), qPrintable(notes.output));
        const Answered texts = m_world->run({u"import"_s, u"text"_s, u"覚え書き/地形"_s});
        QCOMPARE(texts.status, 0);
        QVERIFY2(texts.output.startsWith(u"追加したデータ              1\n"_s), qPrintable(texts.output));
        const Answered out = m_world->run({u"export"_s, u"markdown"_s, u"出力"_s});
        QCOMPARE(out.status, 0);
        QVERIFY2(out.output.startsWith(u"書き出したデータ            3\n"_s), qPrintable(out.output));
        QVERIFY(QDir(m_world->path(u"出力"_s)).exists());
    }

    void aTableComesInAndGoesOut()
    {
        QVERIFY(m_world->write(
            u"表.csv"_s, u"名称,定義,分類,リンク\n山,\"高い\n所\",地形,谷\n谷,低い所,地形,\n"_s.toUtf8()));
        m_world->database = u"新しい.mdb"_s;
        QCOMPARE(m_world->run({u"import"_s, u"csv"_s, u"表.csv"_s}).status, 0);
        QCOMPARE(m_world->runToday({u"list"_s}),
                 answer(0, u"M-TODAY-001  定義  山\nM-TODAY-002  定義  谷\n"_s));
        QCOMPARE(m_world->run({u"links"_s}).output.count(u'\n'), 1);
        QCOMPARE(m_world->run({u"categories"_s}), answer(0, u"A      2  地形\n"_s));
        QCOMPARE(m_world->run({u"export"_s, u"csv"_s, u"出力.csv"_s}).status, 0);
        QFile written(m_world->path(u"出力.csv"_s));
        QVERIFY(written.open(QIODevice::ReadOnly));
        QVERIFY(QString::fromUtf8(written.readAll()).contains(u"高い\n所"_s));
        QCOMPARE(m_world->run({u"export"_s, u"csv"_s, u"出力.csv"_s}).status, 4);
    }

    void aBadLineOfALongTableIsToldByItsNumber()
    {
        QByteArray table = u"名称,定義\n"_s.toUtf8();
        for (int i = 2; i < 50'000; ++i)
            table += "n,t\n";
        table += "n,\"t\n";
        QVERIFY(m_world->write(u"表.csv"_s, table));
        const Answered answered = m_world->run({u"import"_s, u"csv"_s, u"表.csv"_s});
        QCOMPARE(answered.status, 4);
        QVERIFY2(answered.errors.contains(u"50000"_s), qPrintable(answered.errors));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain).size(), 2);
    }

    void aBookGoesOut()
    {
        QCOMPARE(m_world->run({u"export"_s, u"html"_s, u"本"_s}).status, 0);
        QVERIFY(QFile::exists(m_world->path(u"本/index.html"_s)));
        QVERIFY(QFile::exists(m_world->path(u"本/data/M-991231-001.html"_s)));
        QVERIFY(QFile::exists(m_world->path(u"本/RefFile/水.txt"_s)));
    }

    void picturesGoOut()
    {
        QCOMPARE(
            m_world->run({u"export"_s, u"picture"_s, u"図.svg"_s, u"--item"_s, u"M-991231-001"_s}).status, 0);
        QFile picture(m_world->path(u"図.svg"_s));
        QVERIFY(picture.open(QIODevice::ReadOnly));
        QVERIFY(picture.readAll().startsWith("<svg "));
        QCOMPARE(m_world->run({u"export"_s, u"picture"_s, u"図"_s}).status, 0);
        QCOMPARE(QDir(m_world->path(u"図"_s)).entryList(QDir::Files).size(), 2);
        QCOMPARE(
            m_world->run({u"export"_s, u"picture"_s, u"無.svg"_s, u"--item"_s, u"M-000101-001"_s}).status, 1);
        QVERIFY(!QFile::exists(m_world->path(u"無.svg"_s)));
        const Answered wrong =
            m_world->run({u"export"_s, u"html"_s, u"本"_s, u"--item"_s, u"M-991231-001"_s});
        QCOMPARE(wrong.status, 2);
        QVERIFY2(wrong.errors.startsWith(u"quillon-cli: --item は picture と一緒に指定します。\n"),
                 qPrintable(wrong.errors));
    }

    void longTextsAreRefusedOrSplit()
    {
        QVERIFY(QDir(m_world->folder.path()).mkdir(u"長編"_s));
        QVERIFY(m_world->write(u"長編/長い.txt"_s, u"長い行です。\n"_s.repeated(9000).toUtf8()));
        QCOMPARE(m_world->run({u"import"_s, u"text"_s, u"長編"_s}).status, 4);
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsRefDoc).size(), 1);
        QCOMPARE(m_world->run({u"import"_s, u"text"_s, u"長編"_s, u"--split"_s}).status, 0);
        QVERIFY(TestWorld::rowsOf(m_world->session.RsRefDoc).size() > 2);
    }

private:
    std::unique_ptr<CliWorld> m_world;
};

QTEST_GUILESS_MAIN(TestCliExchange)
#include "test_cli_exchange.moc"

#include "tests/cli/cli_world.h"

#include "app/base/titles.h"
#include "store/data_kinds.h"
#include "store/record_set.h"

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// The verbs for items, run as a shell does.
class TestCliItems : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_world = std::make_unique<CliWorld>();
        m_world->fillDatabase();
    }

    void createMakesADatabaseOnce()
    {
        m_world->database = u"新しい.mdb"_s;
        QCOMPARE(m_world->run({u"create"_s}), answer(0, {}, u"Quillon 用のデータベースを作成しました。\n"_s));
        QCOMPARE(
            m_world->run({u"create"_s}),
            answer(4, {},
                   u"quillon-cli: 同じ名前のファイルが既に存在します。別の名前を指定してください。\n"_s));
        QCOMPARE(m_world->run({u"list"_s}), answer(1, {}, u"quillon-cli: 該当するデータはありません。\n"_s));
    }

    void addPrintsTheIdentifier()
    {
        QCOMPARE(m_world->runToday({u"add"_s, u"definition"_s, u"土"_s, u"--text"_s, u"大地"_s}),
                 answer(0, u"M-TODAY-001\n"_s));
        QCOMPARE(m_world->runToday({u"add"_s, u"document"_s, u"土の本"_s, u"--text=大地の話"_s, u"--json"_s}),
                 answer(0, u"{\"identifier\":\"R-TODAY-001\"}\n"_s));
        QCOMPARE(m_world->runToday({u"add"_s, u"definition"_s, u"風"_s, u"-"_s}, "吹く\n"),
                 answer(0, u"M-TODAY-002\n"_s));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain).last().section(u'|', 2), u"吹く\n"_s);
    }

    void addFilesInCategories()
    {
        QCOMPARE(m_world->runToday({u"add"_s, u"definition"_s, u"土"_s, u"--text"_s, u"大地"_s,
                                    u"--category"_s, u"A"_s, u"--category"_s, u"B"_s}),
                 answer(0, u"M-TODAY-001\n"_s));
        QCOMPARE(m_world->runToday({u"list"_s, u"--category"_s, u"B"_s}),
                 answer(0, u"M-TODAY-001  定義  土\n"_s));
        QCOMPARE(m_world->run(
                     {u"add"_s, u"definition"_s, u"石"_s, u"--text"_s, u"固い"_s, u"--category"_s, u"X"_s}),
                 answer(1, {}, u"quillon-cli: カテゴリ X は見つかりませんでした。\n"_s));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain).size(), 3);
    }

    void addReadsFilesAsTheProgramDoes_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("UTF-8") << u"漢字とかな"_s.toUtf8();
        QTest::newRow("UTF-8 with a mark") << "\xEF\xBB\xBF" + u"漢字とかな"_s.toUtf8();
        QTest::newRow("code page 932") << QByteArray("\x8A\xBF\x8E\x9A\x82\xC6\x82\xA9\x82\xC8");
        QTest::newRow("UTF-16 with a mark")
            << QByteArray("\xFF\xFE\x22\x6F\x57\x5B\x68\x30\x4B\x30\x6A\x30", 12);
    }

    void addReadsFilesAsTheProgramDoes()
    {
        QFETCH(QByteArray, bytes);
        QVERIFY(m_world->write(u"text.txt"_s, bytes));
        QCOMPARE(m_world->runToday({u"add"_s, u"document"_s, u"本"_s, u"--file"_s, u"text.txt"_s}),
                 answer(0, u"R-TODAY-001\n"_s));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsRefDoc).last().section(u'|', 2), u"漢字とかな"_s);
        QCOMPARE(m_world->runToday({u"add"_s, u"document"_s, u"本"_s, u"-"_s}, bytes),
                 answer(0, u"R-TODAY-002\n"_s));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsRefDoc).last().section(u'|', 2), u"漢字とかな"_s);
    }

    void namesStandOnOneLine()
    {
        QCOMPARE(m_world->runToday({u"add"_s, u"definition"_s, u"一\r\n二\t三"_s, u"--text"_s, u"数"_s}),
                 answer(0, u"M-TODAY-001\n"_s));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain).last().section(u'|', 0, 0), u"一 二 三"_s);
    }

    void oddCharactersComeBackAsTheyWere()
    {
        const QString name = u"𠮷'\"\\%*?[日]\u202Eｶﾞ"_s;
        const QString text = u"\u3000\u0301 ＜>&;'--\u2028\U0001F600"_s;
        QCOMPARE(m_world->runToday({u"add"_s, u"definition"_s, name, u"--text"_s, text}),
                 answer(0, u"M-TODAY-001\n"_s));
        const Answered listed = m_world->run({u"list"_s, u"--json"_s, u"--kind"_s, u"definition"_s});
        const auto last = QJsonDocument::fromJson(listed.output.toUtf8().trimmed().split('\n').last());
        QCOMPARE(last[u"name"_s].toString(), name);
        QCOMPARE(last[u"text"_s].toString(), text);
    }

    void theRulesOfTheWindowsHold_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QString>("complaint");
        const QStringList definition{u"add"_s, u"definition"_s};
        QTest::newRow("no name") << definition + QStringList{QString(), u"--text"_s, u"数"_s}
                                 << u"必須項目が入力されていません。\n"_s;
        QTest::newRow("no text") << definition + QStringList{u"数"_s, u"--text"_s, QString()}
                                 << u"必須項目が入力されていません。\n"_s;
    }

    void theRulesOfTheWindowsHold()
    {
        QFETCH(QStringList, words);
        QFETCH(QString, complaint);
        QCOMPARE(m_world->run(words), answer(4, {}, complaint));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain).size(), 2);
    }

    void widthsAreThoseOfTheWindows()
    {
        const auto add = [&](const QString& name, const QString& text) {
            return m_world->run({u"add"_s, u"definition"_s, name, u"--text"_s, text}).status;
        };
        QCOMPARE(add(QString(24, u'水'), u"数"_s), 0);
        QCOMPARE(add(QString(25, u'水'), u"数"_s), 4);
        QCOMPARE(add(u"水"_s, QString(126, u'水')), 0);
        QCOMPARE(add(u"水"_s, QString(127, u'水')), 4);
    }

    void aTextThatIsTooLongIsRefusedWithASentence()
    {
        const QByteArray hundredMegabytes(100'000'000, 'a');
        QVERIFY(m_world->write(u"long.txt"_s, hundredMegabytes));
        const QString ofDocument =
            u"quillon-cli: ファイルが大きすぎて読み込めません。"
            u"文献の内容に読み込めるのは全角で32,768文字までです。ファイルを分割してください。\n"_s;
        QCOMPARE(m_world->run({u"add"_s, u"document"_s, u"本"_s, u"--file"_s, u"long.txt"_s}),
                 answer(4, {}, ofDocument));
        QCOMPARE(m_world->run({u"add"_s, u"document"_s, u"本"_s, u"-"_s}, hundredMegabytes),
                 answer(4, {}, ofDocument));
        QCOMPARE(m_world->run({u"add"_s, u"definition"_s, u"語"_s, u"--file"_s, u"long.txt"_s}),
                 answer(4, {},
                        u"quillon-cli: ファイルが大きすぎて読み込めません。"
                        u"定義に登録できるのは全角で127文字未満です。文献として登録してください。\n"_s));
    }

    void aDayHasAnEnd()
    {
        const QString today = m_world->run({u"add"_s, u"definition"_s, u"一"_s, u"--text"_s, u"数"_s})
                                  .output.section(u'-', 0, 1);
        m_world->session.OpenDb->execute(
            u"WITH RECURSIVE n(i) AS (SELECT 2 UNION ALL SELECT i + 1 FROM n WHERE i < 999) INSERT INTO Main "
            u"SELECT 'n', printf('%s-%03d', '%1', i), 't' FROM n"_s.replace(u"%1"_s, today));
        QCOMPARE(m_world->run({u"add"_s, u"definition"_s, u"千"_s, u"--text"_s, u"数"_s}),
                 answer(4, {},
                        u"quillon-cli: 今日の識別符号は使い切られています。"
                        u"登録できるのは一日に999件までです。\n"_s));
    }

    void attachRegistersAFile()
    {
        QVERIFY(QDir(m_world->folder.path()).mkdir(u"RefFile"_s));
        QVERIFY(m_world->write(u"山.txt"_s, "mountain"));
        QCOMPARE(m_world->runToday({u"attach"_s, u"山.txt"_s, u"--category"_s, u"B"_s}),
                 answer(0, u"F-TODAY-001\n"_s));
        QFile copy(m_world->path(u"RefFile/山.txt"_s));
        QVERIFY(copy.open(QIODevice::ReadOnly));
        QCOMPARE(copy.readAll(), QByteArray("mountain"));
        QCOMPARE(m_world->runToday({u"list"_s, u"--category"_s, u"B"_s}),
                 answer(0, u"F-TODAY-001  FILE  山.txt\n"_s));
        QCOMPARE(m_world->run({u"attach"_s, u"谷.txt"_s}),
                 answer(1, {}, u"quillon-cli: 指定されたファイルが見つかりません。\n"_s));
    }

    void attachTakesTheFolderThatIsNamed()
    {
        QVERIFY(QDir(m_world->folder.path()).mkpath(u"別の所/RefFile"_s));
        QVERIFY(m_world->write(u"山.txt"_s, "mountain"));
        QCOMPARE(m_world->run({u"attach"_s, u"山.txt"_s}),
                 answer(4, {}, u"quillon-cli: "_s + titles::FileFolderMissing + u'\n'));
        QCOMPARE(m_world->runToday({u"--home"_s, u"別の所"_s, u"attach"_s, u"山.txt"_s}),
                 answer(0, u"F-TODAY-001\n"_s));
        QVERIFY(QFile::exists(m_world->path(u"別の所/RefFile/山.txt"_s)));
        QCOMPARE(m_world->run({u"attach"_s, u"山.txt"_s, u"--category"_s, u"A"_s, u"--category"_s, u"B"_s}),
                 answer(2, {},
                        u"quillon-cli: ファイルを登録するカテゴリは一つだけ指定できます。\n"
                        u"使い方: quillon-cli [--database FILE] [--home FOLDER] attach PATH [--category ID]\n"
                        u"使い方は quillon-cli attach --help で表示されます。\n"_s));
    }

    void showTellsAllOfAnItem()
    {
        QCOMPARE(m_world->run({u"show"_s, u"M-991231-001"_s}), answer(0, u"識別符号  M-991231-001\n"
                                                                         u"種別      定義\n"
                                                                         u"名称      水\n"
                                                                         u"分類      A  自然\n"
                                                                         u"リンク    R-991231-001  水の本\n"
                                                                         u"\n"
                                                                         u"無色透明の液体\n"_s));
        QCOMPARE(
            m_world->run({u"show"_s, u"R-991231-001"_s, u"--json"_s}),
            answer(
                0,
                u"{\"identifier\":\"R-991231-001\",\"kind\":\"document\",\"name\":\"水の本\","
                u"\"text\":\"一行目\\n二行目\",\"categories\":[\"A-A\"],\"links\":[\"M-991231-001\"]}\n"_s));
        QCOMPARE(m_world->run({u"show"_s, u"F-991231-001"_s}),
                 answer(0, u"識別符号  F-991231-001\n種別      FILE\n名称      水.txt\n\n未入力\n"_s));
    }

    void whatIsNotThereIsToldByItsIdentifier_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::newRow("free") << u"M-991231-009"_s;
        QTest::newRow("unknown kind") << u"X-991231-001"_s;
        QTest::newRow("nothing") << QString();
    }

    void whatIsNotThereIsToldByItsIdentifier()
    {
        QFETCH(QString, identifier);
        const Answered missing =
            answer(1, {}, u"quillon-cli: データ "_s + identifier + u" は見つかりませんでした。\n"_s);
        QCOMPARE(m_world->run({u"show"_s, identifier}), missing);
        QCOMPARE(m_world->run({u"set"_s, identifier, u"--name"_s, u"名"_s}), missing);
        QCOMPARE(m_world->run({u"delete"_s, identifier, u"--yes"_s}), missing);
        QCOMPARE(m_world->run({u"link"_s, identifier, u"M-991231-001"_s}), missing);
        QCOMPARE(m_world->run({u"links"_s, identifier}), missing);
        QCOMPARE(m_world->run({u"classify"_s, identifier, u"A"_s}), missing);
        QCOMPARE(m_world->run({u"open"_s, identifier}), missing);
    }

    void setChangesNameAndText()
    {
        QCOMPARE(m_world->run({u"set"_s, u"M-991231-001"_s, u"--name"_s, u"真水"_s}), answer(0, {}));
        QCOMPARE(m_world->run({u"set"_s, u"M-991231-001"_s, u"-"_s}, "塩気のない水"), answer(0, {}));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain).first(), u"真水|M-991231-001|塩気のない水"_s);
        QCOMPARE(m_world->run({u"set"_s, u"M-991231-001"_s, u"--name"_s, u"真水"_s}),
                 answer(1, {}, u"quillon-cli: 変更するところはありません。\n"_s));
        QCOMPARE(m_world->run({u"set"_s, u"M-991231-001"_s, u"--name"_s, QString()}),
                 answer(4, {}, u"必須項目が入力されていません。\n"_s));
        QCOMPARE(m_world->run({u"set"_s, u"F-991231-001"_s, u"--name"_s, u"名"_s}),
                 answer(4, {}, u"quillon-cli: ファイルデータの名称と内容は変更できません。\n"_s));
        QCOMPARE(m_world->run({u"set"_s, u"M-991231-001"_s}),
                 answer(2, {},
                        u"quillon-cli: --name、--text、--file、- のいずれかを指定してください。\n"
                        u"使い方: quillon-cli [--database FILE] [--home FOLDER] set "
                        u"ID [--name NAME] [--text TEXT | --file PATH | -]\n"
                        u"使い方は quillon-cli set --help で表示されます。\n"_s));
    }

    void oneTextIsEnough()
    {
        const QString usage =
            u"使い方: quillon-cli [--database FILE] [--home FOLDER] add definition|document NAME "
            u"(--text TEXT | --file PATH | -) [--category ID]…\n"
            u"使い方は quillon-cli add --help で表示されます。\n"_s;
        QCOMPARE(m_world->run({u"add"_s, u"definition"_s, u"名"_s}),
                 answer(2, {},
                        u"quillon-cli: 内容を --text、--file、- のいずれかで指定してください。\n"_s + usage));
        QCOMPARE(
            m_world->run({u"add"_s, u"definition"_s, u"名"_s, u"--text"_s, u"文"_s, u"-"_s}),
            answer(2, {},
                   u"quillon-cli: 内容は --text、--file、- のうち一つだけで指定してください。\n"_s + usage));
    }

    void deleteNeedsAYes()
    {
        QCOMPARE(m_world->run({u"delete"_s, u"M-991231-001"_s}),
                 answer(4, {}, u"<水> を削除しますか。\n実行するには --yes を指定してください。\n"_s));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain).size(), 2);
        QCOMPARE(m_world->run({u"delete"_s, u"M-991231-001"_s, u"--yes"_s}),
                 answer(0, {}, u"< 水 >を削除しました。\n"_s));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsMain), QStringList{u"火|M-991231-002|燃える"_s});
        QVERIFY(TestWorld::rowsOf(m_world->session.RsLink).isEmpty());
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsCategory), QStringList{u"A-A|R-991231-001"_s});
    }

    void deletingSomeOfSeveralTellsHowMany()
    {
        QCOMPARE(
            m_world->run({u"delete"_s, u"M-991231-001"_s, u"M-991231-009"_s, u"M-991231-002"_s, u"--yes"_s}),
            answer(5, {},
                   u"< 水 >を削除しました。\n"
                   u"quillon-cli: データ M-991231-009 は見つかりませんでした。\n"
                   u"< 火 >を削除しました。\n"
                   u"quillon-cli: 3 件中 2 件を削除しました。\n"_s));
        QVERIFY(TestWorld::rowsOf(m_world->session.RsMain).isEmpty());
    }

    void openOpensFilesOnly()
    {
        QCOMPARE(m_world->run({u"open"_s, u"M-991231-001"_s}),
                 answer(4, {}, u"quillon-cli: ファイルデータではありません。show で表示できます。\n"_s));
        QCOMPARE(m_world->run({u"open"_s, u"F-991231-001"_s}),
                 answer(1, {}, titles::FileFolderMissing + u'\n'));
        QVERIFY(QDir(m_world->folder.path()).mkdir(u"RefFile"_s));
        QCOMPARE(m_world->run({u"open"_s, u"F-991231-001"_s}),
                 answer(1, {}, u"指定されたファイルデータが見つかりませんでした。\n"_s));
        QVERIFY(m_world->write(u"RefFile/水.txt"_s, "water"));
        m_world->variables = {{u"XDG_DATA_DIRS"_s, m_world->path(u"nowhere"_s)},
                              {u"XDG_DATA_HOME"_s, m_world->path(u"nowhere"_s)},
                              {u"XDG_CONFIG_HOME"_s, m_world->path(u"nowhere"_s)},
                              {u"XDG_CONFIG_DIRS"_s, m_world->path(u"nowhere"_s)}};
        QCOMPARE(m_world->run({u"open"_s, u"F-991231-001"_s}),
                 answer(4, {}, u"指定されたファイルはアプリに関連付けられていません。\n"_s));
    }

#ifdef Q_OS_LINUX
    void openStartsTheApplicationOfTheFile()
    {
        QVERIFY(QDir(m_world->folder.path()).mkpath(u"RefFile"_s));
        QVERIFY(QDir(m_world->folder.path()).mkpath(u"share/applications"_s));
        QVERIFY(QDir(m_world->folder.path()).mkpath(u"config"_s));
        QVERIFY(m_world->write(u"RefFile/水.txt"_s, "water"));
        QVERIFY(m_world->write(u"application.sh"_s,
                               "printf '%s' \"$1\" >\"$2.part\" && mv \"$2.part\" \"$2\"\n"));
        QVERIFY(m_world->write(
            u"share/applications/reader.desktop"_s,
            u"[Desktop Entry]\nType=Application\nName=Reader\nMimeType=text/plain;\n"
            u"Exec=/bin/sh %1 %f %2\n"_s.arg(m_world->path(u"application.sh"_s), m_world->path(u"opened"_s))
                .toUtf8()));
        QVERIFY(
            m_world->write(u"config/mimeapps.list"_s, "[Default Applications]\ntext/plain=reader.desktop\n"));
        m_world->variables = {{u"XDG_DATA_HOME"_s, m_world->path(u"share"_s)},
                              {u"XDG_CONFIG_HOME"_s, m_world->path(u"config"_s)},
                              {u"XDG_CONFIG_DIRS"_s, m_world->path(u"nowhere"_s)}};
        QCOMPARE(m_world->run({u"open"_s, u"F-991231-001"_s}), answer(0, {}));
        // The application is a program of its own and takes its time.
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(m_world->path(u"opened"_s)), 30'000);
        QFile opened(m_world->path(u"opened"_s));
        QVERIFY(opened.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(opened.readAll()), m_world->path(u"RefFile/水.txt"_s));
    }
#endif

private:
    std::unique_ptr<CliWorld> m_world;
};

QTEST_GUILESS_MAIN(TestCliItems)
#include "test_cli_items.moc"

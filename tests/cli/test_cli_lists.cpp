#include "tests/cli/cli_world.h"

#include "store/record_set.h"

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const QString Water = u"M-991231-001  定義  水\n"_s;
const QString Fire = u"M-991231-002  定義  火\n"_s;
const QString Book = u"R-991231-001  文献  水の本\n"_s;
const QString File = u"F-991231-001  FILE  水.txt\n"_s;

} // namespace

/// The verbs that list items, run as a shell does.
class TestCliLists : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_world = std::make_unique<CliWorld>();
        m_world->fillDatabase();
    }

    void listTellsWhatIsAskedFor_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QString>("output");
        QTest::newRow("all") << QStringList{} << Water + Fire + Book + File;
        QTest::newRow("a kind") << QStringList{u"--kind"_s, u"document"_s} << Book;
        QTest::newRow("two kinds") << QStringList{u"--kind=file"_s, u"--kind=document"_s} << Book + File;
        QTest::newRow("a category") << QStringList{u"--category"_s, u"A"_s} << Water;
        QTest::newRow("with those below")
            << QStringList{u"--category"_s, u"A"_s, u"--below"_s} << Water + Book;
        QTest::newRow("a kind of those")
            << QStringList{u"--category"_s, u"A"_s, u"--below"_s, u"--kind=document"_s} << Book;
        QTest::newRow("uncategorised") << QStringList{u"--uncategorised"_s} << Fire + File;
    }

    void listTellsWhatIsAskedFor()
    {
        QFETCH(QStringList, words);
        QFETCH(QString, output);
        QCOMPARE(m_world->run(QStringList{u"list"_s} + words), answer(0, output));
    }

    void anEmptyListIsToldOnTheErrorStream()
    {
        QCOMPARE(m_world->run({u"list"_s, u"--category"_s, u"B"_s}),
                 answer(1, {}, u"quillon-cli: 該当するデータはありません。\n"_s));
        QCOMPARE(m_world->run({u"list"_s, u"--category"_s, u"X"_s}),
                 answer(1, {}, u"quillon-cli: カテゴリ X は見つかりませんでした。\n"_s));
    }

    void contradictionsAreWrongUsage()
    {
        const QString usage = u"使い方: quillon-cli [--database FILE] [--home FOLDER] list "
                              u"[--kind KIND] [--category ID [--below] | --uncategorised]\n"
                              u"使い方は quillon-cli list --help で表示されます。\n"_s;
        QCOMPARE(m_world->run({u"list"_s, u"--category"_s, u"A"_s, u"--uncategorised"_s}),
                 answer(2, {},
                        u"quillon-cli: --category と --uncategorised は同時に指定できません。\n"_s + usage));
        QCOMPARE(m_world->run({u"list"_s, u"--below"_s}),
                 answer(2, {}, u"quillon-cli: --below は --category とともに指定します。\n"_s + usage));
    }

    void identifiersGoIntoPipes()
    {
        QCOMPARE(m_world->run({u"list"_s, u"--kind=definition"_s, u"--identifiers"_s}),
                 answer(0, u"M-991231-001\nM-991231-002\n"_s));
        const QString zero(1, QChar::Null);
        QCOMPARE(m_world->run({u"list"_s, u"--kind=definition"_s, u"-0"_s}),
                 answer(0, u"M-991231-001"_s + zero + u"M-991231-002"_s + zero));
    }

    void jsonTellsEachItemOnALine()
    {
        QCOMPARE(
            m_world->run({u"list"_s, u"--json"_s}),
            answer(0, u"{\"identifier\":\"M-991231-001\",\"kind\":\"definition\",\"name\":\"水\","
                      u"\"text\":\"無色透明の液体\",\"categories\":[\"A\"],\"links\":[\"R-991231-001\"]}\n"
                      u"{\"identifier\":\"M-991231-002\",\"kind\":\"definition\",\"name\":\"火\","
                      u"\"text\":\"燃える\",\"categories\":[],\"links\":[]}\n"
                      u"{\"identifier\":\"R-991231-001\",\"kind\":\"document\",\"name\":\"水の本\","
                      u"\"text\":\"一行目\\n二行目\",\"categories\":[\"A-A\"],\"links\":[\"M-991231-001\"]}\n"
                      u"{\"identifier\":\"F-991231-001\",\"kind\":\"file\",\"name\":\"水.txt\","
                      u"\"text\":\"未入力\",\"categories\":[],\"links\":[]}\n"_s));
    }

    void whatIsNullIsNullInJson_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::newRow("list") << QStringList{u"list"_s, u"--kind=file"_s};
        QTest::newRow("a category") << QStringList{u"list"_s, u"--category=B"_s};
        QTest::newRow("search") << QStringList{u"search"_s, u"湯"_s};
        QTest::newRow("show") << QStringList{u"show"_s, u"F-991231-002"_s};
    }

    void whatIsNullIsNullInJson()
    {
        QFETCH(QStringList, words);
        m_world->session.OpenDb->execute(u"DELETE FROM RefFile"_s);
        m_world->session.OpenDb->execute(
            u"INSERT INTO RefFile (Object_ID, Name) VALUES ('F-991231-002', '湯')"_s);
        TestWorld::addRow(m_world->session.RsCategory, {u"B"_s, u"F-991231-002"_s});
        QCOMPARE(m_world->run(words + QStringList{u"--json"_s}),
                 answer(0,
                        u"{\"identifier\":\"F-991231-002\",\"kind\":\"file\",\"name\":\"湯\",\"text\":null,"
                        u"\"categories\":[\"B\"],\"links\":[]}\n"_s));
        m_world->session.OpenDb->execute(u"UPDATE RefFile SET Name = NULL, Explanation = '湯'"_s);
        QCOMPARE(m_world->run(words + QStringList{u"--json"_s}),
                 answer(0,
                        u"{\"identifier\":\"F-991231-002\",\"kind\":\"file\",\"name\":null,\"text\":\"湯\","
                        u"\"categories\":[\"B\"],\"links\":[]}\n"_s));
    }

    void whatIsFoundIsToldAsItStandsInItsTable()
    {
        // Other programs have given a definition the identifier of a document, and another one none.
        m_world->session.OpenDb->execute(u"INSERT INTO Main VALUES ('湯', 'R-991231-001', '熱い水')"_s);
        m_world->session.OpenDb->execute(u"INSERT INTO Main VALUES ('湯気', NULL, '熱い')"_s);
        QCOMPARE(m_world->run({u"search"_s, u"熱い"_s, u"--json"_s}),
                 answer(0, u"{\"identifier\":\"R-991231-001\",\"kind\":\"definition\",\"name\":\"湯\","
                           u"\"text\":\"熱い水\",\"categories\":[\"A-A\"],\"links\":[\"M-991231-001\"]}\n"
                           u"{\"identifier\":\"\",\"kind\":\"definition\",\"name\":\"湯気\","
                           u"\"text\":\"熱い\",\"categories\":[],\"links\":[]}\n"_s));
    }

    void relationsStandInTheirOrder()
    {
        for (const char16_t* const pair :
             {u"M-991231-002|M-991231-001", u"F-991231-001|M-991231-002", u"M-991231-002|M-991231-002"})
            TestWorld::addRow(m_world->session.RsLink, QString::fromUtf16(pair).split(u'|'));
        const Answered listed = m_world->run({u"list"_s, u"--json"_s, u"--kind=definition"_s});
        const auto lines = listed.output.split(u'\n');
        QVERIFY(lines[0].endsWith(u"\"links\":[\"R-991231-001\",\"M-991231-002\"]}"_s));
        QVERIFY(lines[1].endsWith(u"\"links\":[\"M-991231-001\",\"F-991231-001\",\"M-991231-002\"]}"_s));
    }

    void aLongListIsWhole()
    {
        m_world->session.OpenDb->execute(
            u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 30000) INSERT INTO Main "
            u"SELECT 'n' || i, printf('M-%06d-%03d', i / 900, i % 900), 't' || i FROM n"_s);
        const Answered listed = m_world->run({u"list"_s, u"--json"_s, u"--kind=definition"_s});
        QCOMPARE(listed.status, 0);
        const auto lines = listed.output.trimmed().split(u'\n');
        QCOMPARE(lines.size(), 30002);
        QVERIFY(lines.last().contains(u"\"name\":\"n30000\",\"text\":\"t30000\""_s));
    }

    void searchFindsAsTheSearchWindowDoes_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QString>("output");
        QTest::newRow("in names") << QStringList{u"水"_s} << Water + Book + File;
        QTest::newRow("in texts") << QStringList{u"透明"_s} << Water;
        QTest::newRow("a kind") << QStringList{u"水"_s, u"--kind"_s, u"document"_s} << Book;
        QTest::newRow("as a reader compares") << QStringList{u"ＴＸＴ"_s} << File;
        QTest::newRow("wildcards") << QStringList{u"水?本"_s} << Book;
        QTest::newRow("identifiers") << QStringList{u"水"_s, u"--identifiers"_s}
                                     << u"M-991231-001\nR-991231-001\nF-991231-001\n"_s;
        QTest::newRow("JSON") << QStringList{u"透明"_s, u"--json"_s}
                              << u"{\"identifier\":\"M-991231-001\",\"kind\":\"definition\",\"name\":\"水\","
                                 u"\"text\":\"無色透明の液体\",\"categories\":[\"A\"],"
                                 u"\"links\":[\"R-991231-001\"]}\n"_s;
    }

    void searchFindsAsTheSearchWindowDoes()
    {
        QFETCH(QStringList, words);
        QFETCH(QString, output);
        QCOMPARE(m_world->run(QStringList{u"search"_s} + words), answer(0, output));
    }

    void searchTellsWhatItCannotFind()
    {
        QCOMPARE(m_world->run({u"search"_s, u"空"_s}),
                 answer(1, {}, u"quillon-cli: 該当するデータはありません。\n"_s));
        QCOMPARE(m_world->run({u"search"_s, QString()}),
                 answer(4, {}, u"quillon-cli: 検索する文字列が入力されていません。\n"_s));
        const Answered quoted = m_world->run({u"search"_s, u"it's"_s});
        QCOMPARE(quoted.status, 4);
        QVERIFY2(quoted.errors.contains(u"LOCATION : GetFilterResult"_s), qPrintable(quoted.errors));
    }

    void aSearchAmongManyFindsAll()
    {
        m_world->session.OpenDb->execute(
            u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 30000) INSERT INTO Main "
            u"SELECT 'n' || i, printf('M-%06d-%03d', i / 900, i % 900), 't' || i || iif(i % 15000 = 0, '針', '') "
            u"FROM n"_s);
        QCOMPARE(m_world->run({u"search"_s, u"針"_s}),
                 answer(0, u"M-000016-600  定義  n15000\nM-000033-300  定義  n30000\n"_s));
        const Answered all = m_world->run({u"search"_s, u"ｔ"_s, u"--identifiers"_s});
        QCOMPARE(all.output.count(u'\n'), 30001); // and a file
    }

    void statsCountsAll()
    {
        QCOMPARE(m_world->run({u"stats"_s}), answer(0, u"定義データ              2\n"
                                                       u"文献データ              1\n"
                                                       u"ファイルデータ          1\n"
                                                       u"リンク                  1\n"
                                                       u"カテゴリ                3\n"
                                                       u"分類                    2\n"_s));
        QCOMPARE(m_world->run({u"stats"_s, u"--json"_s}),
                 answer(0, u"{\"definitions\":2,\"documents\":1,\"files\":1,\"links\":1,\"categories\":3,"
                           u"\"memberships\":2}\n"_s));
    }

private:
    std::unique_ptr<CliWorld> m_world;
};

QTEST_GUILESS_MAIN(TestCliLists)
#include "test_cli_lists.moc"

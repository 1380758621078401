#include "tests/cli/cli_world.h"

#include "store/record_set.h"

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

/// A table of ours with another row, as only other programs write it.
void write(CliWorld& world, const QString& statement)
{
    world.session.OpenDb->execute(statement);
}

} // namespace

/// The verbs that look after a database, run as a shell does: what is wrong, what was lost, what is kept.
class TestCliUpkeep : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_world = std::make_unique<CliWorld>();
        m_world->fillDatabase();
        QVERIFY(QDir(m_world->folder.path()).mkdir(u"RefFile"_s));
        QVERIFY(m_world->write(u"RefFile/水.txt"_s, "water"));
        m_world->variables = {{u"QUILLON_COPIES"_s, m_world->path(u"kept"_s)}};
    }

    void aSoundDatabaseIsSaidToBeSound()
    {
        QCOMPARE(m_world->run({u"check"_s}), answer(0, {}, u"問題は見つかりませんでした。\n"_s));
        QCOMPARE(m_world->run({u"check"_s, u"--json"_s}), answer(0, {}, u"問題は見つかりませんでした。\n"_s));
        QCOMPARE(m_world->run({u"check"_s, u"--repair"_s}),
                 answer(0, {},
                        u"相手のないリンク 0 件と分類 0 件を削除しました。\n"
                        u"問題は見つかりませんでした。\n"_s));
        QVERIFY(!QFile::exists(m_world->path(u"kept"_s)));
    }

    void everyTroubleIsTold_data()
    {
        QTest::addColumn<QString>("statement");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("object");
        const auto object = [](const QString& trouble, const QString& place, const QString& identifier,
                               const QString& text, bool isMendable) {
            return u"{\"trouble\":\"%1\",\"place\":\"%2\",\"identifier\":\"%3\",\"text\":\"%4\",\"mendable\":%5}"_s
                .arg(trouble, place, identifier, text, isMendable ? u"true"_s : u"false"_s);
        };
        const auto row = [&](const char* name, const QString& statement, const QString& trouble,
                             const QString& place, const QString& identifier, const QString& text,
                             bool isMendable = false) {
            QTest::newRow(name) << statement << text << object(trouble, place, identifier, text, isMendable);
        };
        row("other table", u"CREATE TABLE Notes (a TEXT)"_s, u"other-table"_s, u"Notes"_s, {},
            u"Quillon のものではない Notes があります。"_s);
        row("identifier", u"INSERT INTO Main VALUES ('土', 'M-1', '地')"_s, u"odd-identifier"_s, u"Main"_s,
            u"M-1"_s, u"定義「土」の識別符号「M-1」は正しい形ではありません。"_s);
        row("identifier of another kind", u"INSERT INTO Main VALUES ('土', 'R-991231-005', '地')"_s,
            u"odd-identifier"_s, u"Main"_s, u"R-991231-005"_s,
            u"定義「土」の識別符号「R-991231-005」は正しい形ではありません。"_s);
        row("no identifier", u"INSERT INTO Main VALUES ('土', NULL, '地')"_s, u"odd-identifier"_s, u"Main"_s,
            {}, u"定義「土」の識別符号「」は正しい形ではありません。"_s);
        row("too wide", u"UPDATE Category_ID SET Name = printf('%.*c', 51, 'x') WHERE Category_ID = 'B'"_s,
            u"too-wide"_s, u"Category_ID"_s, u"B - "_s + QString(51, u'x'),
            u"Category_ID の Name (B - %1) は 51 文字で、限度の 50 文字を超えています。"_s.arg(
                QString(51, u'x')));
        row("no text", u"UPDATE Main SET Explanation = x'6100' WHERE Object_ID = 'M-991231-001'"_s,
            u"no-text"_s, u"Main"_s, u"M-991231-001"_s,
            u"Main の Explanation (M-991231-001) の値は文字列ではありません。"_s);
        row("link", u"INSERT INTO Link VALUES ('M-991231-001', 'M-991231-009')"_s, u"dangling-link"_s,
            u"Link"_s, u"M-991231-001 - M-991231-009"_s,
            u"リンク M-991231-001 - M-991231-009 の相手のデータがありません。"_s, true);
        row("membership of no datum", u"INSERT INTO Category VALUES ('A', 'M-991231-009')"_s,
            u"dangling-membership"_s, u"Category"_s, u"A - M-991231-009"_s,
            u"分類 A - M-991231-009 のカテゴリまたはデータがありません。"_s, true);
        row("membership in no category", u"INSERT INTO Category VALUES ('X', 'M-991231-001')"_s,
            u"dangling-membership"_s, u"Category"_s, u"X - M-991231-001"_s,
            u"分類 X - M-991231-001 のカテゴリまたはデータがありません。"_s, true);
        row("orphan", u"INSERT INTO Category_ID VALUES ('X-A', '孤児')"_s, u"orphaned-category"_s,
            u"Category_ID"_s, u"X-A"_s, u"カテゴリ「孤児」(X-A) の上位のカテゴリがありません。"_s);
        row("missing file", u"INSERT INTO RefFile VALUES ('山.txt', 'F-991231-002', '未入力')"_s,
            u"missing-file"_s, {}, u"F-991231-002"_s,
            u"ファイルデータ「山.txt」(F-991231-002) のファイルがありません。"_s);
        row("file of nobody", u"DELETE FROM RefFile"_s, u"unregistered-file"_s, {}, u"水.txt"_s,
            u"ファイル「水.txt」は登録されていません。"_s);
    }

    void everyTroubleIsTold()
    {
        QFETCH(QString, statement);
        QFETCH(QString, text);
        QFETCH(QString, object);
        write(*m_world, statement);
        const Answered found = m_world->run({u"check"_s});
        QCOMPARE(found.status, 4);
        QCOMPARE(found.output, text + u'\n');
        const bool isMendable = object.endsWith(u"true}"_s);
        QCOMPARE(found.errors,
                 u"1 件の問題があります。\n"_s +
                     (isMendable ? u"そのうち 1 件は check --repair で直せます。\n"_s : QString()));
        QCOMPARE(m_world->run({u"check"_s, u"--json"_s}).output, object + u'\n');
    }

    void anotherLayoutIsTold()
    {
        write(*m_world, u"DROP TABLE OpenApp"_s);
        write(*m_world, u"CREATE TABLE OpenApp (AppName TEXT, Path TEXT)"_s);
        QCOMPARE(m_world->run({u"check"_s}).output, u"テーブル OpenApp の作りが異なります。\n"_s);
    }

    void aDamagedFileIsToldAndNotMended()
    {
        for (int i = 10; i < 200; ++i)
            TestWorld::addRow(
                m_world->session.RsRefDoc,
                {u"本"_s, u"R-991231-"_s + QString::number(i).rightJustified(3, u'0'), QString(900, u'字')});
        QFile file(m_world->path(u"QUILLON.mdb"_s));
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.seek(file.size() - 40'960));
        QCOMPARE(file.write(QByteArray(8'192, '\xA5')), 8'192);
        file.close();
        const Answered found = m_world->run({u"check"_s});
        QCOMPARE(found.status, 4);
        QVERIFY2(found.output.contains(u"データベースのファイルが壊れています: "_s),
                 qPrintable(found.output));
        QCOMPARE(m_world->run({u"check"_s, u"--repair"_s}),
                 answer(3, {},
                        u"quillon-cli: データベースのファイルが壊れているため、修復できません。"
                        u"控えから取り出してください。\n"_s));
    }

    void repairDeletesWhatLeadsToNothing()
    {
        write(*m_world, u"INSERT INTO Link VALUES ('M-991231-001', 'M-991231-009')"_s);
        write(*m_world, u"INSERT INTO Category VALUES ('X', 'M-991231-001')"_s);
        write(*m_world, u"INSERT INTO Category_ID VALUES ('X-A', '孤児')"_s);
        const Answered mended = m_world->run({u"check"_s, u"--repair"_s});
        QCOMPARE(mended.status, 4);
        QCOMPARE(mended.output, u"カテゴリ「孤児」(X-A) の上位のカテゴリがありません。\n"_s);
        const QStringList lines = mended.errors.split(u'\n');
        QVERIFY2(lines[0].startsWith(u"修復の前の控え: "_s + m_world->path(u"kept"_s)), qPrintable(lines[0]));
        QVERIFY(QFile::exists(lines[0].section(u": "_s, 1)));
        QCOMPARE(lines.mid(1).join(u'\n'),
                 u"相手のないリンク 1 件と分類 1 件を削除しました。\n1 件の問題があります。\n"_s);
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsLink), QStringList{u"M-991231-001|R-991231-001"_s});
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsCategory),
                 (QStringList{u"A|M-991231-001"_s, u"A-A|R-991231-001"_s}));
    }

    void repairLeavesWhatLeadsToADatumUnderTheLetterOfAnotherKind()
    {
        write(*m_world, u"INSERT INTO Main VALUES ('土', 'R-991231-005', '地')"_s);
        write(*m_world, u"INSERT INTO Main VALUES ('金', 'X-1', '鉱')"_s);
        write(*m_world, u"INSERT INTO Link VALUES ('R-991231-005', 'M-991231-001')"_s);
        write(*m_world, u"INSERT INTO Category VALUES ('A', 'X-1')"_s);
        const QStringList links = TestWorld::rowsOf(m_world->session.RsLink);
        const QStringList memberships = TestWorld::rowsOf(m_world->session.RsCategory);
        QCOMPARE(m_world->run({u"check"_s, u"--repair"_s}),
                 answer(4,
                        u"定義「土」の識別符号「R-991231-005」は正しい形ではありません。\n"
                        u"定義「金」の識別符号「X-1」は正しい形ではありません。\n"_s,
                        u"相手のないリンク 0 件と分類 0 件を削除しました。\n2 件の問題があります。\n"_s));
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsLink), links);
        QCOMPARE(TestWorld::rowsOf(m_world->session.RsCategory), memberships);
    }

    void whereNothingIsKeptTheCopyStandsBesideTheDatabase()
    {
        m_world->variables = {{u"QUILLON_COPIES"_s, u"off"_s}};
        write(*m_world, u"INSERT INTO Link VALUES ('M-991231-001', 'M-991231-009')"_s);
        const Answered mended = m_world->run({u"check"_s, u"--repair"_s});
        QCOMPARE(mended.status, 0);
        const QString copy = mended.errors.section(u'\n', 0, 0).section(u": "_s, 1);
        QVERIFY2(copy.startsWith(m_world->path(u"QUILLON-"_s)), qPrintable(copy));
        m_world->database = copy;
        QCOMPARE(m_world->run({u"links"_s, u"M-991231-001"_s}).output.count(u'\n'), 2);
    }

    void whatWasLostIsListedAndComesBack()
    {
        QCOMPARE(m_world->run({u"history"_s}),
                 answer(1, {}, u"quillon-cli: 上書きまたは削除されたものはありません。\n"_s));
        QCOMPARE(m_world->run({u"set"_s, u"M-991231-002"_s, u"--text"_s, u"赤い"_s}).status, 0);
        QCOMPARE(m_world->run({u"delete"_s, u"M-991231-001"_s, u"--yes"_s}).status, 0);
        const Answered all = m_world->run({u"history"_s});
        QCOMPARE(all.status, 0);
        const QStringList lines = all.output.trimmed().split(u'\n');
        QCOMPARE(lines.size(), 2);
        QVERIFY2(lines[0].endsWith(u"  データの削除      水 (M-991231-001)"_s), qPrintable(lines[0]));
        QVERIFY2(lines[1].endsWith(u"  データの更新      火 (M-991231-002)"_s), qPrintable(lines[1]));
        const Answered asked = m_world->run({u"history"_s, u"火"_s, u"--json"_s});
        const auto event = QJsonDocument::fromJson(asked.output.toUtf8()).object();
        QCOMPARE(event[u"kind"_s].toString(), u"item-changed"_s);
        QCOMPARE(event[u"name"_s].toString(), u"火"_s);
        QCOMPARE(event[u"identifier"_s].toString(), u"M-991231-002"_s);
        QCOMPARE(event[u"operation"_s].toString(), u"quillon-cli set"_s);
        QCOMPARE(event[u"event"_s].toString(), lines[1].section(u' ', 0, 0));
        QVERIFY(QDateTime::fromString(event[u"time"_s].toString(), Qt::ISODate).isValid());
        QCOMPARE(m_world->run({u"restore"_s, lines[0].section(u' ', 0, 0)}),
                 answer(0, u"M-991231-001\n"_s, u"データ「水」を戻しました。\n"_s));
        QCOMPARE(m_world->run({u"links"_s}), answer(0, u"M-991231-001  R-991231-001  水 → 水の本\n"_s));
        // The names of events stay, whatever is lost later.
        QCOMPARE(m_world->run({u"restore"_s, lines[1].section(u' ', 0, 0)}),
                 answer(0, u"M-991231-002\n"_s, u"データ「火」を更新前の内容に戻しました。\n"_s));
        QCOMPARE(m_world->run({u"restore"_s, u"x-1"_s}),
                 answer(1, {}, u"quillon-cli: 履歴に x-1 は見つかりませんでした。\n"_s));
    }

    void aNewDatabaseInheritsNothingFromAFormerOneOfItsName_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::newRow("created") << QStringList(u"create"_s);
        QTest::newRow("brought in") << QStringList{u"import"_s, u"csv"_s, u"rows.csv"_s};
    }
    void aNewDatabaseInheritsNothingFromAFormerOneOfItsName()
    {
        QFETCH(const QStringList, words);
        QCOMPARE(m_world->run({u"export"_s, u"csv"_s, u"rows.csv"_s}).status, 0);
        QCOMPARE(m_world->run({u"delete"_s, u"M-991231-001"_s, u"--yes"_s}).status, 0);
        m_world->session.closeDatabase();
        QVERIFY(QFile::rename(m_world->path(u"QUILLON.mdb"_s), m_world->path(u"旧.mdb"_s)));
        const Answered made = m_world->run(words);
        QVERIFY2(made.status == 0, qPrintable(made.errors));
        QCOMPARE(m_world->run({u"history"_s}),
                 answer(1, {}, u"quillon-cli: 上書きまたは削除されたものはありません。\n"_s));
        m_world->database = u"旧.mdb"_s; // where it is now
        QVERIFY(m_world->run({u"history"_s}).output.contains(u"水 (M-991231-001)"_s));
    }

    void copiesAreListedAndTakenOut()
    {
        QCOMPARE(m_world->run({u"copies"_s}), answer(1, {}, u"quillon-cli: 控えはありません。\n"_s));
        // The first writing command makes one, the next does not within the hour.
        QCOMPARE(m_world->run({u"link"_s, u"M-991231-001"_s, u"M-991231-002"_s}).status, 0);
        QCOMPARE(m_world->run({u"unlink"_s, u"M-991231-001"_s, u"M-991231-002"_s}).status, 0);
        const auto copy =
            QJsonDocument::fromJson(m_world->run({u"copies"_s, u"--json"_s}).output.toUtf8()).object();
        QCOMPARE(copy.keys(), (QStringList{u"copy"_s, u"doubtful"_s, u"rows"_s, u"size"_s, u"time"_s}));
        QCOMPARE(copy[u"rows"_s].toInt(), 11);
        const QString name = copy[u"copy"_s].toString();
        const QString time = copy[u"time"_s].toString().replace(u'T', u' ');
        const auto number = [&](const QString& field) {
            return QString::number(copy[field].toInteger()).rightJustified(14);
        };
        QCOMPARE(m_world->run({u"copies"_s}),
                 answer(0, name + u"  "_s + time + number(u"size"_s) + u" バイト"_s + number(u"rows"_s) +
                               u" 行"_s + u"\n"_s));
        QCOMPARE(m_world->run({u"copies"_s, u"--take"_s, name, u"--to"_s, u"out.mdb"_s}), answer(0, {}));
        QCOMPARE(m_world->run({u"copies"_s, u"--take"_s, u"x"_s, u"--to"_s, u"out2.mdb"_s}),
                 answer(1, {}, u"quillon-cli: 控え x は見つかりませんでした。\n"_s));
        const Answered again = m_world->run({u"copies"_s, u"--take"_s, name, u"--to"_s, u"out.mdb"_s});
        QCOMPARE(again.status, 4);
        QCOMPARE(
            m_world->run({u"copies"_s, u"--take"_s, name}),
            answer(2, {},
                   u"quillon-cli: --take と --to は一緒に指定します。\n"
                   u"使い方: quillon-cli [--database FILE] [--home FOLDER] copies [--take COPY --to FILE]\n"
                   u"使い方は quillon-cli copies --help で表示されます。\n"_s));
        m_world->database = u"out.mdb"_s;
        QCOMPARE(m_world->run({u"links"_s}).output.count(u'\n'), 2);
    }

    void aDoubtfulCopyIsMarked()
    {
        QCOMPARE(m_world->run({u"category"_s, u"rename"_s, u"A"_s, u"天然"_s}).status, 0);
        for (const QString& table : {u"Main"_s, u"RefDoc"_s, u"Link"_s, u"Category"_s, u"Category_ID"_s})
            write(*m_world, u"DELETE FROM "_s + table);
        write(*m_world, u"INSERT INTO Link VALUES ('M-991231-001', 'M-991231-009')"_s);
        QCOMPARE(m_world->run({u"check"_s, u"--repair"_s}).status, 0);
        QVERIFY(m_world->run({u"copies"_s}).output.contains(u"  内容が大きく減っています\n"_s));
    }

    void withoutKeepingThereIsNothingToComeBack()
    {
        m_world->variables = {{u"QUILLON_COPIES"_s, u"off"_s}};
        const Answered nothing = answer(
            4, {}, u"quillon-cli: 環境変数 QUILLON_COPIES が off のため、履歴と控えは残されていません。\n"_s);
        QCOMPARE(m_world->run({u"history"_s}), nothing);
        QCOMPARE(m_world->run({u"restore"_s, u"x"_s}), nothing);
        QCOMPARE(m_world->run({u"copies"_s}), nothing);
    }

private:
    std::unique_ptr<CliWorld> m_world;
};

QTEST_GUILESS_MAIN(TestCliUpkeep)
#include "test_cli_upkeep.moc"

#include "tests/cli/cli_world.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const QString CommonOptions =
    u"\n"
    u"共通のオプション:\n"
    u"  --database FILE  データベースのファイル。なければ環境変数 QUILLON_DATABASE のファイル\n"
    u"  --home FOLDER    RefFile フォルダのあるフォルダ。なければカレントフォルダ\n"
    u"  -h, --help       説明を表示して終了します\n"
    u"  --version        版を表示して終了します\n"_s;

QString contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The words of a text in which they stand between blanks, brackets and the like.
QStringList optionsIn(const QString& text)
{
    static const QRegularExpression option(u"(?<![\\w-])--[a-z]+"_s);
    QStringList found;
    for (auto matches = option.globalMatch(text); matches.hasNext();)
        found << matches.next().captured();
    found.sort();
    found.removeDuplicates();
    return found;
}

/// What stands in a text from one place to another.
QString between(const QString& text, const QString& begin, const QString& end)
{
    const qsizetype from = text.indexOf(begin);
    return from < 0 ? QString() : text.mid(from + begin.size()).section(end, 0, 0);
}

} // namespace

/// How the command line program is told what to do, and what it tells about itself.
class TestCliUsage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { m_world.database.clear(); }

    void wrongWordsAreAnsweredWithTheUsage_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QString>("complaint");
        QTest::addColumn<QString>("verb");
        const QStringList list{u"list"_s};
        QTest::newRow("nothing") << QStringList{} << u"コマンドが指定されていません。"_s << QString();
        QTest::newRow("no such verb") << QStringList{u"lst"_s} << u"不明なコマンドです: lst"_s << QString();
        QTest::newRow("half a verb") << QStringList{u"category"_s} << u"不明なコマンドです: category"_s
                                     << QString();
        QTest::newRow("no such option")
            << list + QStringList{u"--all"_s} << u"不明なオプションです: --all"_s << u"list"_s;
        QTest::newRow("no value") << list + QStringList{u"--kind"_s}
                                  << u"オプションの値がありません: --kind"_s << u"list"_s;
        QTest::newRow("a value too many")
            << list + QStringList{u"--json=1"_s} << u"値を取らないオプションです: --json"_s << u"list"_s;
        QTest::newRow("of another verb") << list + QStringList{u"--text"_s, u"x"_s}
                                         << u"list では使えないオプションです: --text"_s << u"list"_s;
        QTest::newRow("twice") << QStringList{u"set"_s, u"a"_s, u"--name=x"_s, u"--name=y"_s}
                               << u"オプションが二度指定されています: --name"_s << u"set"_s;
        QTest::newRow("no such kind")
            << list + QStringList{u"--kind"_s, u"x"_s}
            << u"--kind の値は definition、document、file のいずれかです: x"_s << u"list"_s;
        QTest::newRow("no such first word")
            << QStringList{u"add"_s, u"file"_s, u"x"_s}
            << u"add の引数は definition、document のいずれかです: file"_s << u"add"_s;
        QTest::newRow("too few") << QStringList{u"show"_s} << u"引数が足りません。"_s << u"show"_s;
        QTest::newRow("too many") << QStringList{u"category"_s, u"add"_s, u"x"_s, u"y"_s}
                                  << u"引数が多すぎます: y"_s << u"category add"_s;
        QTest::newRow("help of no verb")
            << QStringList{u"help"_s, u"lst"_s} << u"不明なコマンドです: lst"_s << QString();
    }

    void wrongWordsAreAnsweredWithTheUsage()
    {
        QFETCH(QStringList, words);
        QFETCH(QString, complaint);
        QFETCH(QString, verb);
        const Answered answered = m_world.run(words);
        QCOMPARE(answered.status, 2);
        QCOMPARE(answered.output, QString());
        const QStringList lines = answered.errors.split(u'\n');
        QCOMPARE(lines.size(), 4);
        QCOMPARE(lines[0], u"quillon-cli: "_s + complaint);
        QVERIFY2(lines[1].startsWith(u"使い方: quillon-cli [--database FILE] [--home FOLDER] "_s +
                                     (verb.isEmpty() ? u"VERB …"_s : verb)),
                 qPrintable(lines[1]));
        QCOMPARE(lines[2], u"使い方は quillon-cli"_s + (verb.isEmpty() ? QString() : u' ' + verb) +
                               u" --help で表示されます。"_s);
    }

    void theVersionIsTold()
    {
        const Answered answered = m_world.run({u"--version"_s});
        QCOMPARE(answered.status, 0);
        QCOMPARE(answered.errors, QString());
        QVERIFY2(
            QRegularExpression(u"^quillon-cli System Ver\\.1\\.30 \\(Ver\\.2\\.00β\\)\n"
                               u"コミット: ([0-9a-f]{7,}\\+?|不明)\nQt: %1\nSQLite: 3\\.[0-9.]+\n$"_s.arg(
                                   QRegularExpression::escape(QString::fromLatin1(qVersion()))))
                .match(answered.output)
                .hasMatch(),
            qPrintable(answered.output));
    }

    void theProgramExplainsItself()
    {
        const Answered expected = answer(
            0,
            u"使い方: quillon-cli [--database FILE] [--home FOLDER] VERB …\n"
            u"\n"
            u"Quillon のデータベースを端末から操作します。\n"
            u"\n"
            u"コマンド:\n"
            u"  create           データベースを新規に作成します。\n"
            u"  add              定義データまたは文献データを登録し、その識別符号を出力します。\n"
            u"  attach           ファイルを RefFile フォルダに写して登録し、その識別符号を出力します。\n"
            u"  list             データを一覧にします。\n"
            u"  show             データの内容を、分類とリンクとともに表示します。\n"
            u"  search           名称と内容から文字列を検索します。* ? # [ ] は検索画面と同じ意味になります。\n"
            u"  set              定義データまたは文献データの名称や内容を更新します。\n"
            u"  delete           データを、そのリンクと分類とともに削除します。\n"
            u"  link             二つのデータをリンクします。\n"
            u"  unlink           二つのデータのリンクを、どちら向きのものも削除します。\n"
            u"  links            すべてのリンク、または一つのデータのリンクを一覧にします。\n"
            u"  categories       カテゴリを、直接分類されているデータの数とともに一覧にします。\n"
            u"  category add     カテゴリを登録し、その識別符号を出力します。\n"
            u"  category rename  カテゴリの名称を変更します。\n"
            u"  category delete  カテゴリを削除します。分類されていたデータは残ります。\n"
            u"  classify         データをカテゴリに分類し、その上位のカテゴリから外します。\n"
            u"  unclassify       データの分類を解除します。\n"
            u"  open             ファイルデータのファイルを、関連付けられたアプリで開きます。\n"
            u"  stats            データ、リンク、カテゴリ、分類の数を表示します。\n"
            u"  check            データベースと RefFile フォルダを調べ、問題を一覧にします。\n"
            u"  history          上書きまたは削除されたものを、新しい順に一覧にします。\n"
            u"  restore          history が表示したものを一つ元に戻します。\n"
            u"  copies           データベースの控えを一覧にするか、一つを新しいファイルに取り出します。\n"
            u"  export           データベースを、新しいフォルダまたはファイルに書き出します。\n"
            u"  import           書庫、CSV や TSV、テキストや Markdown のフォルダ、以前の形式のデータベースを取り込みます。データベースがなければ作成します。\n"
            u"  completion       シェルの補完の設定を出力します。\n"
            u"  help             コマンドの説明を表示します。\n"
            u"\n"
            u"共通のオプション:\n"
            u"  --database FILE  データベースのファイル。なければ環境変数 QUILLON_DATABASE のファイル\n"
            u"  --home FOLDER    RefFile フォルダのあるフォルダ。なければカレントフォルダ\n"
            u"  -h, --help       説明を表示して終了します\n"
            u"  --version        版を表示して終了します\n"
            u"\n"
            u"終了ステータス:\n"
            u"  0  実行しました\n"
            u"  1  見つからないか、することがありません\n"
            u"  2  使い方が違います\n"
            u"  3  データベースを使用できません\n"
            u"  4  規則により拒否されました\n"
            u"  5  途中で終わりました。済んだことは表示されています\n"
            u"\n"
            u"コマンドごとの説明は quillon-cli VERB --help で表示されます。\n"_s);
        QCOMPARE(m_world.run({u"--help"_s}), expected);
        QCOMPARE(m_world.run({u"-h"_s}), expected);
        QCOMPARE(m_world.run({u"help"_s}), expected);
    }

    void everyVerbExplainsItself_data()
    {
        QTest::addColumn<QString>("verb");
        QTest::addColumn<QString>("beginning");
        QTest::addColumn<QString>("end");
        QTest::newRow("create") << u"create"_s
                                << u"使い方: quillon-cli [--database FILE] [--home FOLDER] create\n"
                                   u"\n"
                                   u"データベースを新規に作成します。\n"_s
                                << u"\n"
                                   u"例:\n"
                                   u"  quillon-cli --database note.mdb create\n"_s;
        QTest::newRow("add")
            << u"add"_s
            << u"使い方: quillon-cli [--database FILE] [--home FOLDER] add definition|document NAME (--text TEXT | --file PATH | -) [--category ID]…\n"
               u"\n"
               u"定義データまたは文献データを登録し、その識別符号を出力します。\n"
               u"\n"
               u"オプション:\n"
               u"  --text TEXT    内容\n"
               u"  --file PATH    内容を読み込むテキストファイル (コードページ 932、UTF-8、UTF-16)\n"
               u"  -              内容を標準入力から読み込みます\n"
               u"  --category ID  カテゴリの識別符号\n"
               u"  --json         一行に一つの JSON で出力します\n"_s
            << u"\n"
               u"例:\n"
               u"  quillon-cli add definition 水 --text 無色透明の液体 --category A\n"_s;
        QTest::newRow("attach")
            << u"attach"_s
            << u"使い方: quillon-cli [--database FILE] [--home FOLDER] attach PATH [--category ID]\n"
               u"\n"
               u"ファイルを RefFile フォルダに写して登録し、その識別符号を出力します。\n"
               u"\n"
               u"オプション:\n"
               u"  --category ID  カテゴリの識別符号\n"
               u"  --json         一行に一つの JSON で出力します\n"_s
            << u"\n"
               u"例:\n"
               u"  quillon-cli attach ~/写真/富士.jpg\n"_s;
        QTest::newRow("list")
            << u"list"_s
            << u"使い方: quillon-cli [--database FILE] [--home FOLDER] list [--kind KIND] [--category ID [--below] | --uncategorised]\n"
               u"\n"
               u"データを一覧にします。\n"
               u"\n"
               u"オプション:\n"
               u"  --kind KIND        データの種別 (definition、document、file)\n"
               u"  --category ID      カテゴリの識別符号\n"
               u"  --below            下位のカテゴリのデータも含めます\n"
               u"  --uncategorised    どのカテゴリにも分類されていないデータ\n"
               u"  --json             一行に一つの JSON で出力します\n"
               u"  -0, --identifiers  識別符号だけを一行に一つずつ出力します。-0 は行末の代わりに NUL で区切ります\n"_s
            << u"\n"
               u"例:\n"
               u"  quillon-cli list --kind document --category A --below\n"_s;
        QTest::newRow("show") << u"show"_s
                              << u"使い方: quillon-cli [--database FILE] [--home FOLDER] show ID\n"
                                 u"\n"
                                 u"データの内容を、分類とリンクとともに表示します。\n"
                                 u"\n"
                                 u"オプション:\n"
                                 u"  --json  一行に一つの JSON で出力します\n"_s
                              << u"\n"
                                 u"例:\n"
                                 u"  quillon-cli show M-991231-001\n"_s;
        QTest::newRow("search")
            << u"search"_s
            << u"使い方: quillon-cli [--database FILE] [--home FOLDER] search TEXT [--kind KIND]…\n"
               u"\n"
               u"名称と内容から文字列を検索します。* ? # [ ] は検索画面と同じ意味になります。\n"
               u"\n"
               u"オプション:\n"
               u"  --kind KIND        データの種別 (definition、document、file)\n"
               u"  --json             一行に一つの JSON で出力します\n"
               u"  -0, --identifiers  識別符号だけを一行に一つずつ出力します。-0 は行末の代わりに NUL で区切ります\n"_s
            << u"\n"
               u"例:\n"
               u"  quillon-cli search 水素 --kind definition\n"_s;
        QTest::newRow("set")
            << u"set"_s
            << u"使い方: quillon-cli [--database FILE] [--home FOLDER] set ID [--name NAME] [--text TEXT | --file PATH | -]\n"
               u"\n"
               u"定義データまたは文献データの名称や内容を更新します。\n"
               u"\n"
               u"オプション:\n"
               u"  --name NAME  新しい名称\n"
               u"  --text TEXT  内容\n"
               u"  --file PATH  内容を読み込むテキストファイル (コードページ 932、UTF-8、UTF-16)\n"
               u"  -            内容を標準入力から読み込みます\n"_s
            << u"\n"
               u"例:\n"
               u"  quillon-cli set M-991231-001 --name 水素\n"_s;
        QTest::newRow("delete") << u"delete"_s
                                << u"使い方: quillon-cli [--database FILE] [--home FOLDER] delete ID… --yes\n"
                                   u"\n"
                                   u"データを、そのリンクと分類とともに削除します。\n"
                                   u"\n"
                                   u"オプション:\n"
                                   u"  --yes  確認せずに実行します。端末でないときに必要です\n"_s
                                << u"\n"
                                   u"例:\n"
                                   u"  quillon-cli delete M-991231-001 --yes\n"_s;
        QTest::newRow("link") << u"link"_s
                              << u"使い方: quillon-cli [--database FILE] [--home FOLDER] link ID ID\n"
                                 u"\n"
                                 u"二つのデータをリンクします。\n"_s
                              << u"\n"
                                 u"例:\n"
                                 u"  quillon-cli link M-991231-001 R-991231-001\n"_s;
        QTest::newRow("unlink") << u"unlink"_s
                                << u"使い方: quillon-cli [--database FILE] [--home FOLDER] unlink ID ID\n"
                                   u"\n"
                                   u"二つのデータのリンクを、どちら向きのものも削除します。\n"_s
                                << u"\n"
                                   u"例:\n"
                                   u"  quillon-cli unlink M-991231-001 R-991231-001\n"_s;
        QTest::newRow("links") << u"links"_s
                               << u"使い方: quillon-cli [--database FILE] [--home FOLDER] links [ID]\n"
                                  u"\n"
                                  u"すべてのリンク、または一つのデータのリンクを一覧にします。\n"
                                  u"\n"
                                  u"オプション:\n"
                                  u"  --json  一行に一つの JSON で出力します\n"_s
                               << u"\n"
                                  u"例:\n"
                                  u"  quillon-cli links M-991231-001\n"_s;
        QTest::newRow("categories")
            << u"categories"_s
            << u"使い方: quillon-cli [--database FILE] [--home FOLDER] categories\n"
               u"\n"
               u"カテゴリを、直接分類されているデータの数とともに一覧にします。\n"
               u"\n"
               u"オプション:\n"
               u"  --json             一行に一つの JSON で出力します\n"
               u"  -0, --identifiers  識別符号だけを一行に一つずつ出力します。-0 は行末の代わりに NUL で区切ります\n"_s
            << u"\n"
               u"例:\n"
               u"  quillon-cli categories\n"_s;
        QTest::newRow("category add")
            << u"category add"_s
            << u"使い方: quillon-cli [--database FILE] [--home FOLDER] category add NAME [--under ID]\n"
               u"\n"
               u"カテゴリを登録し、その識別符号を出力します。\n"
               u"\n"
               u"オプション:\n"
               u"  --under ID  上位のカテゴリの識別符号\n"
               u"  --json      一行に一つの JSON で出力します\n"_s
            << u"\n"
               u"例:\n"
               u"  quillon-cli category add 自然科学 --under A\n"_s;
        QTest::newRow("category rename")
            << u"category rename"_s
            << u"使い方: quillon-cli [--database FILE] [--home FOLDER] category rename ID NAME\n"
               u"\n"
               u"カテゴリの名称を変更します。\n"_s
            << u"\n"
               u"例:\n"
               u"  quillon-cli category rename A 自然\n"_s;
        QTest::newRow("category delete")
            << u"category delete"_s
            << u"使い方: quillon-cli [--database FILE] [--home FOLDER] category delete ID --yes\n"
               u"\n"
               u"カテゴリを削除します。分類されていたデータは残ります。\n"
               u"\n"
               u"オプション:\n"
               u"  --yes  確認せずに実行します。端末でないときに必要です\n"_s
            << u"\n"
               u"例:\n"
               u"  quillon-cli category delete A-B --yes\n"_s;
        QTest::newRow("classify")
            << u"classify"_s
            << u"使い方: quillon-cli [--database FILE] [--home FOLDER] classify ID CATEGORY\n"
               u"\n"
               u"データをカテゴリに分類し、その上位のカテゴリから外します。\n"_s
            << u"\n"
               u"例:\n"
               u"  quillon-cli classify M-991231-001 A-B\n"_s;
        QTest::newRow("unclassify")
            << u"unclassify"_s
            << u"使い方: quillon-cli [--database FILE] [--home FOLDER] unclassify ID CATEGORY\n"
               u"\n"
               u"データの分類を解除します。\n"_s
            << u"\n"
               u"例:\n"
               u"  quillon-cli unclassify M-991231-001 A-B\n"_s;
        QTest::newRow("open") << u"open"_s
                              << u"使い方: quillon-cli [--database FILE] [--home FOLDER] open ID\n"
                                 u"\n"
                                 u"ファイルデータのファイルを、関連付けられたアプリで開きます。\n"_s
                              << u"\n"
                                 u"例:\n"
                                 u"  quillon-cli open F-991231-001\n"_s;
        QTest::newRow("stats") << u"stats"_s
                               << u"使い方: quillon-cli [--database FILE] [--home FOLDER] stats\n"
                                  u"\n"
                                  u"データ、リンク、カテゴリ、分類の数を表示します。\n"
                                  u"\n"
                                  u"オプション:\n"
                                  u"  --json  一行に一つの JSON で出力します\n"_s
                               << u"\n"
                                  u"例:\n"
                                  u"  quillon-cli stats --json\n"_s;
        QTest::newRow("check") << u"check"_s
                               << u"使い方: quillon-cli [--database FILE] [--home FOLDER] check [--repair]\n"
                                  u"\n"
                                  u"データベースと RefFile フォルダを調べ、問題を一覧にします。\n"
                                  u"\n"
                                  u"オプション:\n"
                                  u"  --repair  控えを作成してから、相手のないリンクと分類を削除します\n"
                                  u"  --json    一行に一つの JSON で出力します\n"_s
                               << u"\n"
                                  u"例:\n"
                                  u"  quillon-cli check --repair\n"_s;
        QTest::newRow("history") << u"history"_s
                                 << u"使い方: quillon-cli [--database FILE] [--home FOLDER] history [TEXT]\n"
                                    u"\n"
                                    u"上書きまたは削除されたものを、新しい順に一覧にします。\n"
                                    u"\n"
                                    u"オプション:\n"
                                    u"  --json  一行に一つの JSON で出力します\n"_s
                                 << u"\n"
                                    u"例:\n"
                                    u"  quillon-cli history 水\n"_s;
        QTest::newRow("restore") << u"restore"_s
                                 << u"使い方: quillon-cli [--database FILE] [--home FOLDER] restore EVENT\n"
                                    u"\n"
                                    u"history が表示したものを一つ元に戻します。\n"_s
                                 << u"\n"
                                    u"例:\n"
                                    u"  quillon-cli restore mi9k2x4c-8\n"_s;
        QTest::newRow("copies")
            << u"copies"_s
            << u"使い方: quillon-cli [--database FILE] [--home FOLDER] copies [--take COPY --to FILE]\n"
               u"\n"
               u"データベースの控えを一覧にするか、一つを新しいファイルに取り出します。\n"
               u"\n"
               u"オプション:\n"
               u"  --take COPY  取り出す控えの名前\n"
               u"  --to FILE    取り出した控えを書き込む新しいファイル\n"
               u"  --json       一行に一つの JSON で出力します\n"_s
            << u"\n"
               u"例:\n"
               u"  quillon-cli copies --take 2026-01-31_120000.mdb --to old.mdb\n"_s;
        QTest::newRow("export")
            << u"export"_s
            << u"使い方: quillon-cli [--database FILE] [--home FOLDER] export archive|csv|markdown|html|picture TARGET [--item ID]\n"
               u"\n"
               u"データベースを、新しいフォルダまたはファイルに書き出します。\n"
               u"\n"
               u"オプション:\n"
               u"  --item ID  図にするデータの識別符号。なければ、リンクのあるデータすべての図をフォルダに作成します (picture)\n"
               u"  --json     一行に一つの JSON で出力します\n"_s
            << u"\n"
               u"例:\n"
               u"  quillon-cli export archive ~/書庫\n"_s;
        QTest::newRow("import")
            << u"import"_s
            << u"使い方: quillon-cli [--database FILE] [--home FOLDER] import archive|csv|text|markdown|old SOURCE [--dry-run] [--split]\n"
               u"\n"
               u"書庫、CSV や TSV、テキストや Markdown のフォルダ、以前の形式のデータベースを取り込みます。データベースがなければ作成します。\n"
               u"\n"
               u"オプション:\n"
               u"  --dry-run  何が起きるかを表示するだけで、書き込みません\n"
               u"  --split    長すぎる文章を、リンクでつないだ複数の文献に分けます (text、markdown)\n"
               u"  --json     一行に一つの JSON で出力します\n"_s
            << u"\n"
               u"例:\n"
               u"  quillon-cli import archive ~/書庫 --dry-run\n"_s;
        QTest::newRow("completion")
            << u"completion"_s
            << u"使い方: quillon-cli [--database FILE] [--home FOLDER] completion bash|zsh|fish\n"
               u"\n"
               u"シェルの補完の設定を出力します。\n"_s
            << u"\n"
               u"例:\n"
               u"  quillon-cli completion bash\n"_s;
        QTest::newRow("help") << u"help"_s
                              << u"使い方: quillon-cli [--database FILE] [--home FOLDER] help [VERB]\n"
                                 u"\n"
                                 u"コマンドの説明を表示します。\n"_s
                              << u"\n"
                                 u"例:\n"
                                 u"  quillon-cli help add\n"_s;
    }

    void everyVerbExplainsItself()
    {
        QFETCH(QString, verb);
        QFETCH(QString, beginning);
        QFETCH(QString, end);
        const Answered expected = answer(0, beginning + CommonOptions + end);
        QCOMPARE(m_world.run(verb.split(u' ') << u"--help"_s), expected);
        QCOMPARE(m_world.run(QStringList{u"help"_s} + verb.split(u' ')), expected);
    }

    void helpPagesAndCompletionsAgree_data()
    {
        QTest::addColumn<QString>("verb");
        for (const QString& verb : Verbs)
            QTest::newRow(qPrintable(verb)) << verb;
    }

    void helpPagesAndCompletionsAgree()
    {
        QFETCH(QString, verb);
        const QString helpText = m_world.run(verb.split(u' ') << u"--help"_s).output;
        // The same description, arguments and options everywhere; what is common to all verbs stands apart in the pages.
        const QString summary = helpText.section(u'\n', 2, 2);
        const QString arguments = helpText.section(u'\n', 0, 0).section(u"[--home FOLDER] "_s, 1);
        QStringList own = optionsIn(between(helpText, u"オプション:\n"_s, u"\n\n"_s));
        if (!helpText.contains(u"\nオプション:\n"_s))
            own.clear();
        const auto asText = [](QString roff) {
            return roff.replace(u"\\-"_s, u"-"_s).replace(u"\\e"_s, u"\\"_s);
        };
        for (const QString& page : {u"/man/ja/man1/quillon-cli.1"_s, u"/man/man1/quillon-cli.1"_s}) {
            const QString text = asText(contentOf(QStringLiteral(QUILLON_PAGES) + page));
            const QString part = between(text, u"\n.TP\n.B "_s + arguments + u'\n', u"\n.RE\n"_s);
            QVERIFY2(!part.isEmpty(), qPrintable(page));
            QCOMPARE(optionsIn(between(part, u".RS\n"_s, u".PP\n"_s)), own);
            if (page.contains(u"/ja/"_s))
                QCOMPARE(part.section(u'\n', 0, 0), summary);
            QVERIFY(helpText.contains(part.section(u".EX\n"_s, 1).section(u'\n', 0, 0)));
        }
        const QString fish = m_world.run({u"completion"_s, u"fish"_s}).output;
        QVERIFY(fish.contains(u"-a '"_s + verb.section(u' ', -1) + u"' -d '"_s + summary + u"'\n"_s));
        for (const QString& shell : {u"bash"_s, u"zsh"_s}) {
            const QString script = m_world.run({u"completion"_s, shell}).output;
            const QString choices = between(script, u"\""_s + verb + u" \"*) choices=\""_s, u"\""_s);
            QCOMPARE(optionsIn(choices), optionsIn(helpText));
        }
    }

    void installedCompletionsAreThoseThatArePrinted()
    {
        const QString folder = QStringLiteral(QUILLON_PAGES);
        QCOMPARE(m_world.run({u"completion"_s, u"bash"_s}),
                 answer(0, contentOf(folder + u"/bash-completion/completions/quillon-cli"_s)));
        QCOMPARE(m_world.run({u"completion"_s, u"zsh"_s}),
                 answer(0, contentOf(folder + u"/zsh/site-functions/_quillon-cli"_s)));
        QCOMPARE(m_world.run({u"completion"_s, u"fish"_s}),
                 answer(0, contentOf(folder + u"/fish/vendor_completions.d/quillon-cli.fish"_s)));
    }

#ifndef Q_OS_WIN // there the installer does that
    void theProgramIsInstalledWithItsPagesAndCompletions()
    {
        const QTemporaryDir prefix;
        QProcess cmake;
        cmake.start(QStringLiteral(QUILLON_CMAKE),
                    {u"--install"_s, QStringLiteral(QUILLON_BUILD), u"--component"_s, u"command-line"_s,
                     u"--prefix"_s, prefix.path()});
        const Answered answered = CliWorld::answerOf(cmake);
        QVERIFY2(answered.status == 0, qPrintable(answered.output + answered.errors));
        QStringList installed;
        for (QDirIterator files(prefix.path(), QDir::Files, QDirIterator::Subdirectories); files.hasNext();)
            installed << QDir(prefix.path()).relativeFilePath(files.next());
        installed.sort();
        QCOMPARE(installed,
                 (QStringList{u"bin/quillon-cli"_s, u"share/bash-completion/completions/quillon-cli"_s,
                              u"share/fish/vendor_completions.d/quillon-cli.fish"_s,
                              u"share/man/ja/man1/quillon-cli.1"_s, u"share/man/man1/quillon-cli.1"_s,
                              u"share/zsh/site-functions/_quillon-cli"_s}));
        QProcess program;
        program.start(prefix.filePath(u"bin/quillon-cli"_s), {u"--version"_s});
        QCOMPARE(CliWorld::answerOf(program), m_world.run({u"--version"_s}));
    }
#endif

    void thePagesTellOfTheSurroundings()
    {
        QString japanese = contentOf(QStringLiteral(QUILLON_PAGES) + u"/man/ja/man1/quillon-cli.1"_s);
        japanese.replace(u"\\-"_s, u"-"_s);
        for (const QString& text :
             {u"Quillon の手引"_s, u".SH 名前\n"_s, u"Quillon のデータベースを端末から操作する\n"_s,
              u".SH 書式\n"_s, u".SH コマンド\n"_s, u".SH 共通のオプション\n"_s, u".SH 終了ステータス\n"_s,
              u".SH 環境変数\n"_s, u"--database のないときに使うデータベースのファイル\n"_s,
              u"履歴と控えを置くフォルダ。off なら残しません\n"_s, u"空でなければ色を付けません\n"_s})
            QVERIFY2(japanese.contains(text), qPrintable(text));
    }

#ifdef Q_OS_UNIX
    void shellsCompleteWordsOfVerbs_data()
    {
        QTest::addColumn<QString>("shell");
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<QStringList>("completed");
        for (const QString& shell : {u"bash"_s, u"zsh"_s, u"fish"_s}) {
            const auto row = [&](const char* name, const QStringList& words, const QStringList& completed) {
                QTest::newRow(qPrintable(shell + u", "_s + QString::fromLatin1(name)))
                    << shell << words << completed;
            };
            row("verbs", {u"ca"_s}, {u"categories"_s, u"category"_s});
            row("after an option", {u"--database"_s, u"a b.mdb"_s, u"sea"_s}, {u"search"_s});
            row("second words", {u"category"_s, QString()}, {u"add"_s, u"delete"_s, u"rename"_s});
            row("options", {u"category"_s, u"add"_s, u"--u"_s}, {u"--under"_s});
            row("an option of another verb", {u"category"_s, u"rename"_s, u"--u"_s}, {});
            row("choices", {u"list"_s, u"--kind"_s, u"d"_s}, {u"definition"_s, u"document"_s});
            row("first words", {u"add"_s, u"doc"_s}, {u"document"_s});
            row("files", {u"attach"_s, u"wat"_s}, {u"water.txt"_s});
            row("files of an option", {u"--database"_s, u"wat"_s}, {u"water.txt"_s});
        }
    }

    void shellsCompleteWordsOfVerbs()
    {
        QFETCH(QString, shell);
        QFETCH(QStringList, words);
        QFETCH(QStringList, completed);
        const QString program = QStandardPaths::findExecutable(shell);
        if (program.isEmpty())
            QSKIP(qPrintable(shell + u" is not installed"_s));
        QVERIFY(m_world.write(u"water.txt"_s, "water"));
        QProcess process;
        process.setWorkingDirectory(m_world.folder.path());
        // No habits of whoever runs the tests.
        QProcessEnvironment environment = m_world.environment();
        environment.insert(u"HOME"_s, m_world.folder.path());
        environment.insert(u"XDG_CONFIG_HOME"_s, m_world.path(u"config"_s));
        environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
        process.setProcessEnvironment(environment);
        process.start(program, wordsToComplete(shell, words));
        const Answered answered = CliWorld::answerOf(process);
        QStringList lines = answered.output.split(u'\n', Qt::SkipEmptyParts);
        lines.sort();
        QCOMPARE(lines, completed);
        QCOMPARE(answered.errors, QString());
        QCOMPARE(answered.status, 0);
    }

    void noWindowLibraryIsLoaded()
    {
        QProcess linker;
        linker.start(u"ldd"_s, {QStringLiteral(QUILLON_CLI)});
        const Answered answered = CliWorld::answerOf(linker);
        QVERIFY2(answered.output.contains(u"Qt6Core"_s), qPrintable(answered.output));
        for (const QString& library : {u"Qt6Gui"_s, u"Qt6Widgets"_s, u"libX11"_s, u"libGL"_s, u"wayland"_s})
            QVERIFY2(!answered.output.contains(library), qPrintable(library));
    }
#endif

private:
    /// The arguments for a shell that prints on a line each what may stand in place of the last of some words.
    static QStringList wordsToComplete(const QString& shell, const QStringList& words)
    {
        const QString program = QStringLiteral(QUILLON_CLI);
        if (shell == u"bash")
            return QStringList{u"--norc"_s, u"-c"_s,
                               u"compopt() { :; }; eval \"$(\"$0\" completion bash)\"; "
                               u"COMP_WORDS=(quillon-cli \"$@\"); COMP_CWORD=$#; _quillon_cli; "
                               u"printf '%s\\n' \"${COMPREPLY[@]}\""_s,
                               program} +
                   words;
        if (shell == u"zsh")
            // Its system of completion belongs to the line that is being typed. What it would be told is told here.
            return QStringList{
                       u"-f"_s, u"-c"_s,
                       u"compdef() { :; }\n"
                       u"compadd() { shift; for each in \"$@\"; do [[ $each == $current* ]] && print -r -- $each; done; :; }\n"
                       u"_files() { print -rl -- $current*(N); }\n"
                       u"eval \"$(\"$0\" completion zsh)\"\n"
                       u"words=(quillon-cli \"$@\"); CURRENT=$#words; _quillon_cli; true\n"_s,
                       program} +
                   words;
        QString line = u"quillon-cli"_s;
        for (const QString& word : words)
            line += u' ' + QString(word).replace(u' ', u"\\ "_s);
        // Behind a completion fish prints its description.
        return {
            u"--no-config"_s, u"-c"_s,
            u"$argv[1] completion fish | source; complete --do-complete $argv[2] | string split -f 1 \\t; true"_s,
            program, line};
    }

    static inline const QStringList Verbs = {u"create"_s,
                                             u"add"_s,
                                             u"attach"_s,
                                             u"list"_s,
                                             u"show"_s,
                                             u"search"_s,
                                             u"set"_s,
                                             u"delete"_s,
                                             u"link"_s,
                                             u"unlink"_s,
                                             u"links"_s,
                                             u"categories"_s,
                                             u"category add"_s,
                                             u"category rename"_s,
                                             u"category delete"_s,
                                             u"classify"_s,
                                             u"unclassify"_s,
                                             u"open"_s,
                                             u"stats"_s,
                                             u"check"_s,
                                             u"history"_s,
                                             u"restore"_s,
                                             u"copies"_s,
                                             u"export"_s,
                                             u"import"_s,
                                             u"completion"_s,
                                             u"help"_s};

    CliWorld m_world;
};

QTEST_GUILESS_MAIN(TestCliUsage)
#include "test_cli_usage.moc"

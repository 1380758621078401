#include "app/cli/verbs.h"

#include "app/cli/verb_functions.h"

#include <algorithm>
#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

const QStringList Kinds = {u"definition"_s, u"document"_s, u"file"_s};

std::vector<Verb> allVerbs()
{
    const QString text = u"--text"_s;
    const QString file = u"--file"_s;
    const QString input = u"-"_s;
    const QString category = u"--category"_s;
    const QString json = u"--json"_s;
    const QString identifiers = u"--identifiers"_s;
    const QString yes = u"--yes"_s;
    return {
        {.name = u"create"_s,
         .arguments = {},
         .needs = Needs::Place,
         .japanese = u"データベースを新規に作成します。"_s,
         .english = u"Creates a database."_s,
         .example = u"--database note.mdb create"_s,
         .run = create},
        {.name = u"add"_s,
         .arguments = u"definition|document NAME (--text TEXT | --file PATH | -) [--category ID]…"_s,
         .fewest = 2,
         .most = 2,
         .options = {text, file, input, category, json},
         .needs = Needs::Writing,
         .japanese = u"定義データまたは文献データを登録し、その識別符号を出力します。"_s,
         .english = u"Registers a definition or a document and prints its identifier."_s,
         .example = u"add definition 水 --text 無色透明の液体 --category A"_s,
         .firstWords = {u"definition"_s, u"document"_s},
         .run = add},
        {.name = u"attach"_s,
         .arguments = u"PATH [--category ID]"_s,
         .fewest = 1,
         .most = 1,
         .options = {category, json},
         .needs = Needs::Writing,
         .japanese = u"ファイルを RefFile フォルダに写して登録し、その識別符号を出力します。"_s,
         .english = u"Copies a file into the folder RefFile, registers it and prints its identifier."_s,
         .example = u"attach ~/写真/富士.jpg"_s,
         .takesPath = true,
         .run = attach},
        {.name = u"list"_s,
         .arguments = u"[--kind KIND] [--category ID [--below] | --uncategorised]"_s,
         .options = {u"--kind"_s, category, u"--below"_s, u"--uncategorised"_s, json, identifiers},
         .japanese = u"データを一覧にします。"_s,
         .english = u"Lists items."_s,
         .example = u"list --kind document --category A --below"_s,
         .run = list},
        {.name = u"show"_s,
         .arguments = u"ID"_s,
         .fewest = 1,
         .most = 1,
         .options = {json},
         .japanese = u"データの内容を、分類とリンクとともに表示します。"_s,
         .english = u"Shows an item with its categories and links."_s,
         .example = u"show M-991231-001"_s,
         .run = show},
        {.name = u"search"_s,
         .arguments = u"TEXT [--kind KIND]…"_s,
         .fewest = 1,
         .most = 1,
         .options = {u"--kind"_s, json, identifiers},
         .japanese = u"名称と内容から文字列を検索します。* ? # [ ] は検索画面と同じ意味になります。"_s,
         .english = u"Searches names and texts. * ? # [ ] mean the same as in the search window."_s,
         .example = u"search 水素 --kind definition"_s,
         .run = search},
        {.name = u"set"_s,
         .arguments = u"ID [--name NAME] [--text TEXT | --file PATH | -]"_s,
         .fewest = 1,
         .most = 1,
         .options = {u"--name"_s, text, file, input},
         .needs = Needs::Writing,
         .japanese = u"定義データまたは文献データの名称や内容を更新します。"_s,
         .english = u"Changes the name or the text of a definition or a document."_s,
         .example = u"set M-991231-001 --name 水素"_s,
         .run = set},
        {.name = u"delete"_s,
         .arguments = u"ID… --yes"_s,
         .fewest = 1,
         .most = -1,
         .options = {yes},
         .needs = Needs::Writing,
         .japanese = u"データを、そのリンクと分類とともに削除します。"_s,
         .english = u"Deletes items with their links and memberships."_s,
         .example = u"delete M-991231-001 --yes"_s,
         .run = deleteItems},
        {.name = u"link"_s,
         .arguments = u"ID ID"_s,
         .fewest = 2,
         .most = 2,
         .needs = Needs::Writing,
         .japanese = u"二つのデータをリンクします。"_s,
         .english = u"Links two items."_s,
         .example = u"link M-991231-001 R-991231-001"_s,
         .run = link},
        {.name = u"unlink"_s,
         .arguments = u"ID ID"_s,
         .fewest = 2,
         .most = 2,
         .needs = Needs::Writing,
         .japanese = u"二つのデータのリンクを、どちら向きのものも削除します。"_s,
         .english = u"Deletes the link between two items, whatever its direction."_s,
         .example = u"unlink M-991231-001 R-991231-001"_s,
         .run = unlink},
        {.name = u"links"_s,
         .arguments = u"[ID]"_s,
         .most = 1,
         .options = {json},
         .japanese = u"すべてのリンク、または一つのデータのリンクを一覧にします。"_s,
         .english = u"Lists all links, or those of an item."_s,
         .example = u"links M-991231-001"_s,
         .run = links},
        {.name = u"categories"_s,
         .arguments = {},
         .options = {json, identifiers},
         .japanese = u"カテゴリを、直接分類されているデータの数とともに一覧にします。"_s,
         .english = u"Lists the categories, each with the number of items filed in it."_s,
         .example = u"categories"_s,
         .run = categories},
        {.name = u"category add"_s,
         .arguments = u"NAME [--under ID]"_s,
         .fewest = 1,
         .most = 1,
         .options = {u"--under"_s, json},
         .needs = Needs::Writing,
         .japanese = u"カテゴリを登録し、その識別符号を出力します。"_s,
         .english = u"Adds a category and prints its identifier."_s,
         .example = u"category add 自然科学 --under A"_s,
         .run = addCategory},
        {.name = u"category rename"_s,
         .arguments = u"ID NAME"_s,
         .fewest = 2,
         .most = 2,
         .needs = Needs::Writing,
         .japanese = u"カテゴリの名称を変更します。"_s,
         .english = u"Gives a category another name."_s,
         .example = u"category rename A 自然"_s,
         .run = renameCategory},
        {.name = u"category delete"_s,
         .arguments = u"ID --yes"_s,
         .fewest = 1,
         .most = 1,
         .options = {yes},
         .needs = Needs::Writing,
         .japanese = u"カテゴリを削除します。分類されていたデータは残ります。"_s,
         .english = u"Deletes a category. The items that were filed in it stay."_s,
         .example = u"category delete A-B --yes"_s,
         .run = deleteCategory},
        {.name = u"classify"_s,
         .arguments = u"ID CATEGORY"_s,
         .fewest = 2,
         .most = 2,
         .needs = Needs::Writing,
         .japanese = u"データをカテゴリに分類し、その上位のカテゴリから外します。"_s,
         .english = u"Files an item in a category and takes it out of those above."_s,
         .example = u"classify M-991231-001 A-B"_s,
         .run = classify},
        {.name = u"unclassify"_s,
         .arguments = u"ID CATEGORY"_s,
         .fewest = 2,
         .most = 2,
         .needs = Needs::Writing,
         .japanese = u"データの分類を解除します。"_s,
         .english = u"Takes an item out of a category."_s,
         .example = u"unclassify M-991231-001 A-B"_s,
         .run = unclassify},
        {.name = u"open"_s,
         .arguments = u"ID"_s,
         .fewest = 1,
         .most = 1,
         .japanese = u"ファイルデータのファイルを、関連付けられたアプリで開きます。"_s,
         .english = u"Opens the file of a file item with its associated application."_s,
         .example = u"open F-991231-001"_s,
         .run = openFile},
        {.name = u"stats"_s,
         .arguments = {},
         .options = {json},
         .japanese = u"データ、リンク、カテゴリ、分類の数を表示します。"_s,
         .english = u"Shows how many items, links, categories and memberships there are."_s,
         .example = u"stats --json"_s,
         .run = stats},
        {.name = u"completion"_s,
         .arguments = u"bash|zsh|fish"_s,
         .fewest = 1,
         .most = 1,
         .needs = Needs::Nothing,
         .japanese = u"シェルの補完の設定を出力します。"_s,
         .english = u"Prints the completion for a shell."_s,
         .example = u"completion bash"_s,
         .firstWords = {u"bash"_s, u"zsh"_s, u"fish"_s},
         .run = completion},
        {.name = u"help"_s,
         .arguments = u"[VERB]"_s,
         .most = 2,
         .needs = Needs::Nothing,
         .japanese = u"コマンドの説明を表示します。"_s,
         .english = u"Explains a verb."_s,
         .example = u"help add"_s,
         .run = help},
    };
}

std::vector<Option> allOptions()
{
    return {
        {.name = u"--database"_s,
         .value = u"FILE"_s,
         .japanese = u"データベースのファイル。なければ環境変数 QUILLON_DATABASE のファイル"_s,
         .english = u"the file of the database; otherwise the one that QUILLON_DATABASE names"_s},
        {.name = u"--home"_s,
         .value = u"FOLDER"_s,
         .japanese = u"RefFile フォルダのあるフォルダ。なければカレントフォルダ"_s,
         .english = u"the folder that holds RefFile; otherwise the current one"_s},
        {.name = u"--help"_s,
         .shortName = u"-h"_s,
         .japanese = u"説明を表示して終了します"_s,
         .english = u"explains and ends"_s},
        {.name = u"--version"_s,
         .japanese = u"版を表示して終了します"_s,
         .english = u"tells the version and ends"_s},
        {.name = u"--json"_s,
         .japanese = u"一行に一つの JSON で出力します"_s,
         .english = u"prints JSON, one object a line"_s},
        {.name = u"--identifiers"_s,
         .shortName = u"-0"_s,
         .japanese = u"識別符号だけを一行に一つずつ出力します。-0 は行末の代わりに NUL で区切ります"_s,
         .english = u"prints identifiers only, one a line; -0 ends each with NUL instead"_s},
        {.name = u"--yes"_s,
         .japanese = u"確認せずに実行します。端末でないときに必要です"_s,
         .english = u"asks nothing; needed where there is no terminal"_s},
        {.name = u"--text"_s, .value = u"TEXT"_s, .japanese = u"内容"_s, .english = u"the text"_s},
        {.name = u"--file"_s,
         .value = u"PATH"_s,
         .japanese = u"内容を読み込むテキストファイル (コードページ 932、UTF-8、UTF-16)"_s,
         .english = u"the text file to read the text from (code page 932, UTF-8, UTF-16)"_s},
        {.name = u"-"_s,
         .japanese = u"内容を標準入力から読み込みます"_s,
         .english = u"reads the text from the standard input"_s},
        {.name = u"--category"_s,
         .value = u"ID"_s,
         .japanese = u"カテゴリの識別符号"_s,
         .english = u"the identifier of a category"_s,
         .repeats = true},
        {.name = u"--kind"_s,
         .value = u"KIND"_s,
         .japanese = u"データの種別 (definition、document、file)"_s,
         .english = u"the kind of items (definition, document, file)"_s,
         .repeats = true,
         .choices = Kinds},
        {.name = u"--below"_s,
         .japanese = u"下位のカテゴリのデータも含めます"_s,
         .english = u"also what is filed in the categories below"_s},
        {.name = u"--uncategorised"_s,
         .japanese = u"どのカテゴリにも分類されていないデータ"_s,
         .english = u"what is filed in no category"_s},
        {.name = u"--name"_s, .value = u"NAME"_s, .japanese = u"新しい名称"_s, .english = u"the new name"_s},
        {.name = u"--under"_s,
         .value = u"ID"_s,
         .japanese = u"上位のカテゴリの識別符号"_s,
         .english = u"the identifier of the category above"_s},
    };
}

} // namespace

const std::vector<Verb>& verbs()
{
    static const std::vector<Verb> all = allVerbs();
    return all;
}

const Verb* verbNamed(QStringView name)
{
    const auto found =
        std::find_if(verbs().begin(), verbs().end(), [&](const Verb& verb) { return verb.name == name; });
    return found != verbs().end() ? &*found : nullptr;
}

const std::vector<Option>& options()
{
    static const std::vector<Option> all = allOptions();
    return all;
}

const Option& optionNamed(QStringView name)
{
    const auto found = std::find_if(options().begin(), options().end(),
                                    [&](const Option& option) { return option.name == name; });
    if (found == options().end())
        throw std::logic_error("no such option");
    return *found;
}

const QStringList& commonOptions()
{
    static const QStringList names = {u"--database"_s, u"--home"_s, u"--help"_s, u"--version"_s};
    return names;
}

} // namespace quillon::cli

#include "app/cli/help.h"

#include "app/cli/columns.h"
#include "app/cli/output.h"
#include "app/cli/verbs.h"
#include "store/build_info.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

QString usageLine(const Verb* verb)
{
    QString line = u"使い方: quillon-cli [--database FILE] [--home FOLDER] "_s;
    line += verb == nullptr ? u"VERB …"_s : verb->name;
    if (verb != nullptr && !verb->arguments.isEmpty())
        line += u' ' + verb->arguments;
    return line;
}

struct Line {
    QString name;
    QString text;
};

QString lines(const QString& title, const std::vector<Line>& all)
{
    int widest = 0;
    for (const Line& line : all)
        widest = std::max(widest, columnsOf(line.name));
    QString text = u'\n' + title + u'\n';
    for (const Line& line : all)
        text += u"  "_s + padded(line.name, widest + 2) + line.text + u'\n';
    return text;
}

QString optionLines(const QString& title, const QStringList& names)
{
    std::vector<Line> all;
    for (const QString& name : names) {
        const Option& option = optionNamed(name);
        QString shown = option.shortName.isEmpty() ? name : option.shortName + u", "_s + name;
        if (!option.value.isEmpty())
            shown += u' ' + option.value;
        all.push_back({shown, option.japanese});
    }
    return lines(title, all);
}

QString statusLines()
{
    std::vector<Line> all;
    for (const StatusText& status : statusTexts())
        all.push_back({QString::number(status.number), status.japanese});
    return lines(u"終了ステータス:"_s, all);
}

QString helpOf(const Verb& verb)
{
    QString text = usageLine(&verb) + u"\n\n"_s + verb.japanese + u'\n';
    if (!verb.options.isEmpty())
        text += optionLines(u"オプション:"_s, verb.options);
    text += optionLines(u"共通のオプション:"_s, commonOptions());
    return text + u"\n例:\n  quillon-cli "_s + verb.example + u'\n';
}

QString generalHelp()
{
    QString text = usageLine(nullptr) + u"\n\n"_s + u"Quillon のデータベースを端末から操作します。\n"_s;
    std::vector<Line> all;
    for (const Verb& verb : verbs())
        all.push_back({verb.name, verb.japanese});
    text += lines(u"コマンド:"_s, all);
    text += optionLines(u"共通のオプション:"_s, commonOptions());
    return text + statusLines() + u"\nコマンドごとの説明は quillon-cli VERB --help で表示されます。\n"_s;
}

void print(const QString& text)
{
    Output output;
    output.write(text);
    output.flush();
}

} // namespace

const std::vector<StatusText>& statusTexts()
{
    static const std::vector<StatusText> all = {
        {0, u"実行しました"_s, u"done"_s},
        {1, u"見つからないか、することがありません"_s, u"nothing found, or nothing to do"_s},
        {2, u"使い方が違います"_s, u"wrong usage"_s},
        {3, u"データベースを使用できません"_s, u"the database cannot be used"_s},
        {4, u"規則により拒否されました"_s, u"refused by a rule"_s},
        {5, u"途中で終わりました。済んだことは表示されています"_s,
         u"stopped half-way; what was done has been said"_s},
    };
    return all;
}

void printHelp(const Verb* verb)
{
    print(verb != nullptr ? helpOf(*verb) : generalHelp());
}

void printVersion()
{
    print(versionLines(u"quillon-cli"_s));
}

QString usageOf(const Verb* verb)
{
    const QString more =
        verb != nullptr ? u"quillon-cli "_s + verb->name + u" --help"_s : u"quillon-cli --help"_s;
    return usageLine(verb) + u"\n使い方は "_s + more + u" で表示されます。"_s;
}

} // namespace quillon::cli

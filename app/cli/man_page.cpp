#include "app/cli/man_page.h"

#include "app/base/titles.h"
#include "app/cli/help.h"
#include "app/cli/verbs.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

/// A text as roff takes it.
QString roff(QString text)
{
    text.replace(u'\\', u"\\e"_s).replace(u'-', u"\\-"_s);
    if (text.startsWith(u'.') || text.startsWith(u'\''))
        text.prepend(u"\\&"_s);
    return text;
}

/// What stands in both pages, each in its language.
class Page
{
public:
    explicit Page(Language language) : m_isJapanese(language == Language::Japanese) {}

    QString text()
    {
        // The version has blanks, and a title line takes words.
        add(u".TH QUILLON\\-CLI 1 \"\" \"Quillon "_s + roff(titles::Version) + u"\" \""_s +
            in(u"Quillon の手引"_s, u"Quillon Manual"_s) + u'"');
        section(in(u"名前"_s, u"NAME"_s));
        add(u"quillon\\-cli \\- "_s + in(u"Quillon のデータベースを端末から操作する"_s,
                                         u"works with databases of Quillon from a terminal"_s));
        section(in(u"書式"_s, u"SYNOPSIS"_s));
        add(u".B quillon\\-cli\n"_s + roff(u"[--database FILE] [--home FOLDER] VERB …"_s));
        section(in(u"コマンド"_s, u"VERBS"_s));
        for (const Verb& verb : verbs())
            addVerb(verb);
        section(in(u"共通のオプション"_s, u"COMMON OPTIONS"_s));
        for (const QString& name : commonOptions())
            addOption(optionNamed(name));
        section(in(u"終了ステータス"_s, u"EXIT STATUS"_s));
        for (const StatusText& status : statusTexts())
            entry(QString::number(status.number), in(status.japanese, status.english));
        section(in(u"環境変数"_s, u"ENVIRONMENT"_s));
        entry(u"QUILLON_DATABASE"_s, in(u"--database のないときに使うデータベースのファイル"_s,
                                        u"the file of the database when there is no --database"_s));
        entry(u"QUILLON_COPIES"_s, in(u"履歴と控えを置くフォルダ。off なら残しません"_s,
                                      u"the folder of the history and of kept copies; off keeps nothing"_s));
        entry(u"NO_COLOR"_s,
              in(u"空でなければ色を付けません"_s, u"no colours are used when it is not empty"_s));
        return m_text;
    }

private:
    QString in(const QString& japanese, const QString& english) const
    {
        return m_isJapanese ? japanese : english;
    }

    void add(const QString& line) { m_text += line + u'\n'; }
    void section(const QString& title) { add(u".SH "_s + roff(title)); }
    void entry(const QString& term, const QString& text)
    {
        add(u".TP\n.B "_s + roff(term));
        add(roff(text));
    }

    void addOption(const Option& option)
    {
        QString term = option.shortName.isEmpty() ? option.name : option.shortName + u", "_s + option.name;
        if (!option.value.isEmpty())
            term += u' ' + option.value;
        entry(term, in(option.japanese, option.english));
    }

    void addVerb(const Verb& verb)
    {
        entry(verb.arguments.isEmpty() ? verb.name : verb.name + u' ' + verb.arguments,
              in(verb.japanese, verb.english));
        add(u".RS"_s);
        for (const QString& name : verb.options)
            addOption(optionNamed(name));
        add(u".PP\n.EX\nquillon\\-cli "_s + roff(verb.example) + u"\n.EE\n.RE"_s);
    }

    bool m_isJapanese;
    QString m_text;
};

} // namespace

QString manPage(Language language)
{
    return Page(language).text();
}

} // namespace quillon::cli

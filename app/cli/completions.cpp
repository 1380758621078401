#include "app/cli/completions.h"

#include "app/cli/verbs.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

/// The words with which the verbs begin, each once.
QStringList firstWords()
{
    QStringList words;
    for (const Verb& verb : verbs())
        words << verb.name.section(u' ', 0, 0);
    words.removeDuplicates();
    return words;
}

/// The second words of the verbs that begin with one.
QStringList secondWords(const QString& first)
{
    QStringList words;
    for (const Verb& verb : verbs()) {
        if (verb.name.startsWith(first + u' '))
            words << verb.name.section(u' ', 1);
    }
    return words;
}

QStringList spellings(const Option& option)
{
    return option.shortName.isEmpty() ? QStringList{option.name} : QStringList{option.name, option.shortName};
}

/// The spellings of the options that stand with a verb; those common to all without one.
QStringList optionsOf(const Verb* verb)
{
    QStringList names;
    for (const QString& name : (verb != nullptr ? verb->options : QStringList()) + commonOptions())
        names << spellings(optionNamed(name));
    return names;
}

bool isPath(const Option& option)
{
    return option.value == u"FILE" || option.value == u"PATH" || option.value == u"FOLDER";
}

/// The spellings of the options that take a value, and, if it is asked for, whose value is a path.
QStringList withValue(bool pathsOnly)
{
    QStringList names;
    for (const Option& option : options()) {
        if (!option.value.isEmpty() && (!pathsOnly || isPath(option)))
            names << spellings(option);
    }
    return names;
}

/// The patterns of a case of a shell.
QString pattern(const QStringList& words)
{
    return words.join(u'|');
}

/// What bash and zsh have in common: from the words before the cursor the possible words, in `choices`, or `paths`.
QString caseOfVerbs(const QString& indent)
{
    QString text;
    const auto line = [&](const QString& content) { text += indent + content + u'\n'; };
    line(u"case \"$previous\" in"_s);
    line(pattern(withValue(true)) + u") paths=1 ;;"_s);
    for (const Option& option : options()) {
        if (!option.choices.isEmpty())
            line(pattern(spellings(option)) + u") choices=\""_s + option.choices.join(u' ') + u"\" ;;"_s);
    }
    line(pattern(withValue(false)) + u") ;;"_s);
    line(u"*)"_s);
    line(u"    case \"$verb \" in"_s);
    for (const Verb& verb : verbs()) {
        QStringList words = optionsOf(&verb);
        words << verb.firstWords;
        line(u"    \""_s + verb.name + u" \"*) choices=\""_s + words.join(u' ') + u'"' +
             (verb.takesPath ? u" paths=1"_s : QString()) + u" ;;"_s);
    }
    for (const QString& first : firstWords()) {
        if (const QStringList second = secondWords(first); !second.isEmpty())
            line(u"    \""_s + first + u" \"*) choices=\""_s + second.join(u' ') + u"\" ;;"_s);
    }
    line(u"    *) choices=\""_s + (firstWords() + optionsOf(nullptr)).join(u' ') + u"\" ;;"_s);
    line(u"    esac ;;"_s);
    line(u"esac"_s);
    return text;
}

/// Reads the verb out of the words before the cursor, which `word` becomes one after the other.
QString caseOfWords(const QString& indent)
{
    QString text;
    const auto line = [&](const QString& content) { text += indent + content + u'\n'; };
    line(u"if [ -n \"$skipped\" ]; then skipped=; continue; fi"_s);
    line(u"case \"$word\" in"_s);
    line(pattern(withValue(false)) + u") skipped=1 ;;"_s);
    line(u"-*) ;;"_s);
    line(u"*) verb=\"${verb:+$verb }$word\" ;;"_s);
    line(u"esac"_s);
    return text;
}

QString bash()
{
    return u"# bash completion for quillon-cli\n"
           u"_quillon_cli()\n"
           u"{\n"
           u"    local current=\"${COMP_WORDS[COMP_CWORD]}\" previous=\"${COMP_WORDS[COMP_CWORD-1]}\"\n"
           u"    local verb= skipped= choices= paths= word\n"
           u"    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"_s +
           caseOfWords(u"        "_s) + u"    done\n"_s + caseOfVerbs(u"    "_s) +
           u"    COMPREPLY=()\n"
           u"    if [ -n \"$paths\" ]; then\n"
           u"        local IFS=$'\\n'\n"
           u"        compopt -o filenames\n"
           u"        COMPREPLY=($(compgen -f -- \"$current\"))\n"
           u"        IFS=$' \\t\\n'\n"
           u"    fi\n"
           u"    COMPREPLY+=($(compgen -W \"$choices\" -- \"$current\"))\n"
           u"}\n"
           u"complete -F _quillon_cli quillon-cli\n"_s;
}

QString zsh()
{
    return u"#compdef quillon-cli\n"
           u"_quillon_cli()\n"
           u"{\n"
           u"    local current=\"$words[CURRENT]\" previous=\"$words[CURRENT-1]\"\n"
           u"    local verb= skipped= choices= paths= word\n"
           u"    for word in \"${(@)words[2,CURRENT-1]}\"; do\n"_s +
           caseOfWords(u"        "_s) + u"    done\n"_s + caseOfVerbs(u"    "_s) +
           u"    [ -n \"$paths\" ] && _files\n"
           u"    [ -n \"$choices\" ] && compadd -- ${=choices}\n"
           u"}\n"
           u"if [ \"$funcstack[1]\" = _quillon_cli ]; then\n"
           u"    _quillon_cli \"$@\"\n"
           u"else\n"
           u"    compdef _quillon_cli quillon-cli\n"
           u"fi\n"_s;
}

QString quotedForFish(const QString& text)
{
    return u'\'' + QString(text).replace(u'\\', u"\\\\"_s).replace(u'\'', u"\\'"_s) + u'\'';
}

/// The condition of fish that a verb stands on the line, or none at all.
QString conditionOf(const Verb* verb)
{
    if (verb == nullptr)
        return u"'not __fish_seen_subcommand_from "_s + firstWords().join(u' ') + u'\'';
    QStringList conditions;
    for (const QString& word : verb->name.split(u' '))
        conditions << u"__fish_seen_subcommand_from "_s + word;
    return u'\'' + conditions.join(u"; and "_s) + u'\'';
}

QString fishOption(const QString& name, const QString& condition)
{
    const Option& option = optionNamed(name);
    if (!name.startsWith(u"--"_s))
        return u"complete -c quillon-cli -n "_s + condition + u" -a "_s + quotedForFish(name) + u" -d "_s +
               quotedForFish(option.japanese) + u'\n';
    QString line = u"complete -c quillon-cli -n "_s + condition + u" -l "_s + name.sliced(2);
    if (!option.shortName.isEmpty())
        line += u" -s "_s + option.shortName.sliced(1);
    if (!option.choices.isEmpty())
        line += u" -x -a "_s + quotedForFish(option.choices.join(u' '));
    else if (!option.value.isEmpty())
        line += isPath(option) ? u" -r -F"_s : u" -x"_s;
    return line + u" -d "_s + quotedForFish(option.japanese) + u'\n';
}

QString fish()
{
    QString text = u"# fish completion for quillon-cli\ncomplete -c quillon-cli -f\n"_s;
    for (const QString& name : commonOptions())
        text += fishOption(name, u"true"_s);
    for (const Verb& verb : verbs()) {
        const QString first = verb.name.section(u' ', 0, 0);
        const QString second = verb.name.section(u' ', 1);
        const QString condition = conditionOf(&verb);
        const QString before = second.isEmpty() ? conditionOf(nullptr)
                                                : u"'__fish_seen_subcommand_from "_s + first +
                                                      u"; and not __fish_seen_subcommand_from "_s +
                                                      secondWords(first).join(u' ') + u'\'';
        const auto word = [&](const QString& where, const QString& what, const QString& description) {
            text += u"complete -c quillon-cli -n "_s + where + u" -a "_s + quotedForFish(what) + u" -d "_s +
                    quotedForFish(description) + u'\n';
        };
        if (second.isEmpty()) {
            word(before, first, verb.japanese);
        } else {
            word(conditionOf(nullptr), first, first);
            word(before, second, verb.japanese);
        }
        for (const QString& name : verb.options)
            text += fishOption(name, condition);
        for (const QString& choice : verb.firstWords)
            word(condition, choice, choice);
        if (verb.takesPath)
            text += u"complete -c quillon-cli -n "_s + condition + u" -F\n"_s;
    }
    return text;
}

} // namespace

QString completionFor(const QString& shell)
{
    if (shell == u"bash")
        return bash();
    return shell == u"zsh" ? zsh() : fish();
}

} // namespace quillon::cli

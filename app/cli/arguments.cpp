#include "app/cli/arguments.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

/// The words of a command, sorted into options and others.
class Reading
{
public:
    explicit Reading(const QStringList& words) : m_words(words) {}

    Arguments run()
    {
        for (m_at = 0; m_at < m_words.size(); ++m_at) {
            const QString& word = m_words[m_at];
            const bool isOption = !m_optionsEnded && word.startsWith(u'-');
            if (!isOption)
                m_result.words << word;
            else if (word == u"--"_s)
                m_optionsEnded = true;
            else
                readOption(word);
        }
        findVerb();
        if (m_result.has(u"--help"_s))
            m_result.request = Arguments::Request::Help;
        else if (m_result.has(u"--version"_s))
            m_result.request = Arguments::Request::Version;
        else
            check();
        return m_result;
    }

private:
    void readOption(const QString& word)
    {
        const qsizetype equals = word.startsWith(u"--"_s) ? word.indexOf(u'=') : -1;
        const QString name = equals < 0 ? word : word.first(equals);
        const auto option = std::find_if(options().begin(), options().end(), [&](const Option& known) {
            return known.name == name || known.shortName == name;
        });
        if (option == options().end())
            throw WrongUsage{u"不明なオプションです: %1"_s.arg(name), verbSoFar()};
        if (option->value.isEmpty()) {
            if (equals >= 0)
                throw WrongUsage{u"値を取らないオプションです: %1"_s.arg(name), verbSoFar()};
            m_result.given[option->name] << name;
            return;
        }
        if (equals >= 0)
            m_result.given[option->name] << word.sliced(equals + 1);
        else if (++m_at < m_words.size())
            m_result.given[option->name] << m_words[m_at];
        else
            throw WrongUsage{u"オプションの値がありません: %1"_s.arg(name), verbSoFar()};
    }

    const Verb* verbSoFar() const
    {
        for (const int count : {2, 1}) {
            if (m_result.words.size() < count)
                continue;
            if (const Verb* const verb = verbNamed(m_result.words.first(count).join(u' ')))
                return verb;
        }
        return nullptr;
    }

    void findVerb()
    {
        m_result.verb = verbSoFar();
        if (m_result.verb != nullptr) {
            m_result.words = m_result.words.sliced(m_result.verb->name.count(u' ') + 1);
            return;
        }
        if (m_result.has(u"--help"_s) || m_result.has(u"--version"_s))
            return;
        if (m_result.words.isEmpty())
            throw WrongUsage{u"コマンドが指定されていません。"_s};
        throw WrongUsage{u"不明なコマンドです: %1"_s.arg(m_result.words.first())};
    }

    void check() const
    {
        const Verb& verb = *m_result.verb;
        const auto refuse = [&](const QString& complaint) { throw WrongUsage{complaint, &verb}; };
        for (auto given = m_result.given.begin(); given != m_result.given.end(); ++given) {
            const Option& option = optionNamed(given.key());
            if (!verb.options.contains(option.name) && !commonOptions().contains(option.name))
                refuse(u"%1 では使えないオプションです: %2"_s.arg(verb.name, option.name));
            if (given->size() > 1 && !option.repeats)
                refuse(u"オプションが二度指定されています: %1"_s.arg(option.name));
            for (const QString& value : *given) {
                if (!option.choices.isEmpty() && !option.choices.contains(value))
                    refuse(u"%1 の値は %2 のいずれかです: %3"_s.arg(option.name, option.choices.join(u"、"_s),
                                                                    value));
            }
        }
        if (m_result.words.size() < verb.fewest)
            refuse(u"引数が足りません。"_s);
        if (verb.most >= 0 && m_result.words.size() > verb.most)
            refuse(u"引数が多すぎます: %1"_s.arg(m_result.words[verb.most]));
        if (!verb.firstWords.isEmpty() && !verb.firstWords.contains(m_result.words.first()))
            refuse(u"%1 の引数は %2 のいずれかです: %3"_s.arg(verb.name, verb.firstWords.join(u"、"_s),
                                                              m_result.words.first()));
    }

    const QStringList& m_words;
    qsizetype m_at = 0;
    bool m_optionsEnded = false;
    Arguments m_result;
};

} // namespace

Arguments understood(const QStringList& words)
{
    return Reading(words).run();
}

} // namespace quillon::cli

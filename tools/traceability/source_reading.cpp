#include "tools/traceability/source_reading.h"

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::traceability
{

namespace
{

/// Walks once through the tokens of a source.
class DeclarationReader
{
public:
    explicit DeclarationReader(Tokens tokens) : m_tokens(tokens) {}

    std::vector<Declaration> read()
    {
        for (; !ended(); ++m_at) // a bracket may close too much: the preprocessor's branches are all read
            readScope(QString());
        return std::move(m_found);
    }

private:
    bool ended() const { return m_at >= m_tokens.size(); }
    bool at(QStringView sign) const { return !ended() && m_tokens[m_at].isSign(sign); }
    bool atWord(QStringView word) const { return !ended() && m_tokens[m_at].isWord(word); }

    void readScope(const QString& scope)
    {
        bool inSlots = false;
        while (!ended() && !at(u"}")) {
            if (atWord(u"Q_OBJECT")) {
                ++m_at;
            } else if (atWord(u"public") || atWord(u"protected") || atWord(u"private") ||
                       atWord(u"Q_SIGNALS")) {
                ++m_at;
                inSlots = atWord(u"Q_SLOTS");
                m_at += inSlots ? 2 : 1;
            } else {
                readDeclaration(scope, inSlots);
            }
        }
    }

    void skipTemplateParameters()
    {
        int depth = 0;
        do {
            ++m_at;
            depth += at(u"<") ? 1 : at(u">") ? -1 : 0;
        } while (!ended() && depth > 0);
        ++m_at;
    }

    static bool followsName(const Token& token)
    {
        return token.isSign(u"(") || token.isSign(u"{") || token.isSign(u"=");
    }

    void readDeclaration(const QString& scope, bool inSlots)
    {
        static const QStringList holders = {u"namespace"_s, u"class"_s, u"struct"_s, u"union"_s};
        if (atWord(u"template"))
            skipTemplateParameters();
        const std::size_t begin = m_at;
        Declaration made{.scope = scope, .name = {}, .texts = {}, .words = {}, .tokens = {}};
        QString word; // the last one, which is the name when a bracket or a value follows
        bool holds = false;
        bool assigned = false;
        while (!ended() && !at(u"}") && !at(u";")) {
            const Token& token = m_tokens[m_at];
            const bool named = !made.name.isEmpty();
            if (token.kind == Token::Kind::Word && !named) {
                holds = (holds || holders.contains(token.text)) && word != u"enum"_s;
                made.constant |= token.text == u"const"_s || token.text == u"constexpr"_s;
                word = token.text;
            }
            if (holds && !named && token.isSign(u"{")) {
                ++m_at;
                readScope(word);
                ++m_at;
                return;
            }
            assigned |= token.isSign(u"=") && word != u"operator"_s;
            if (!named && followsName(token)) {
                made.name = word;
                made.function = token.isSign(u"(");
            }
            m_at = step(token) > 0 ? behindBrackets(m_tokens, m_at) : m_at + 1;
            // The body ends a function; values in braces do not end a variable, nor the members before a body.
            if (token.isSign(u"{") && made.function && !assigned && !at(u",") && !at(u"{"))
                break;
        }
        if (at(u";"))
            ++m_at;
        made.slot = inSlots && made.function;
        keep(std::move(made), m_tokens.subspan(begin, m_at - begin));
    }

    /// What has no name declares nothing that anybody could use.
    void keep(Declaration made, Tokens tokens)
    {
        if (made.name.isEmpty())
            return;
        made.texts = textsOf(tokens);
        made.words = wordsOf(tokens);
        made.tokens.assign(tokens.begin(), tokens.end());
        m_found.push_back(std::move(made));
    }

    Tokens m_tokens;
    std::size_t m_at = 0;
    std::vector<Declaration> m_found;
};

} // namespace

Source readSource(const QString& content)
{
    Source source;
    const std::vector<Token> tokens = tokensOf(content, source.includes);
    source.declarations = DeclarationReader(tokens).read();
    return source;
}

} // namespace quillon::traceability

#include "tools/traceability/source_reading.h"

#include <QRegularExpression>
#include <QSet>

#include <span>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::traceability
{

namespace
{

/// A word or a sign, or a text without its quotes and escapes; adjacent texts are one.
struct Token {
    enum class Kind { Word, Text, Sign };
    Kind kind = Kind::Sign;
    QString text;

    bool isWord(QStringView word) const { return kind == Kind::Word && text == word; }
    bool isSign(QStringView sign) const { return kind == Kind::Sign && text == sign; }
};
using Tokens = std::span<const Token>;

bool isSignOf(const Token& token, const QStringList& signs)
{
    return token.kind == Token::Kind::Sign && signs.contains(token.text);
}

/// 1 at a bracket that opens, -1 at one that closes.
int step(const Token& token)
{
    static const QStringList opening = {u"("_s, u"["_s, u"{"_s};
    static const QStringList closing = {u")"_s, u"]"_s, u"}"_s};
    return isSignOf(token, opening) ? 1 : isSignOf(token, closing) ? -1 : 0;
}

/// The place behind the bracket that closes the one at `at`.
std::size_t behindBrackets(Tokens tokens, std::size_t at)
{
    int depth = 0;
    do {
        depth += step(tokens[at]);
        ++at;
    } while (at < tokens.size() && depth > 0);
    return at;
}

QString withoutEscapes(QString text)
{
    static const QRegularExpression escape(
        u"\\\\(?:x([0-9a-fA-F]+)|u([0-9a-fA-F]{4})|U([0-9a-fA-F]{8})|([0-7]{1,3})|(.))"_s,
        QRegularExpression::DotMatchesEverythingOption);
    static const QString controls = u"r\rn\nt\ta\ab\bf\fv\v"_s;
    for (auto match = escape.match(text); match.hasMatch();) {
        const int kind = match.lastCapturedIndex();
        QString meant = match.captured(kind);
        if (kind < 5) {
            const char32_t code = meant.toUInt(nullptr, kind == 4 ? 8 : 16);
            meant = QString::fromUcs4(&code, 1);
        } else if (const qsizetype control = controls.indexOf(meant); control >= 0) {
            meant = controls[control + 1];
        }
        text.replace(match.capturedStart(), match.capturedLength(), meant);
        match = escape.match(text, match.capturedStart() + meant.size());
    }
    return text;
}

/// The end of the summand that begins at `at`.
std::size_t behindSummand(Tokens tokens, std::size_t at)
{
    static const QStringList ends = {u"+"_s,  u","_s,  u";"_s,  u"?"_s,  u":"_s,
                                     u"<<"_s, u"=="_s, u"!="_s, u"&&"_s, u"||"_s};
    while (at < tokens.size() && step(tokens[at]) >= 0 && !isSignOf(tokens[at], ends))
        at = step(tokens[at]) > 0 ? behindBrackets(tokens, at) : at + 1;
    return at;
}

/// The texts in the order of the source, those added up with `+` as one.
QStringList textsOf(Tokens tokens)
{
    static const QRegularExpression holes(u"(?:%\\d|\uFFFC)+"_s);
    QStringList texts;
    std::vector<bool> taken(tokens.size());
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        if (tokens[i].kind != Token::Kind::Text || taken[i])
            continue;
        QString text;
        if (i > 0 && tokens[i - 1].isSign(u"+"))
            text += Hole;
        for (std::size_t at = i;; ++at) {
            const bool given = at < tokens.size() && tokens[at].kind == Token::Kind::Text;
            text += given ? tokens[at].text : QString(Hole);
            if (given)
                taken[at] = true;
            at = behindSummand(tokens, at);
            if (at >= tokens.size() || !tokens[at].isSign(u"+"))
                break;
        }
        texts << text.replace(holes, QString(Hole));
    }
    return texts;
}

QStringList wordsOf(Tokens tokens)
{
    QSet<QString> words;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        // The word in `.title = …` is a field, not what is called `title` elsewhere.
        const bool field =
            i > 0 && i + 1 < tokens.size() && tokens[i - 1].isSign(u".") && tokens[i + 1].isSign(u"=");
        if (tokens[i].kind != Token::Kind::Word || field)
            continue;
        words << tokens[i].text;
        if (i > 1 && tokens[i - 1].isSign(u"::"))
            words << tokens[i - 2].text + u"::"_s + tokens[i].text;
    }
    return words.values();
}

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

    void readDeclaration(const QString& scope, bool inSlots)
    {
        static const QStringList holders = {u"namespace"_s, u"class"_s, u"struct"_s, u"union"_s};
        if (atWord(u"template"))
            skipTemplateParameters();
        const std::size_t begin = m_at;
        Declaration made{.scope = scope, .name = {}, .texts = {}, .words = {}};
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
            if (token.isSign(u"=") && word != u"operator"_s)
                assigned = true;
            if (!named && (token.isSign(u"(") || token.isSign(u"{") || token.isSign(u"="))) {
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
        m_found.push_back(std::move(made));
    }

    Tokens m_tokens;
    std::size_t m_at = 0;
    std::vector<Declaration> m_found;
};

} // namespace

Source readSource(const QString& content)
{
    static const QRegularExpression piece(
        u"(?:\\s++|//[^\\n]*+|/\\*.*?\\*/)*+(?:#(?:\\s*include\\s+\"([^\"]+)\"|\\\\\\n|[^\\n])*+"
        u"|(?:u8|[uUL])?(?:R\"([^(\\s]*)\\((.*?)\\)\\2\"|\"((?:[^\"\\\\]++|\\\\.)*+)\")\\w*"
        u"|(\\d[\\w']*)|((?:u8|[uUL])?'(?:[^'\\\\]|\\\\.)+')|(\\w+)"
        u"|(::|->|<<|[=!]=|&&|\\|\\||\\+[+=]|.)|\\z)"_s,
        QRegularExpression::DotMatchesEverythingOption);
    Source source;
    std::vector<Token> tokens;
    const auto addText = [&](const QString& text) {
        if (!tokens.empty() && tokens.back().kind == Token::Kind::Text)
            tokens.back().text += text;
        else
            tokens.push_back({Token::Kind::Text, text});
    };
    for (auto pieces = piece.globalMatch(content); pieces.hasNext();) {
        const auto match = pieces.next();
        const int kind = match.lastCapturedIndex();
        if (kind == 1)
            source.includes << match.captured(1);
        else if (kind == 3)
            addText(match.captured(3));
        else if (kind == 4)
            addText(withoutEscapes(match.captured(4)));
        else if (kind > 0) // a character is a sign, too: it says nothing to people
            tokens.push_back({kind == 7 ? Token::Kind::Word : Token::Kind::Sign, match.captured(kind)});
        // What this macro makes of a text is a text like any other.
        const std::size_t count = tokens.size();
        if (count > 3 && tokens[count - 4].isWord(u"QStringLiteral") &&
            tokens[count - 2].kind == Token::Kind::Text && tokens[count - 1].isSign(u")")) {
            const QString text = tokens[count - 2].text;
            tokens.resize(count - 4);
            addText(text);
        }
    }
    source.declarations = DeclarationReader(tokens).read();
    return source;
}

} // namespace quillon::traceability

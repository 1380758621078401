#include "tools/traceability/tokens.h"

#include <QRegularExpression>
#include <QSet>

using namespace Qt::Literals::StringLiterals;

namespace quillon::traceability
{

namespace
{

bool isSignOf(const Token& token, const QStringList& signs)
{
    return token.kind == Token::Kind::Sign && signs.contains(token.text);
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

} // namespace

int step(const Token& token)
{
    if (token.kind != Token::Kind::Sign || token.text.size() != 1)
        return 0;
    switch (token.text[0].unicode()) {
    case u'(':
    case u'[':
    case u'{':
        return 1;
    case u')':
    case u']':
    case u'}':
        return -1;
    default:
        return 0;
    }
}

std::size_t behindBrackets(Tokens tokens, std::size_t at)
{
    int depth = 0;
    do {
        depth += step(tokens[at]);
        ++at;
    } while (at < tokens.size() && depth > 0);
    return at;
}

namespace
{

/// The end of the summand that begins at `at`.
std::size_t behindSummand(Tokens tokens, std::size_t at)
{
    static const QStringList ends = {u"+"_s,  u","_s,  u";"_s,  u"?"_s,  u":"_s,
                                     u"<<"_s, u"=="_s, u"!="_s, u"&&"_s, u"||"_s};
    while (at < tokens.size() && step(tokens[at]) >= 0 && !isSignOf(tokens[at], ends))
        at = step(tokens[at]) > 0 ? behindBrackets(tokens, at) : at + 1;
    return at;
}

} // namespace

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

std::vector<Token> tokensOf(const QString& content, QStringList& includes)
{
    static const QRegularExpression piece(
        u"(?:\\s++|//[^\\n]*+|/\\*.*?\\*/)*+(?:#(?:\\s*include\\s+\"([^\"]+)\"|\\\\\\n|[^\\n])*+"
        u"|(?:u8|[uUL])?(?:R\"([^(\\s]*)\\((.*?)\\)\\2\"|\"((?:[^\"\\\\]++|\\\\.)*+)\")\\w*"
        u"|(\\d[\\w']*)|((?:u8|[uUL])?'(?:[^'\\\\]|\\\\.)+')|(\\w+)"
        u"|(::|->|<<|[=!]=|&&|\\|\\||\\+[+=]|.)|\\z)"_s,
        QRegularExpression::DotMatchesEverythingOption);
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
            includes << match.captured(1);
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
    return tokens;
}

} // namespace quillon::traceability

#include "tools/traceability/calls.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::traceability
{

bool isSign(Tokens tokens, std::size_t at, QStringView sign)
{
    return at < tokens.size() && tokens[at].isSign(sign);
}
bool isWord(Tokens tokens, std::size_t at)
{
    return at < tokens.size() && tokens[at].isWord();
}
bool isMemberAccess(Tokens tokens, std::size_t at)
{
    return isSign(tokens, at, u".") || isSign(tokens, at, u"->");
}

Tokens insideBrackets(Tokens tokens, std::size_t open)
{
    const std::size_t end = behindBrackets(tokens, open);
    return tokens.subspan(open + 1, end > open + 1 ? end - open - 2 : 0);
}

std::size_t nextOf(Tokens tokens, std::size_t at, const QStringList& signs)
{
    while (at < tokens.size() && step(tokens[at]) >= 0) {
        if (tokens[at].kind == Token::Kind::Sign && signs.contains(tokens[at].text))
            return at;
        at = step(tokens[at]) > 0 ? behindBrackets(tokens, at) : at + 1;
    }
    return at;
}

std::vector<Tokens> splitAt(Tokens tokens, const QString& sign)
{
    std::vector<Tokens> parts;
    for (std::size_t begin = 0; begin < tokens.size();) {
        const std::size_t end = nextOf(tokens, begin, {sign});
        parts.push_back(tokens.subspan(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

std::size_t argumentsOf(Tokens tokens, std::size_t at)
{
    std::size_t open = at + 1;
    if (isSign(tokens, open, u"<")) {
        int depth = 0;
        do {
            depth += isSign(tokens, open, u"<") ? 1 : isSign(tokens, open, u">") ? -1 : 0;
            ++open;
        } while (depth > 0 && open < tokens.size() && step(tokens[open]) == 0 && !isSign(tokens, open, u";"));
    }
    return isSign(tokens, open, u"(") ? open : 0;
}

QStringList parameterNames(Tokens parameters)
{
    QStringList names;
    QString word;
    int depth = 0;
    bool given = false; // behind "=" stands a value
    for (const Token& token : parameters) {
        depth += step(token) + (token.isSign(u"<") ? 1 : token.isSign(u">") ? -1 : 0);
        if (depth == 0 && token.isSign(u",")) {
            names << word;
            word.clear();
            given = false;
        }
        given |= token.isSign(u"=");
        if (token.isWord() && !given && depth == 0)
            word = token.text;
    }
    return word.isEmpty() ? names : names << word;
}

Function functionOf(const Declaration& declaration)
{
    const Tokens tokens(declaration.tokens);
    Function function;
    for (std::size_t at = 0; at < tokens.size();) {
        if (function.parameters.data() == nullptr && isSign(tokens, at, u"(") && at > 0 &&
            tokens[at - 1].isWord(declaration.name))
            function.parameters = insideBrackets(tokens, at);
        else if (function.parameters.data() != nullptr && isSign(tokens, at, u"{"))
            function.body = insideBrackets(tokens, at);
        at = step(tokens[at]) > 0 ? behindBrackets(tokens, at) : at + 1;
    }
    return function;
}

Lambda lambdaAt(Tokens tokens, std::size_t at)
{
    if (!isSign(tokens, at, u"["))
        return {};
    // A bracket behind a value takes a part of it.
    if (at > 0 && (tokens[at - 1].isSign(u")") || tokens[at - 1].isSign(u"]") || tokens[at - 1].isText() ||
                   (tokens[at - 1].isWord() && !tokens[at - 1].isWord(u"return"))))
        return {};
    Lambda lambda;
    std::size_t next = behindBrackets(tokens, at);
    if (isSign(tokens, next, u"(")) {
        lambda.parameters = insideBrackets(tokens, next);
        next = behindBrackets(tokens, next);
    }
    while (next < tokens.size() && !isSign(tokens, next, u"{")) {
        const bool mayStand = tokens[next].isWord() || tokens[next].isSign(u"->") ||
                              tokens[next].isSign(u"::") || tokens[next].isSign(u"<") ||
                              tokens[next].isSign(u">") || tokens[next].isSign(u"&") ||
                              tokens[next].isSign(u"*");
        if (!mayStand)
            return {};
        ++next;
    }
    if (next >= tokens.size())
        return {};
    lambda.body = insideBrackets(tokens, next);
    lambda.end = behindBrackets(tokens, next);
    return lambda;
}

} // namespace quillon::traceability

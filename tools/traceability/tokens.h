#pragma once

#include <QString>
#include <QStringList>

#include <cstddef>
#include <span>
#include <vector>

/// The pieces of a C++ source, as far as reading its texts needs them.
namespace quillon::traceability
{

/// Stands in a text for what is only known when the program runs.
inline constexpr QChar Hole(0xfffc);

/// A word or a sign, or a text without its quotes and escapes; adjacent texts are one.
struct Token {
    enum class Kind { Word, Text, Sign };
    Kind kind = Kind::Sign;
    QString text;

    bool isWord() const { return kind == Kind::Word; }
    bool isWord(QStringView word) const { return isWord() && text == word; }
    bool isText() const { return kind == Kind::Text; }
    bool isSign(QStringView sign) const { return kind == Kind::Sign && text == sign; }
};
using Tokens = std::span<const Token>;

/// The tokens of a source. The names of the files that it includes in quotes go to `includes`.
std::vector<Token> tokensOf(const QString& content, QStringList& includes);

/// 1 at a bracket that opens, -1 at one that closes, else 0.
int step(const Token& token);
/// The place behind the bracket that closes the one at `at`.
std::size_t behindBrackets(Tokens tokens, std::size_t at);

/// The texts in the order of the source; those added up with `+` are one, with a hole for every other summand and for
/// `%1`.
QStringList textsOf(Tokens tokens);
/// What the tokens name, as `name` and as `scope::name`.
QStringList wordsOf(Tokens tokens);

} // namespace quillon::traceability

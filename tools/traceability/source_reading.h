#pragma once

#include <QString>
#include <QStringList>

#include <span>
#include <vector>

/// Reads C++ just well enough to find the declarations of a file and the texts in them.
namespace quillon::traceability
{

/// A word or a sign of a source, or a text without its quotes and escapes; adjacent texts are one.
struct Token {
    enum class Kind { Word, Text, Sign };
    Kind kind = Kind::Sign;
    QString text;

    bool isWord(QStringView word) const { return kind == Kind::Word && text == word; }
    bool isSign(QStringView sign) const { return kind == Kind::Sign && text == sign; }
};
using Tokens = std::span<const Token>;

/// A source without its comments and preprocessor lines.
struct Source {
    QStringList includes; // those in quotes
    std::vector<Token> tokens;
};

/// A function or a variable outside of functions.
struct Declaration {
    QString scope; // the namespace or class around it
    QString name;
    bool function = false;
    bool constant = false;
    bool slot = false;
    Tokens tokens; // all of them; the source must outlive them
};

/// Stands in a text for what is only known when the program runs.
inline constexpr QChar Hole(0xfffc);

Source readSource(const QString& content);

/// The declarations in the order of the source.
std::vector<Declaration> declarationsOf(const Source& source);

/// The texts in the order of the source. Texts added up with `+` are one, with a hole for every other summand and for
/// `%1`.
QStringList textsOf(Tokens tokens);

} // namespace quillon::traceability

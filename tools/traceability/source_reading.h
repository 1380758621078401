#pragma once

#include <QString>
#include <QStringList>

#include <vector>

/// Reads C++ just well enough to find the declarations of a file and what they say.
namespace quillon::traceability
{

/// Stands in a text for what is only known when the program runs.
inline constexpr QChar Hole(0xfffc);

/// A function or a variable outside of functions.
struct Declaration {
    QString scope; // the namespace or class around it
    QString name;
    bool function = false;
    bool constant = false;
    bool slot = false;
    /// The texts in their order, adjacent ones joined, without escapes. Texts added up with `+` are one, with a hole
    /// for every other summand and for `%1`.
    QStringList texts;
    /// Whatever else it names, as `name` and as `scope::name`.
    QStringList words;
};

struct Source {
    QStringList includes; // those in quotes
    std::vector<Declaration> declarations;
};

Source readSource(const QString& content);

} // namespace quillon::traceability

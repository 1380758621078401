#pragma once

#include "tools/traceability/tokens.h"

#include <QString>
#include <QStringList>

#include <vector>

/// Reads C++ just well enough to find the declarations of a file and what they say.
namespace quillon::traceability
{

/// A function or a variable outside of functions.
struct Declaration {
    QString scope; // the namespace or class around it
    QString name;
    bool function = false;
    bool constant = false;
    bool slot = false;
    QStringList texts; // see `textsOf`
    QStringList words; // whatever else it names, see `wordsOf`
    std::vector<Token> tokens;
};

struct Source {
    QStringList includes; // those in quotes
    std::vector<Declaration> declarations;
};

Source readSource(const QString& content);

} // namespace quillon::traceability

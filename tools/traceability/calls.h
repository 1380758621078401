#pragma once

#include "tools/traceability/source_reading.h"

/// Finds calls, functions and lambdas among tokens.
namespace quillon::traceability
{

/// Whether such a token stands at a place; false behind the end.
bool isSign(Tokens tokens, std::size_t at, QStringView sign);
bool isWord(Tokens tokens, std::size_t at);
bool isMemberAccess(Tokens tokens, std::size_t at);

/// What stands between the bracket at `open` and the one that closes it.
Tokens insideBrackets(Tokens tokens, std::size_t open);
/// The place of the next of these signs outside of brackets, the end when there is none.
std::size_t nextOf(Tokens tokens, std::size_t at, const QStringList& signs);
std::vector<Tokens> splitAt(Tokens tokens, const QString& sign);

/// The place of the bracket with the arguments of a call that begins with the word at `at`, 0 when none does.
std::size_t argumentsOf(Tokens tokens, std::size_t at);
/// The names of parameters in their order.
QStringList parameterNames(Tokens parameters);

/// The body of a function and its parameters; empty when it is only declared.
struct Function {
    Tokens parameters;
    Tokens body;
};
Function functionOf(const Declaration& declaration);

/// A lambda: the place behind it, which is 0 when there is none, its parameters and its body.
struct Lambda {
    std::size_t end = 0;
    Tokens parameters;
    Tokens body;
};
Lambda lambdaAt(Tokens tokens, std::size_t at);

} // namespace quillon::traceability

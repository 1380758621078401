#pragma once

#include <QStringView>

namespace quillon::cli
{

// Long lists are written by these: texts go from the memory of the database straight to the output.

/// The most bytes that a text can take in either form.
inline qsizetype mostBytes(QStringView text)
{
    constexpr qsizetype OfEscapedUnit = 6;
    return OfEscapedUnit * text.size() + 2;
}

/// Writes a text as UTF-8; half a character becomes U+FFFD. Returns the end of what was written.
char* writeUtf8(char* to, QStringView text);

/// Writes a text as a JSON string, with its quotes; half a character stands as an escape, so that nothing is lost.
char* writeJson(char* to, QStringView text);

} // namespace quillon::cli

#pragma once

#include <QByteArray>

namespace quillon::cli
{

/// A line on a terminal that is written over itself, of characters that take one column each.
class OverwrittenLine
{
public:
    /// Where the terminal takes no escape sequences, what stood there is covered with blanks.
    explicit OverwrittenLine(bool takesEscapeSequences) : m_takesEscapeSequences(takesEscapeSequences) {}

    /// What is to be written so that the line shows another text.
    QByteArray replacedBy(const QByteArray& text);
    /// The same for no text; what follows begins the line.
    QByteArray cleared();

private:
    bool m_takesEscapeSequences;
    qsizetype m_columns = 0; // of what it shows
};

} // namespace quillon::cli

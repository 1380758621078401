#pragma once

#include <QString>
#include <QStringView>

namespace quillon::cli
{

/// The columns that a text takes on a terminal: two for a full-width character.
int columnsOf(QStringView text);

/// A text on one line and without signs that would steer the terminal.
QString onePrintedLine(QStringView text);
/// The same with its line breaks.
QString printedLines(QStringView text);

/// A text with so many blanks behind it that it takes `columns`.
QString padded(const QString& text, int columns);

/// A text that takes at most `columns`; what is cut off is told by "…".
QString elided(const QString& text, int columns);

} // namespace quillon::cli

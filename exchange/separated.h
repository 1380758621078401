#pragma once

#include <QString>
#include <QStringList>

namespace quillon::exchange
{

// Several texts in one, such as the names on the way to a category ("自然/地形"). In a text, a backslash stands before
// every separator and every backslash.

/// Joins texts with a separator; `separators` are all that must not be taken for one.
QString joined(const QStringList& texts, QChar separator, const QString& separators);
/// Splits at any of some separators; the parts keep their backslashes and lose the blanks around them. Empty parts are
/// left out.
QStringList splitAt(const QString& text, const QString& separators);
/// A part without its backslashes.
QString plain(const QString& part);

/// The names on a way as one text, and back.
QString textOfWay(const QStringList& way);
QStringList wayOfText(const QString& text);

} // namespace quillon::exchange

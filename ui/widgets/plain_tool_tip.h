#pragma once

#include <QString>

namespace quillon
{

/// A tool tip that shows a text as it stands, also one that reads like markup. Long texts are broken into lines.
inline QString plainToolTip(const QString& text)
{
    constexpr qsizetype LongestLine = 60;
    if (text.size() <= LongestLine && !text.contains(u'<') && !text.contains(u'&'))
        return text;
    return QStringLiteral("<p style=\"white-space:pre-wrap\">") + text.toHtmlEscaped() +
           QStringLiteral("</p>");
}

} // namespace quillon

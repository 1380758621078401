#include "ui/widgets/one_line_delegate.h"

namespace quillon
{

namespace
{

// No window is so wide; laying out a whole document in a cell would only cost time.
constexpr qsizetype LongestShown = 1000;

bool breaksTheLine(QChar unit)
{
    return unit.category() == QChar::Other_Control || unit == QChar::LineSeparator ||
           unit == QChar::ParagraphSeparator;
}

} // namespace

QString OneLineDelegate::displayText(const QVariant& value, const QLocale& /*locale*/) const
{
    QString text = value.toString().left(LongestShown);
    for (QChar& unit : text) {
        if (breaksTheLine(unit))
            unit = u' ';
    }
    return text;
}

} // namespace quillon

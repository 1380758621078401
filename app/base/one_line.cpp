#include "app/base/one_line.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

bool breaksLine(QChar character)
{
    constexpr char16_t NextLine = 0x85;
    const auto code = character.unicode();
    return (code >= u'\t' && code <= u'\r') || code == NextLine || code == QChar::LineSeparator ||
           code == QChar::ParagraphSeparator;
}

} // namespace

QString onOneLine(QString text)
{
    text.replace(u"\r\n"_s, u" "_s);
    std::replace_if(text.begin(), text.end(), breaksLine, QChar(u' '));
    return text;
}

} // namespace quillon

#include "app/cli/overwritten_line.h"

#include <utility>

namespace quillon::cli
{

QByteArray OverwrittenLine::replacedBy(const QByteArray& text)
{
    const qsizetype before = std::exchange(m_columns, text.size());
    return '\r' + (m_takesEscapeSequences ? text + "\033[K" : text.leftJustified(before));
}

QByteArray OverwrittenLine::cleared()
{
    const QByteArray line = replacedBy({});
    return m_takesEscapeSequences ? line : line + '\r';
}

} // namespace quillon::cli

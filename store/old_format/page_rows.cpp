#include "store/old_format/page_rows.h"

#include "store/old_format/little_endian.h"

namespace quillon::old_format
{

namespace
{

constexpr quint16 OffsetMask = 0x1FFF;
constexpr quint16 PointerFlag = 0x4000;
constexpr quint16 SkipFlag = 0x8000;

} // namespace

PageRows::PageRows(const Pages& pages, QByteArrayView page)
    : m_page(page), m_offsetsAt(pages.isFormatThree() ? 10 : 14)
{
    const qsizetype said = numberAt<quint16>(page, m_offsetsAt - 2);
    const qsizetype room = (page.size() - m_offsetsAt) / 2;
    m_isOverfull = said > room;
    m_count = static_cast<int>(m_isOverfull ? 0 : said);
}

qsizetype PageRows::offsetOf(int number) const
{
    return numberAt<quint16>(m_page, m_offsetsAt + qsizetype{2} * number) & OffsetMask;
}

std::optional<PageRow> PageRows::row(int number) const
{
    if (number < 0 || number >= m_count)
        return std::nullopt;
    // Rows grow from the end of the page towards the table of their offsets.
    const qsizetype end = number == 0 ? m_page.size() : offsetOf(number - 1);
    const qsizetype start = offsetOf(number);
    if (end > m_page.size() || start > end || start < m_offsetsAt + qsizetype{2} * m_count)
        return std::nullopt;
    const auto entry = numberAt<quint16>(m_page, m_offsetsAt + qsizetype{2} * number);
    return PageRow{.bytes = m_page.sliced(start, end - start),
                   .isPointer = (entry & PointerFlag) != 0,
                   .isSkipped = (entry & SkipFlag) != 0};
}

} // namespace quillon::old_format

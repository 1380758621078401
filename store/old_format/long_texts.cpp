#include "store/old_format/long_texts.h"

#include "store/old_format/little_endian.h"

#include <algorithm>

namespace quillon::old_format
{

namespace
{

constexpr qsizetype PointerAt = 4;
constexpr qsizetype InlineAt = 12;
constexpr quint32 InlineFlag = 0x8000'0000;
constexpr quint32 OneRowFlag = 0x4000'0000;
constexpr quint32 LengthMask = 0x3FFF'FFFF;
constexpr qsizetype BytesOfNext = 4;

} // namespace

LongTexts::Found LongTexts::follow(QByteArrayView field)
{
    if (field.size() < InlineAt)
        return {.bytes = {}, .isWhole = false};
    const auto lengthAndFlags = numberAt<quint32>(field, 0);
    const qsizetype length = lengthAndFlags & LengthMask;
    Found found;
    if ((lengthAndFlags & InlineFlag) != 0) {
        found.bytes = field.sliced(InlineAt).toByteArray();
        found.isWhole = found.bytes.size() == length && (lengthAndFlags & OneRowFlag) == 0;
        return found;
    }
    RowPointer pointer{numberAt<quint32>(field, PointerAt)};
    if ((lengthAndFlags & OneRowFlag) != 0) {
        if (const auto bytes = part(pointer))
            found.bytes = bytes->toByteArray();
        found.isWhole = found.bytes.size() == length;
        return found;
    }
    while (pointer.value != 0) {
        const auto bytes = part(pointer);
        if (!bytes || bytes->size() < BytesOfNext)
            return {.bytes = found.bytes, .isWhole = false};
        pointer.value = numberAt<quint32>(*bytes, 0);
        found.bytes += bytes->sliced(BytesOfNext);
        if (found.bytes.size() > length)
            return {.bytes = found.bytes.first(length), .isWhole = false};
    }
    found.isWhole = found.bytes.size() == length;
    return found;
}

std::optional<QByteArrayView> LongTexts::part(RowPointer pointer)
{
    const QByteArrayView page = m_pages.dataPage(pointer.page(), Pages::LongTexts);
    if (page.isEmpty())
        return std::nullopt;
    const auto row = PageRows(m_pages, page).row(pointer.row());
    if (!row || row->isPointer || row->isSkipped || m_taken.contains(pointer.value))
        return std::nullopt;
    m_taken.insert(pointer.value);
    return row->bytes;
}

} // namespace quillon::old_format

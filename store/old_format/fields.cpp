#include "store/old_format/fields.h"

#include "store/old_format/little_endian.h"

#include <algorithm>

namespace quillon::old_format
{

qsizetype Fields::countAt(qsizetype at) const
{
    return m_isThree ? byteAt(m_row, at) : numberAt<quint16>(m_row, at);
}

bool Fields::read(QByteArrayView row)
{
    // From the front: how many columns, the fields of fixed length, the others. From the end: which are null, how many
    // are of variable length, where they lie.
    m_row = row;
    if (!holds(row, 0, bytesOfCount()))
        return false;
    m_columns = countAt(0);
    m_nullsAt = row.size() - (m_columns + 7) / 8;
    const qsizetype variableCountAt = m_nullsAt - bytesOfCount();
    if (variableCountAt < bytesOfCount())
        return false;
    const qsizetype variableCount = countAt(variableCountAt);
    return variableCount <= m_columns && readOffsets(variableCount, variableCountAt);
}

bool Fields::readOffsets(qsizetype count, qsizetype countAt)
{
    // An offset of one byte leaves out how many times 256 there are; a table names the fields before which they grow.
    constexpr qsizetype Step = 256;
    const qsizetype jumps = m_isThree ? (m_row.size() - 1) / Step : 0;
    const qsizetype width = bytesOfCount();
    const qsizetype end = countAt - jumps - (count + 1) * width;
    if (end < width)
        return false;
    m_offsets.resize(static_cast<std::size_t>(count) + 1);
    qsizetype least = width;
    for (qsizetype i = 0; i <= count; ++i) {
        qsizetype offset = this->countAt(countAt - jumps - (i + 1) * width);
        for (qsizetype jump = 0; jump < jumps; ++jump)
            offset += byteAt(m_row, countAt - 1 - jump) <= i ? Step : 0;
        if (offset < least || offset > end)
            return false;
        m_offsets[static_cast<std::size_t>(i)] = least = offset;
    }
    // What a row has lost in length when it was written anew stays behind its fields, as zeros.
    const QByteArrayView slack = m_row.sliced(least, end - least);
    m_hasStrayBytes = std::any_of(slack.begin(), slack.end(), [](char byte) { return byte != 0; });
    // Where no field is of fixed length, the others begin at once.
    return count < m_columns || m_offsets.front() == width;
}

Fields::Field Fields::field(const Column& column) const
{
    const auto index = static_cast<std::size_t>(column.variableIndex);
    const bool hasPlace = index + 1 < m_offsets.size();
    // A row that was written before the table got the column.
    if (column.number >= m_columns)
        return {.kind = !column.isFixed && hasPlace ? Kind::Damaged : Kind::Null};
    const unsigned int bit = 1U << (column.number % 8);
    const bool isNull = (byteAt(m_row, m_nullsAt + column.number / 8) & bit) == 0;
    if (column.isFixed) {
        if (isNull)
            return {.kind = Kind::Null};
        const qsizetype at = bytesOfCount() + column.fixedOffset;
        if (!holds(m_row.first(m_offsets.front()), at, column.size))
            return {.kind = Kind::Damaged};
        return {.kind = Kind::Value, .bytes = m_row.sliced(at, column.size)};
    }
    if (!hasPlace)
        return {.kind = isNull ? Kind::Null : Kind::Damaged};
    const qsizetype start = m_offsets[index];
    const qsizetype length = m_offsets[index + 1] - start;
    if (isNull && length != 0)
        return {.kind = Kind::Damaged};
    return {.kind = isNull ? Kind::Null : Kind::Value, .bytes = m_row.sliced(start, length)};
}

} // namespace quillon::old_format

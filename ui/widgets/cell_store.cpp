#include "ui/widgets/cell_store.h"

#include "app/base/error.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace quillon
{

namespace
{

// A cell is its length in one unit and then its text; longer ones have this mark and two units of length.
constexpr char16_t LongMark = 0xFFFF;

template <class T> void keepOnly(std::vector<T>& cells, const std::vector<bool>& keep)
{
    std::size_t kept = 0;
    for (std::size_t row = 0; row < cells.size(); ++row) {
        if (keep[row])
            cells[kept++] = cells[row];
    }
    cells.resize(kept);
}

/// Only where it pays: giving back memory means copying what is left.
template <class T> void shrinkVector(std::vector<T>& cells)
{
    try {
        if (cells.capacity() - cells.size() > cells.size() / 64)
            cells.shrink_to_fit();
    } catch (const std::bad_alloc&) {
        // Without memory for a copy they stay where they are.
    }
}

} // namespace

void TextColumn::makeRoom(qsizetype units)
{
    const auto capacity = static_cast<qsizetype>(m_chunks.size()) << ChunkBits;
    if (m_used + units <= capacity && (m_used >> ChunkBits) == ((m_used + units - 1) >> ChunkBits))
        return;
    const qsizetype needed = (units + ChunkUnits - 1) >> ChunkBits;
    if ((capacity + (needed << ChunkBits)) > (qsizetype(1) << 32))
        throw Error(errors::OutOfMemory);
    m_used = capacity;
    // NOLINTNEXTLINE(modernize-avoid-c-arrays): as the member it goes to
    m_owned.push_back(std::make_unique_for_overwrite<char16_t[]>(std::size_t(needed << ChunkBits)));
    for (qsizetype chunk = 0; chunk < needed; ++chunk)
        m_chunks.push_back(m_owned.back().get() + (chunk << ChunkBits));
}

quint32 TextColumn::place(QStringView text)
{
    const qsizetype length = text.size();
    const bool isLong = length >= LongMark;
    const qsizetype units = length + (isLong ? 3 : 1);
    if (length > std::numeric_limits<qint32>::max())
        throw Error(errors::OutOfMemory);
    makeRoom(units);
    const qsizetype offset = m_used;
    m_used += units;
    char16_t* cell = m_chunks[static_cast<std::size_t>(offset >> ChunkBits)] + (offset & (ChunkUnits - 1));
    if (isLong) {
        *cell++ = LongMark;
        *cell++ = static_cast<char16_t>(length >> 16);
        *cell++ = static_cast<char16_t>(length & 0xFFFF);
    } else {
        *cell++ = static_cast<char16_t>(length);
    }
    if (length > 0)
        std::memcpy(cell, text.utf16(), static_cast<std::size_t>(length) * sizeof(char16_t));
    return static_cast<quint32>(offset);
}

void TextColumn::append(QStringView text)
{
    m_offsets.push_back(place(text));
}

QStringView TextColumn::at(int row) const
{
    const quint32 offset = m_offsets[static_cast<std::size_t>(row)];
    const char16_t* cell = m_chunks[offset >> ChunkBits] + (offset & (ChunkUnits - 1));
    qsizetype length = *cell++;
    if (length == LongMark) {
        length = (qsizetype(cell[0]) << 16) | cell[1];
        cell += 2;
    }
    return {cell, length};
}

void TextColumn::set(int row, QStringView text)
{
    const qsizetype before = at(row).size() + 1;
    m_offsets[static_cast<std::size_t>(row)] = place(text);
    m_wasted += before;
}

void TextColumn::clear()
{
    *this = TextColumn();
}

void TextColumn::retain(const std::vector<bool>& keep)
{
    for (int row = 0; row < size(); ++row) {
        if (!keep[static_cast<std::size_t>(row)])
            m_wasted += at(row).size() + 1;
    }
    keepOnly(m_offsets, keep);
    // Texts are moved together only when half of them are gone; until then removing is cheap.
    if (m_wasted <= m_used / 2)
        return;
    TextColumn fresh;
    fresh.m_offsets.reserve(m_offsets.size());
    for (int row = 0; row < size(); ++row)
        fresh.append(at(row));
    *this = std::move(fresh);
}

void TextColumn::shrink()
{
    shrinkVector(m_offsets);
}

qsizetype TextColumn::bytesHeld() const
{
    return static_cast<qsizetype>(m_chunks.size() * (ChunkUnits * sizeof(char16_t) + sizeof(char16_t*)) +
                                  m_owned.capacity() * sizeof(m_owned[0]) +
                                  m_offsets.capacity() * sizeof(quint32));
}

quint16 DictionaryColumn::numberOf(QStringView word)
{
    if (m_last < m_words.size() && m_words[m_last] == word)
        return m_last;
    constexpr std::size_t Few = 8; // found faster by comparing them all than by a hash
    const auto among = m_words.begin() + static_cast<std::ptrdiff_t>(std::min(m_words.size(), Few));
    if (const auto found = std::find(m_words.begin(), among, word); found != among) {
        m_last = static_cast<quint16>(found - m_words.begin());
        return m_last;
    }
    const auto known = m_numbers.constFind(QString::fromRawData(word.data(), word.size()));
    if (known != m_numbers.constEnd()) {
        m_last = *known;
        return m_last;
    }
    if (m_words.size() > std::numeric_limits<quint16>::max())
        throw Error(errors::Overflow);
    m_last = static_cast<quint16>(m_words.size());
    m_words.push_back(word.toString());
    m_numbers.insert(m_words.back(), m_last);
    return m_last;
}

void DictionaryColumn::append(QStringView word)
{
    m_cells.push_back(numberOf(word));
}

void DictionaryColumn::set(int row, QStringView word)
{
    m_cells[static_cast<std::size_t>(row)] = numberOf(word);
}

void DictionaryColumn::clear()
{
    *this = DictionaryColumn();
}

void DictionaryColumn::retain(const std::vector<bool>& keep)
{
    keepOnly(m_cells, keep);
}

void DictionaryColumn::shrink()
{
    shrinkVector(m_cells);
}

qsizetype DictionaryColumn::bytesHeld() const
{
    auto bytes = static_cast<qsizetype>(m_cells.capacity()) * qsizetype(sizeof(quint16));
    for (const QString& word : m_words)
        bytes += static_cast<qsizetype>(2 * sizeof(QString)) + word.size() * 2;
    return bytes;
}

} // namespace quillon

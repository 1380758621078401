#include "store/folded_texts.h"

#include "store/like_pattern.h"
#include "store/text_fold.h"
#include "store/text_scan.h"

#include <algorithm>

namespace quillon
{

namespace
{

constexpr std::size_t BlockUnits = std::size_t{4} << 20;

} // namespace

void FoldedTexts::Block::append(const Row& row)
{
    const QStringView name = row.name.value_or(QStringView());
    Place place{.number = row.number,
                .start = static_cast<quint32>(units.size()),
                .nameSize = Nothing,
                .textSize = Nothing,
                .storedStart = static_cast<quint32>(stored.size()),
                .storedNameSize = static_cast<quint32>(name.size()),
                .identifierSize = static_cast<quint32>(row.identifier.size())};
    const auto add = [&](const std::optional<QStringView>& text, quint32& size) {
        if (!text)
            return;
        size = static_cast<quint32>(foldInto(*text, units.roomFor(static_cast<std::size_t>(text->size()))));
        units.added(size);
    };
    add(row.name, place.nameSize);
    add(row.text, place.textSize);
    stored.insert(stored.end(), name.utf16(), name.utf16() + name.size());
    stored.insert(stored.end(), row.identifier.utf16(), row.identifier.utf16() + row.identifier.size());
    places.push_back(place);
}

void FoldedTexts::Block::visitName(const Place& place, const VisitName& visit) const
{
    if (place.storedStart == Nothing)
        return;
    const char16_t* const name = stored.data() + place.storedStart;
    visit({name, place.storedNameSize}, {name + place.storedNameSize, place.identifierSize});
}

FoldedTexts::Place* FoldedTexts::find(qint64 number)
{
    if (const auto later = m_laterPlaces.constFind(number); later != m_laterPlaces.cend())
        return &m_later.places[*later];
    const auto block =
        std::partition_point(m_blocks.begin(), m_blocks.end(), [number](const Block& candidate) {
            return candidate.places.back().number < number;
        });
    if (block == m_blocks.end())
        return nullptr;
    const auto place =
        std::partition_point(block->places.begin(), block->places.end(),
                             [number](const Place& candidate) { return candidate.number < number; });
    return place != block->places.end() && place->number == number ? &*place : nullptr;
}

void FoldedTexts::remove(qint64 number)
{
    Place* place = find(number);
    if (place == nullptr)
        return;
    // Its units stay and belong to nobody; a search that comes upon them passes over them.
    m_deadUnits += place->end() - place->start;
    place->nameSize = Nothing;
    place->textSize = Nothing;
    place->storedStart = Nothing;
    m_laterPlaces.remove(number);
}

void FoldedTexts::put(const Row& row)
{
    remove(row.number);
    const auto needed = static_cast<std::size_t>(row.name.value_or(QStringView()).size() +
                                                 row.text.value_or(QStringView()).size());
    if (!m_empty && row.number <= m_greatest) {
        m_laterPlaces.insert(row.number, m_later.places.size());
        m_later.append(row);
    } else {
        if (m_blocks.empty() || m_blocks.back().units.size() + needed > BlockUnits) {
            m_blocks.emplace_back();
            m_blocks.back().units.reserve(std::max(needed, BlockUnits));
        }
        m_blocks.back().append(row);
        m_greatest = row.number;
        m_empty = false;
    }
    m_units += static_cast<qsizetype>(needed);
}

void FoldedTexts::shrink()
{
    for (Block& block : m_blocks) {
        // Moving a nearly full block would cost more than it gives back.
        if (block.units.size() < block.units.capacity() / 8 * 7)
            block.units.shrink();
        block.stored.shrink_to_fit();
        block.places.shrink_to_fit();
    }
}

void FoldedTexts::collectHolding(const Block& block, QStringView needle, std::vector<qint64>& rows)
{
    const char16_t* const begin = block.units.data();
    const char16_t* const end = begin + block.units.size();
    const auto size = static_cast<std::size_t>(needle.size());
    std::size_t row = 0;
    const char16_t* from = begin;
    while ((from = findUnits(from, end, needle)) != end) {
        const auto position = static_cast<std::size_t>(from - begin);
        while (row + 1 < block.places.size() && block.places[row + 1].start <= position)
            ++row;
        const Place& place = block.places[row];
        // A hit must lie within one field: a name and its text, and a row and the next, only happen to touch.
        const std::size_t fieldEnd = position < place.textStart() ? place.textStart() : place.end();
        if (position + size > fieldEnd) {
            ++from;
            continue;
        }
        rows.push_back(place.number);
        if (row + 1 == block.places.size())
            return;
        from = begin + block.places[row + 1].start;
    }
}

void FoldedTexts::collectLike(const Block& block, const LikePattern& pattern, std::vector<qint64>& rows)
{
    for (const Place& place : block.places) {
        const auto matches = [&](quint32 start, quint32 size) {
            return size != Nothing && pattern.matchesComparable(block.at(start, size));
        };
        if (matches(place.start, place.nameSize) || matches(place.textStart(), place.textSize))
            rows.push_back(place.number);
    }
}

template <class Collect> std::vector<qint64> FoldedTexts::collect(Collect&& collectFrom) const
{
    std::vector<qint64> rows;
    for (const Block& block : m_blocks)
        collectFrom(block, rows);
    const auto inOrder = static_cast<std::ptrdiff_t>(rows.size());
    collectFrom(m_later, rows);
    std::sort(rows.begin() + inOrder, rows.end());
    std::inplace_merge(rows.begin(), rows.begin() + inOrder, rows.end());
    return rows;
}

std::vector<qint64> FoldedTexts::holding(QStringView needle) const
{
    return collect([&](const Block& block, std::vector<qint64>& rows) {
        if (!block.places.empty())
            collectHolding(block, needle, rows);
    });
}

std::vector<qint64> FoldedTexts::like(const LikePattern& pattern) const
{
    return collect([&](const Block& block, std::vector<qint64>& rows) { collectLike(block, pattern, rows); });
}

void FoldedTexts::forEachName(const std::vector<qint64>& rows, const VisitName& visit) const
{
    auto block = m_blocks.begin();
    std::size_t next = 0; // the first place of the block that has not been passed
    for (const qint64 row : rows) {
        if (const auto later = m_laterPlaces.constFind(row); later != m_laterPlaces.cend()) {
            m_later.visitName(m_later.places[*later], visit);
            continue;
        }
        for (; block != m_blocks.end() && block->places.back().number < row; ++block)
            next = 0;
        if (block == m_blocks.end())
            continue;
        // Rows that are looked for together mostly stand near each other: steps that double reach the next one soon.
        const std::vector<Place>& places = block->places;
        std::size_t step = 1;
        while (next + step < places.size() && places[next + step].number <= row) {
            next += step;
            step *= 2;
        }
        const auto end = places.begin() + static_cast<std::ptrdiff_t>(std::min(next + step, places.size()));
        const auto place =
            std::partition_point(places.begin() + static_cast<std::ptrdiff_t>(next), end,
                                 [row](const Place& candidate) { return candidate.number < row; });
        next = static_cast<std::size_t>(place - places.begin());
        if (place != places.end() && place->number == row)
            block->visitName(*place, visit);
    }
}

qsizetype FoldedTexts::bytesHeld() const
{
    const auto bytesOf = [](const Block& block) {
        return (block.units.capacity() + block.stored.capacity()) * sizeof(char16_t) +
               block.places.capacity() * sizeof(Place);
    };
    std::size_t bytes =
        bytesOf(m_later) + static_cast<std::size_t>(m_laterPlaces.capacity()) * 2 * sizeof(qint64);
    for (const Block& block : m_blocks)
        bytes += bytesOf(block);
    return static_cast<qsizetype>(bytes);
}

} // namespace quillon

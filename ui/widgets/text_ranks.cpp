#include "ui/widgets/text_ranks.h"

#include "app/base/platform/collation.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <string_view>

namespace quillon
{

namespace
{

/// Collation keys one after the other, compared byte by byte.
class Keys
{
public:
    void reserve(int count, qsizetype bytes)
    {
        m_starts.reserve(static_cast<std::size_t>(count) + 1);
        m_arena.reserve(static_cast<std::size_t>(bytes));
    }

    void append(QStringView text)
    {
        m_starts.push_back(m_arena.size());
        m_collator.appendKey(text, m_arena);
    }

    std::string_view at(quint32 row) const
    {
        const std::size_t end =
            row + std::size_t(1) < m_starts.size() ? m_starts[row + std::size_t(1)] : m_arena.size();
        return std::string_view(m_arena).substr(m_starts[row], end - m_starts[row]);
    }

    std::vector<quint32> ranks() const;

private:
    platform::Collator m_collator;
    std::string m_arena;
    std::vector<std::size_t> m_starts;
};

std::vector<quint32> Keys::ranks() const
{
    struct Entry {
        quint64 prefix; // the first bytes of the key decide most comparisons
        quint32 row;
    };
    std::vector<Entry> entries(m_starts.size());
    for (std::size_t row = 0; row < entries.size(); ++row) {
        const std::string_view key = at(static_cast<quint32>(row));
        std::array<char, sizeof(quint64)> bytes = {};
        std::memcpy(bytes.data(), key.data(), std::min(key.size(), bytes.size()));
        entries[row] = {qFromBigEndian<quint64>(bytes.data()), static_cast<quint32>(row)};
    }
    std::sort(entries.begin(), entries.end(), [this](const Entry& left, const Entry& right) {
        if (left.prefix != right.prefix)
            return left.prefix < right.prefix;
        return at(left.row) < at(right.row);
    });
    std::vector<quint32> ranks(entries.size());
    quint32 rank = 0;
    for (std::size_t place = 0; place < entries.size(); ++place) {
        if (place > 0 && (entries[place].prefix != entries[place - 1].prefix ||
                          at(entries[place].row) != at(entries[place - 1].row)))
            ++rank;
        ranks[entries[place].row] = rank;
    }
    return ranks;
}

} // namespace

std::vector<quint32> ranksOf(const TextColumn& cells)
{
    Keys keys;
    keys.reserve(cells.size(), qsizetype(cells.size()) * 32);
    for (int row = 0; row < cells.size(); ++row)
        keys.append(cells.at(row));
    return keys.ranks();
}

std::vector<quint32> ranksOf(const DictionaryColumn& cells)
{
    Keys keys;
    for (const QString& word : cells.words())
        keys.append(word);
    const std::vector<quint32> wordRanks = keys.ranks();
    std::vector<quint32> ranks(static_cast<std::size_t>(cells.size()));
    for (int row = 0; row < cells.size(); ++row)
        ranks[static_cast<std::size_t>(row)] = wordRanks[cells.wordNumber(row)];
    return ranks;
}

} // namespace quillon

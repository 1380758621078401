#pragma once

#include "store/text_buffer.h"

#include <QHash>
#include <QStringView>

#include <functional>
#include <limits>
#include <optional>
#include <vector>

namespace quillon
{

class LikePattern;

/// The names and texts of one table in memory, folded as a reader compares them, in the order of their rows. Names and
/// identifiers are there as they are stored, too, so that hits can be listed.
class FoldedTexts
{
public:
    /// A row as it is stored. A field that holds nothing at all matches no pattern, not even "*".
    struct Row {
        qint64 number = 0;
        std::optional<QStringView> name;
        std::optional<QStringView> text;
        QStringView identifier = {};
    };
    using VisitName = std::function<void(QStringView name, QStringView identifier)>;

    /// Adds a row, or replaces the one of this number.
    void put(const Row& row);
    /// Takes a row out, if it is there.
    void remove(qint64 number);
    /// Gives back memory that was only there to grow into.
    void shrink();

    /// The rows, ascending, in whose name or text `needle` (folded, at least one unit) stands.
    std::vector<qint64> holding(QStringView needle) const;
    /// The rows, ascending, whose name or text matches.
    std::vector<qint64> like(const LikePattern& pattern) const;

    /// Visits these rows (ascending) with their names and identifiers as they are stored; those that are not there are
    /// passed over.
    void forEachName(const std::vector<qint64>& rows, const VisitName& visit) const;

    /// Whether so much belongs to rows that were replaced or taken out that reading all of it anew pays.
    bool needsRebuilding() const { return m_deadUnits > m_units / 4; }
    /// Bytes held, for the benchmarks.
    qsizetype bytesHeld() const;
    /// Calls `visit` with every block of folded units, for the benchmarks.
    template <class Visit> void forEachBlock(Visit&& visit) const
    {
        for (const Block& block : m_blocks)
            visit(QStringView(block.units.data(), static_cast<qsizetype>(block.units.size())));
    }

private:
    static constexpr quint32 Nothing = 0xFFFFFFFF;

    struct Place {
        qint64 number;
        quint32 start; // of the name, in units; the text follows it
        quint32 nameSize;
        quint32 textSize;
        quint32
            storedStart; // of the name as it is stored; the identifier follows it. Nothing: the row is gone
        quint32 storedNameSize;
        quint32 identifierSize;

        quint32 textStart() const { return start + (nameSize == Nothing ? 0 : nameSize); }
        quint32 end() const { return textStart() + (textSize == Nothing ? 0 : textSize); }
    };
    /// Some megabytes of rows: small enough to grow without copying, large enough to be scanned in one go.
    struct Block {
        TextBuffer units;
        std::vector<char16_t> stored;
        std::vector<Place> places;

        void append(const Row& row);
        QStringView at(quint32 start, quint32 size) const { return {units.data() + start, size}; }
        void visitName(const Place& place, const VisitName& visit) const;
    };

    Place* find(qint64 number);
    static void collectHolding(const Block& block, QStringView needle, std::vector<qint64>& rows);
    static void collectLike(const Block& block, const LikePattern& pattern, std::vector<qint64>& rows);
    template <class Collect> std::vector<qint64> collect(Collect&& collectFrom) const;

    std::vector<Block> m_blocks; // by ascending number
    Block m_later;               // rows that came after greater ones, in the order of their coming
    QHash<qint64, std::size_t> m_laterPlaces;
    qint64 m_greatest = std::numeric_limits<qint64>::min();
    bool m_empty = true;
    qsizetype m_units = 0;
    qsizetype m_deadUnits = 0;
};

} // namespace quillon

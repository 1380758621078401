#include "store/text_places.h"

#include "store/text_fold.h"

#include <algorithm>

namespace quillon
{

namespace
{

/// Leads from the units of a folded text back to those of the text. To be asked from the beginning on.
class UnfoldedPositions
{
public:
    explicit UnfoldedPositions(QStringView text) : m_text(text) {}

    /// Where in the text that begins of which the unit at `folded` was made; the text's end for the end of the folded one.
    qsizetype of(qsizetype folded)
    {
        // By pieces, so that what lies between two places is passed over quickly.
        while (m_piece.endFolded <= folded && m_piece.end < m_text.size()) {
            m_at = {.position = m_piece.end, .folded = m_piece.endFolded};
            const QStringView piece = beginningThatFoldsAlone(m_text.sliced(m_piece.end), PieceUnits);
            m_piece = {.end = m_piece.end + piece.size(), .endFolded = m_piece.endFolded + foldedSize(piece)};
        }
        QStringView character;
        while (m_at.position < m_text.size()) {
            character = beginningThatFoldsAlone(m_text.sliced(m_at.position), 1);
            const qsizetype units = foldedSize(character);
            if (m_at.folded + units > folded)
                break;
            m_at.position += character.size();
            m_at.folded += units;
        }
        if (m_at.position == m_text.size())
            return m_at.position;
        // A character with marks that do not join it becomes several units.
        qsizetype length = 1;
        while (length < character.size() && m_at.folded + foldedSize(character.first(length)) <= folded)
            ++length;
        return m_at.position + length - 1;
    }

private:
    static constexpr qsizetype PieceUnits = 4096;

    qsizetype foldedSize(QStringView part)
    {
        m_room.resize(std::max(m_room.size(), static_cast<std::size_t>(part.size())));
        return foldInto(part, m_room.data());
    }

    QStringView m_text;
    struct {
        qsizetype end = 0;
        qsizetype endFolded = 0; // units that were made of what lies before its end
    } m_piece;
    struct {
        qsizetype position = 0;
        qsizetype folded = 0;
    } m_at; // a character in the piece, and the units that were made of what lies before it
    std::vector<char16_t> m_room;
};

} // namespace

std::vector<TextPlace> placesOf(QStringView wanted, QStringView text, std::size_t most)
{
    std::vector<TextPlace> places;
    const QString needle = foldedText(wanted);
    if (needle.isEmpty())
        return places;
    const QString folded = foldedText(text);
    UnfoldedPositions positions(text);
    qsizetype at = folded.indexOf(needle);
    while (at >= 0 && places.size() < most) {
        const qsizetype from = positions.of(at);
        const qsizetype end = positions.of(at + needle.size());
        places.push_back({.from = from, .length = end - from});
        at = folded.indexOf(needle, at + needle.size());
    }
    return places;
}

} // namespace quillon

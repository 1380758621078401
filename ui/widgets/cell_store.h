#pragma once

#include <QHash>
#include <QString>
#include <QStringView>

#include <memory>
#include <vector>

namespace quillon
{

/// Texts of one column of a long list in compact memory: six bytes and the text itself per cell.
class TextColumn
{
public:
    void append(QStringView text);
    QStringView at(int row) const;
    void set(int row, QStringView text);
    void clear();
    /// Drops the cells from `rows` on.
    void truncate(int rows) { m_offsets.resize(static_cast<std::size_t>(rows)); }
    int size() const { return static_cast<int>(m_offsets.size()); }
    /// Keeps the cells of which `keep` (one flag per row) says so.
    void retain(const std::vector<bool>& keep);
    /// Gives back memory that was only there to grow into.
    void shrink();
    /// Bytes held, for the benchmarks.
    qsizetype bytesHeld() const;

private:
    quint32 place(QStringView text);
    void makeRoom(qsizetype units);

    static constexpr int ChunkBits = 18;
    static constexpr qsizetype ChunkUnits = qsizetype(1) << ChunkBits;

    std::vector<char16_t*> m_chunks; // a long text takes several in a row
    // Plain arrays, because those of the library would fill them with zeros first.
    std::vector<std::unique_ptr<char16_t[]>> m_owned; // NOLINT(modernize-avoid-c-arrays)
    qsizetype m_used = 0;                             // units, over all chunks
    qsizetype m_wasted = 0;                           // units of cells that are gone
    std::vector<quint32> m_offsets;
};

/// Texts of one column that has few distinct ones, such as the kind: two bytes per cell.
/// More than 65,536 distinct ones are error 6.
class DictionaryColumn
{
public:
    void append(QStringView word);
    QStringView at(int row) const { return m_words[m_cells[static_cast<std::size_t>(row)]]; }
    void set(int row, QStringView word);
    void clear();
    void truncate(int rows) { m_cells.resize(static_cast<std::size_t>(rows)); }
    int size() const { return static_cast<int>(m_cells.size()); }
    void retain(const std::vector<bool>& keep);
    void shrink();
    qsizetype bytesHeld() const;

    /// The distinct words, and which of them a row holds.
    const std::vector<QString>& words() const { return m_words; }
    quint16 wordNumber(int row) const { return m_cells[static_cast<std::size_t>(row)]; }

private:
    quint16 numberOf(QStringView word);

    std::vector<QString> m_words;
    QHash<QString, quint16> m_numbers;
    quint16 m_last = 0; // neighbours mostly share their word
    std::vector<quint16> m_cells;
};

} // namespace quillon

#pragma once

#include <QHash>
#include <QString>
#include <QStringView>

#include <memory>
#include <vector>

namespace quillon {

/// Texts of one column of a long list in compact memory: six bytes and the text itself per cell.
class TextColumn {
public:
    void append(QStringView text);
    QStringView at(int row) const;
    void set(int row, QStringView text);
    void clear();
    int size() const { return static_cast<int>(m_offsets.size()); }
    /// Keeps the cells of which `keep` (one flag per row) says so.
    void retain(const std::vector<bool>& keep);
    /// Bytes held, for the benchmarks.
    qsizetype bytesHeld() const;

private:
    char16_t* place(qsizetype units, quint32& offset);

    static constexpr int ChunkBits = 18;
    std::vector<char16_t*> m_chunks; // a long text takes several in a row
    std::vector<std::unique_ptr<char16_t[]>> m_owned;
    qsizetype m_used = 0; // units, over all chunks
    std::vector<quint32> m_offsets;
};

/// Texts of one column that has few distinct ones, such as the kind: one or two bytes per cell.
class WordColumn {
public:
    void append(QStringView word);
    QStringView at(int row) const { return m_words[m_cells[static_cast<std::size_t>(row)]]; }
    void set(int row, QStringView word);
    void clear();
    int size() const { return static_cast<int>(m_cells.size()); }
    void retain(const std::vector<bool>& keep);
    qsizetype bytesHeld() const;

private:
    quint16 numberOf(QStringView word);

    std::vector<QString> m_words;
    QHash<QString, quint16> m_numbers;
    quint16 m_last = 0; // neighbours mostly share their word
    std::vector<quint16> m_cells;
};

} // namespace quillon

#pragma once

#include <QString>

#include <vector>

namespace quillon::old_format
{

/// Something of a file that could not be read.
struct Loss {
    QString table;  // empty: it concerns the whole file
    QString column; // empty: a whole row, or the table
    QString text;   // one sentence
};

/// All that could not be read of a file. A file that is nothing but damage is told as so and so many losses.
class Losses
{
public:
    /// As many are kept one by one.
    static constexpr std::size_t Most = 1000;

    void add(Loss loss)
    {
        if (m_kept.size() < Most)
            m_kept.push_back(std::move(loss));
        ++m_count;
    }
    /// Whether another one would only be counted, so that nobody need find words for it.
    bool isFull() const { return m_kept.size() >= Most; }
    const std::vector<Loss>& kept() const { return m_kept; }
    qint64 count() const { return m_count; }

private:
    std::vector<Loss> m_kept;
    qint64 m_count = 0;
};

} // namespace quillon::old_format

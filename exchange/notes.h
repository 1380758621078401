#pragma once

#include "exchange/report.h"

#include <QString>

#include <vector>

namespace quillon::exchange
{

/// The notes of an import while it is made: as many as somebody may read, and how many there were beyond.
class Notes
{
public:
    static constexpr std::size_t Most = 1000;

    void add(const QString& where, const QString& text)
    {
        if (m_notes.size() < Most)
            m_notes.push_back({.where = where, .text = text});
        else
            ++m_beyond;
    }
    /// More that nobody has kept one by one.
    void addBeyond(qint64 count) { m_beyond += count; }

    /// All of them, with a last one about those that were not kept.
    std::vector<Note> take();

private:
    std::vector<Note> m_notes;
    qint64 m_beyond = 0;
};

} // namespace quillon::exchange

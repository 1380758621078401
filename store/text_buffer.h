#pragma once

#include <QString>

#include <algorithm>

namespace quillon
{

/// Very many UTF-16 units behind each other, made to be searched from end to end.
class TextBuffer
{
public:
    const char16_t* data() const { return QStringView(m_room).utf16(); }
    std::size_t size() const { return static_cast<std::size_t>(m_size); }
    std::size_t capacity() const { return static_cast<std::size_t>(m_room.capacity()); }

    /// Makes room for at least so many units in all.
    void reserve(std::size_t units) { m_room.reserve(static_cast<qsizetype>(units)); }
    /// Room behind the last unit for `atMost` further ones; `added` then tells how many of them there are.
    char16_t* roomFor(std::size_t atMost)
    {
        const qsizetype needed = m_size + static_cast<qsizetype>(atMost);
        if (needed > m_room.size())
            m_room.resize(std::max(needed, m_room.capacity())); // which fills nothing
        return reinterpret_cast<char16_t*>(m_room.data()) + m_size;
    }
    void added(std::size_t units) { m_size += static_cast<qsizetype>(units); }
    /// Gives back the room behind the last unit.
    void shrink()
    {
        m_room.truncate(m_size);
        m_room.squeeze();
    }

private:
    QString m_room;
    qsizetype m_size = 0;
};

} // namespace quillon

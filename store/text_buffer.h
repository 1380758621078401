#pragma once

#include "app/base/platform/memory.h"

#include <cstddef>

namespace quillon
{

/// Very many UTF-16 units behind each other, made to be searched from end to end.
class TextBuffer
{
public:
    const char16_t* data() const { return static_cast<const char16_t*>(m_memory.get()); }
    std::size_t size() const { return m_size; }
    std::size_t capacity() const { return m_memory.get_deleter().bytes / sizeof(char16_t); }

    /// Makes room for at least so many units in all.
    void reserve(std::size_t units);
    /// Room behind the last unit for `atMost` further ones; `added` then tells how many of them there are.
    char16_t* roomFor(std::size_t atMost);
    void added(std::size_t units) { m_size += units; }
    /// Gives back the room behind the last unit.
    void shrink() { moveTo(m_size); }

private:
    void moveTo(std::size_t capacity);

    platform::LargeMemory m_memory;
    std::size_t m_size = 0;
};

} // namespace quillon

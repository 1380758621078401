#include "store/text_buffer.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace quillon
{

void TextBuffer::reserve(std::size_t units)
{
    if (units > capacity())
        moveTo(units);
}

char16_t* TextBuffer::roomFor(std::size_t atMost)
{
    if (m_size + atMost > capacity())
        moveTo(std::max(m_size + atMost, 2 * m_size));
    return static_cast<char16_t*>(m_memory.get()) + m_size;
}

void TextBuffer::moveTo(std::size_t capacity)
{
    platform::LargeMemory memory;
    if (capacity > 0)
        memory = platform::largeMemory(capacity * sizeof(char16_t));
    if (m_size > 0)
        std::memcpy(memory.get(), m_memory.get(), m_size * sizeof(char16_t));
    m_memory = std::move(memory);
}

} // namespace quillon

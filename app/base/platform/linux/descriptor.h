#pragma once

#include <unistd.h>

namespace quillon::platform
{

/// An open file of the system, or -1.
class Descriptor
{
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    ~Descriptor()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    operator int() const { return m_descriptor; }

private:
    int m_descriptor;
};

} // namespace quillon::platform

#include "app/base/platform/short_path.h"

#include "app/base/platform/windows/wide_text.h"

#include <cstring>

namespace quillon::platform
{

// The system takes long names where they are marked as such. It may have been told to take all of them; few have.

ShortPath::ShortPath(const QString& path) : m_fileName(path) {}

ShortPath::~ShortPath() = default;

std::optional<QByteArray> ShortPath::name() const
{
    return nativePath(m_fileName).toUtf8();
}

bool ShortPath::isNeeded(const QString& path, qsizetype ending, qsizetype /*most*/)
{
    constexpr qsizetype Most = 259; // characters; from fewer on `nativePath` marks them
    return path.size() + ending > Most;
}

bool ShortPath::isOne(const char* name)
{
    return std::strncmp(name, "\\\\?\\", 4) == 0;
}

} // namespace quillon::platform

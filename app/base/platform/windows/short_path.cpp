#include "app/base/platform/short_path.h"

namespace quillon::platform
{

// Names that are too long for a library are too long for most programs here.

ShortPath::ShortPath(const QString& /*path*/) {}

ShortPath::~ShortPath() = default;

std::optional<QByteArray> ShortPath::name() const
{
    return std::nullopt;
}

bool ShortPath::isOne(const char* /*name*/)
{
    return false;
}

} // namespace quillon::platform

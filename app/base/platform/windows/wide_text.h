#pragma once

#include <QString>

namespace quillon::platform
{

/// The text as the system's functions take it, as long as `text` lives.
inline const wchar_t* wide(const QString& text)
{
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

} // namespace quillon::platform

#pragma once

#include <QtGlobal>

#include <array>
#include <cstddef>

namespace quillon::platform
{

/// Bytes in code page 932 by UTF-16 code unit.
using LengthTable = std::array<quint8, 0x10000>;

/// Sets the lengths in which Windows' own conversion, best fits included, differs from tables that only know the
/// characters of the page.
inline void setWidthsOfWindows(LengthTable& lengths)
{
    // Written like ＜＜ ＞＞ ￣ μ ・ ， ヴ ￠ ￡ ￢, or what comes near to them.
    for (const char16_t fits : {u'\u00AB', u'\u00BB', u'\u00AF', u'\u00B5', u'\u00B7', u'\u00B8', u'\u3094',
                                u'\u00A2', u'\u00A3', u'\u00AC'})
        lengths[static_cast<std::size_t>(fits)] = 2;
    // The page has other code points for — ‖ − 〜; these become "?".
    for (const char16_t lacks : {u'\u2014', u'\u2016', u'\u2212', u'\u301C'})
        lengths[static_cast<std::size_t>(lacks)] = 1;
}

} // namespace quillon::platform

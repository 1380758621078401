#include "app/base/platform/code_page.h"

#include "app/base/platform/widths_of_windows.h"

#include <windows.h>

#include <algorithm>

namespace quillon::platform
{

namespace
{

constexpr UINT CodePage932 = 932;

/// How many bytes each UTF-16 code unit takes: units are converted independently of each other, because everything
/// that would need two of them is outside the page.
LengthTable makeLengthTable()
{
    LengthTable lengths;
    lengths.fill(1);
    for (int unit = 0; unit < 0x10000; ++unit) {
        if (QChar::isSurrogate(static_cast<char32_t>(unit)))
            continue;
        const wchar_t text = static_cast<wchar_t>(unit);
        char bytes[8];
        // Without what merely looks alike: a character that the page lacks is a "?".
        if (WideCharToMultiByte(CodePage932, WC_NO_BEST_FIT_CHARS, &text, 1, bytes, sizeof bytes, nullptr,
                                nullptr) == 2)
            lengths[static_cast<std::size_t>(unit)] = 2;
    }
    setWidthsOfWindows(lengths);
    return lengths;
}

/// The system has places of its own for the four bytes that the page leaves empty.
bool isForNoCharacter(QChar character)
{
    return character >= u'\uF8F0' && character <= u'\uF8F3';
}

} // namespace

qsizetype byteLength932(QStringView text)
{
    static const LengthTable lengths = makeLengthTable();
    qsizetype bytes = 0;
    for (const QChar unit : text)
        bytes += lengths[unit.unicode()];
    return bytes;
}

std::optional<QString> decode932(QByteArrayView bytes)
{
    if (bytes.isEmpty())
        return QString();
    const int size = static_cast<int>(bytes.size());
    const int length = MultiByteToWideChar(CodePage932, MB_ERR_INVALID_CHARS, bytes.data(), size, nullptr, 0);
    if (length == 0)
        return std::nullopt;
    QString text(length, Qt::Uninitialized);
    MultiByteToWideChar(CodePage932, MB_ERR_INVALID_CHARS, bytes.data(), size,
                        reinterpret_cast<wchar_t*>(text.data()), length);
    if (std::any_of(text.cbegin(), text.cend(), isForNoCharacter))
        return std::nullopt;
    return text;
}

QString decode932Forgivingly(QByteArrayView bytes)
{
    const int size = static_cast<int>(bytes.size());
    const int length = size == 0 ? 0 : MultiByteToWideChar(CodePage932, 0, bytes.data(), size, nullptr, 0);
    QString text(length, Qt::Uninitialized);
    if (length > 0)
        MultiByteToWideChar(CodePage932, 0, bytes.data(), size, reinterpret_cast<wchar_t*>(text.data()),
                            length);
    std::replace_if(text.begin(), text.end(), isForNoCharacter, QChar(u'・'));
    return text;
}

} // namespace quillon::platform

#include "app/cli/utf8.h"

#include <algorithm>
#include <string_view>

namespace quillon::cli
{

namespace
{

char byte(char32_t value)
{
    return static_cast<char>(static_cast<unsigned char>(value));
}

char* writeContinuation(char* to, char32_t code, int shift)
{
    constexpr char32_t Mark = 0x80;
    constexpr char32_t Bits = 0x3F;
    *to++ = byte(Mark | (code >> shift & Bits));
    return to;
}

char* writeCode(char* to, char32_t code)
{
    if (code < 0x80) {
        *to++ = byte(code);
    } else if (code < 0x800) {
        *to++ = byte(0xC0 | code >> 6);
        to = writeContinuation(to, code, 0);
    } else if (code < 0x10000) {
        *to++ = byte(0xE0 | code >> 12);
        to = writeContinuation(to, code, 6);
        to = writeContinuation(to, code, 0);
    } else {
        *to++ = byte(0xF0 | code >> 18);
        to = writeContinuation(to, code, 12);
        to = writeContinuation(to, code, 6);
        to = writeContinuation(to, code, 0);
    }
    return to;
}

char* writeEscape(char* to, char16_t unit)
{
    static constexpr std::string_view Digits = "0123456789abcdef";
    *to++ = '\\';
    *to++ = 'u';
    for (const int shift : {12, 8, 4, 0})
        *to++ = Digits[unit >> shift & 0xF];
    return to;
}

char* writeControl(char* to, char16_t unit)
{
    switch (unit) {
    case u'\n':
        *to++ = '\\';
        *to++ = 'n';
        return to;
    case u'\r':
        *to++ = '\\';
        *to++ = 'r';
        return to;
    case u'\t':
        *to++ = '\\';
        *to++ = 't';
        return to;
    default:
        return writeEscape(to, unit);
    }
}

/// Writes each character by `writeCode`, but those of ASCII by `ascii` and half ones by `half`.
template <class Ascii, class Half> char* write(char* to, QStringView text, Ascii&& ascii, Half&& half)
{
    const char16_t* unit = text.utf16();
    const char16_t* const end = unit + text.size();
    while (unit != end) {
        const char16_t code = *unit++;
        if (code < 0x80)
            to = ascii(to, code);
        else if (!QChar::isSurrogate(code))
            to = writeCode(to, code);
        else if (QChar::isHighSurrogate(code) && unit != end && QChar::isLowSurrogate(*unit))
            to = writeCode(to, QChar::surrogateToUcs4(code, *unit++));
        else
            to = half(to, code);
    }
    return to;
}

} // namespace

char* writeUtf8(char* to, QStringView text)
{
    const auto ascii = [](char* at, char16_t code) {
        *at++ = byte(code);
        return at;
    };
    const auto half = [](char* at, char16_t) { return writeCode(at, QChar::ReplacementCharacter); };
    return write(to, text, ascii, half);
}

char* writeJson(char* to, QStringView text)
{
    const auto ascii = [](char* at, char16_t code) {
        constexpr char16_t Delete = 0x7F;
        if (code < u' ' || code == Delete)
            return writeControl(at, code);
        if (code == u'"' || code == u'\\')
            *at++ = '\\';
        *at++ = byte(code);
        return at;
    };
    *to++ = '"';
    to = write(to, text, ascii, writeEscape);
    *to++ = '"';
    return to;
}

} // namespace quillon::cli

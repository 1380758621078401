#include "exchange/readable_text.h"

#include "app/base/platform/code_page.h"

#include <QStringDecoder>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

/// Goes through the lines of a text, whichever of LF, CR LF and CR ends them.
class Lines
{
public:
    /// The number of the first line that is not readable; nothing when all are.
    template <class IsReadable>
    static std::optional<qint64> firstBad(const TextPieces& forEachPiece, const IsReadable& isReadable)
    {
        qint64 line = 0;
        std::optional<qint64> bad;
        bool isFirst = true;
        forEachPiece([&](QByteArrayView piece) {
            qsizetype begin = isFirst && piece.startsWith("\xEF\xBB\xBF") ? 3 : 0;
            isFirst = false;
            while (begin < piece.size() && !bad) {
                const qsizetype end = endOfLine(piece, begin);
                ++line;
                if (!isReadable(piece.sliced(begin, end - begin)))
                    bad = line;
                begin = end;
            }
            return !bad;
        });
        return bad;
    }

private:
    static qsizetype endOfLine(QByteArrayView piece, qsizetype begin)
    {
        while (begin < piece.size()) {
            const char byte = piece[begin++];
            if (byte == '\n' || (byte == '\r' && (begin == piece.size() || piece[begin] != '\n')))
                return begin;
        }
        return begin;
    }
};

bool isAscii(QByteArrayView bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char byte) { return static_cast<uchar>(byte) < 0x80; });
}

/// In pairs of bytes only a byte too many is wrong. The number of its line, which is the last one.
std::optional<qint64> lineOfOddByte(const TextPieces& forEachPiece, TextEncoding encoding)
{
    QStringDecoder decoder(encoding == TextEncoding::Utf16LittleEndian ? QStringConverter::Utf16LE
                                                                       : QStringConverter::Utf16BE);
    qint64 bytes = 0;
    qint64 line = 1;
    forEachPiece([&](QByteArrayView piece) {
        bytes += piece.size();
        line += QString(decoder.decode(piece)).count(u'\n');
        return true;
    });
    return bytes % 2 == 0 ? std::nullopt : std::optional(line);
}

} // namespace

ReadableText lookAtText(const TextPieces& forEachPiece)
{
    const auto isUtf8 = [](QByteArrayView line) { return line.isValidUtf8(); };
    const auto is932 = [](QByteArrayView line) { return platform::decode932(line).has_value(); };
    ReadableText text{.encoding = tellEncoding(forEachPiece)};
    switch (text.encoding) {
    case TextEncoding::Utf8: // a mark says so; what follows may be anything
        text.badLine = Lines::firstBad(forEachPiece, isUtf8);
        break;
    case TextEncoding::Utf16LittleEndian:
    case TextEncoding::Utf16BigEndian:
        text.badLine = lineOfOddByte(forEachPiece, text.encoding);
        break;
    case TextEncoding::CodePage932:
        // Valid as this may be, a line that would be taken for UTF-8 if it stood alone comes from another text.
        text.badLine = Lines::firstBad(forEachPiece, [&](QByteArrayView line) {
            return tellEncoding([&](const auto& take) { take(line); }) != TextEncoding::Utf8 || isAscii(line);
        });
        break;
    case TextEncoding::NoneOfThese:
        // Most likely it is the encoding in which more of it can be read.
        text.badLine = std::max(Lines::firstBad(forEachPiece, isUtf8), Lines::firstBad(forEachPiece, is932));
        break;
    }
    return text;
}

QString badLineText(qint64 line)
{
    return u"%1 行目に文字として読み取れないバイトがあるため、取り込めません。"
           u"UTF-8、UTF-16 またはコードページ 932 で保存し直してください。"_s.arg(line);
}

} // namespace quillon::exchange

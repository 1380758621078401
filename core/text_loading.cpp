#include "core/text_loading.h"

#include "app/base/error.h"
#include "app/base/platform/code_page.h"
#include "app/base/ports/files.h"
#include "app/base/text_file.h"
#include "store/data_kinds.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// In code page 932, of what may be typed into a document.
qint64 contentBytes()
{
    return static_cast<qint64>(2 * data_kinds::document().limits.room);
}

Error tooLong(const DataKind& kind)
{
    if (&kind == &data_kinds::document())
        return {errors::Overflow,
                u"ファイルが大きすぎて読み込めません。"
                u"文献の内容に読み込めるのは全角で32,768文字までです。ファイルを分割してください。"_s};
    return {errors::Overflow, u"ファイルが大きすぎて読み込めません。"
                              u"定義に登録できるのは全角で127文字未満です。文献として登録してください。"_s};
}

} // namespace

qint64 mostBytesOfText()
{
    // The longest encoding of what fits is three bytes of UTF-8 for a half-width character, and a mark before them.
    return 3 * (contentBytes() + 1);
}

QString loadText(const Files& files, const QString& path, const DataKind& kind)
{
    try {
        return textOfBytes(files.readFile(path, mostBytesOfText()), kind);
    } catch (const Error& error) {
        if (error.number != errors::Overflow)
            throw;
        throw tooLong(kind);
    }
}

QString textOfBytes(QByteArrayView bytes, const DataKind& kind)
{
    if (bytes.size() > mostBytesOfText())
        throw tooLong(kind);
    QString text = decodeTextFile(bytes);
    if (platform::byteLength932(text) > contentBytes())
        throw tooLong(kind);
    return text;
}

} // namespace quillon

#include "app/base/extract_string.h"

#include "app/base/ports/dialogs.h"

#include <limits>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

// Positions count from 1 and are 16-bit.
constexpr qint16 LastPosition = std::numeric_limits<qint16>::max();

/// The position of the next occurrence at or after `start`, 0 when there is none.
qint16 positionOf(const QString& delimiter, const QString& text, qint16 start)
{
    // An empty delimiter stands everywhere, but not behind the text.
    if (start > text.size())
        return 0;
    const qsizetype position = text.indexOf(delimiter, start - 1) + 1;
    if (position > LastPosition)
        throw Error(errors::Overflow);
    return static_cast<qint16>(position);
}

qint16 after(qint16 position)
{
    if (position == LastPosition)
        throw Error(errors::Overflow);
    return static_cast<qint16>(position + 1);
}

} // namespace

QString ExtractString(Reporting& reporting, const QString& text, const QString& delimiter)
{
    QString result;
    guarded(reporting, u"ExtractString"_s, [&] {
        qint16 last = positionOf(delimiter, text, 1);
        if (last == 0) {
            reporting.dialogs.messageBox(
                {.text = u"特定文字列の取得に必要な区切文字が見つかりませんでした。"_s,
                 .title = u"特定文字列抽出処理"_s});
            return;
        }
        while (const qint16 next = positionOf(delimiter, text, after(last)))
            last = next;
        result = text.mid(last);
    });
    return result;
}

} // namespace quillon

#include "app/base/extract_string.h"

#include "app/base/ports/dialogs.h"

#include <limits>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// The position (from 1) of the next occurrence at or after `start` (from 1), 0 when there is none.
qint16 positionOf(const QString& delimiter, const QString& text, qsizetype start)
{
    const qsizetype position = text.indexOf(delimiter, start - 1) + 1;
    if (position > std::numeric_limits<qint16>::max())
        throw Error(errors::Overflow);
    return static_cast<qint16>(position);
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
        // An empty delimiter stands everywhere; the search ends at the end of the text.
        while (last < text.size()) {
            const qint16 next = positionOf(delimiter, text, last + 1);
            if (next == 0)
                break;
            last = next;
        }
        result = text.mid(last);
    });
    return result;
}

} // namespace quillon

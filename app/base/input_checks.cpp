#include "app/base/input_checks.h"

#include "app/base/platform/code_page.h"
#include "app/base/ports/dialogs.h"

#include <QLocale>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

bool NullCheck(Reporting& reporting, const QString& fieldText)
{
    bool filled = false;
    guarded(reporting, u"NullCheck"_s, [&] {
        const QString refusal = emptyRefusal(fieldText);
        filled = refusal.isEmpty();
        if (!filled)
            reporting.dialogs.messageBox({.text = refusal, .title = titles::SystemAudit});
    });
    return filled;
}

bool MaxTextCheck(Reporting& reporting, const QString& fieldText, double maxChars, const QString& fieldName)
{
    bool fits = false;
    guarded(reporting, u"MaxTextCheck"_s, [&] {
        fits = MaxLengthCheck(reporting, platform::byteLength932(fieldText), maxChars, fieldName);
    });
    return fits;
}

bool MaxLengthCheck(Reporting& reporting, qsizetype bytes, double maxChars, const QString& fieldName)
{
    const QString refusal = lengthRefusal(bytes, maxChars, fieldName);
    if (!refusal.isEmpty())
        reporting.dialogs.messageBox({.text = refusal, .title = titles::SystemAudit});
    return refusal.isEmpty();
}

QString emptyRefusal(const QString& fieldText)
{
    return fieldText.isEmpty() ? u"必須項目が入力されていません。"_s : QString();
}

QString lengthRefusal(qsizetype bytes, double maxChars, const QString& fieldName)
{
    // sic: a text of exactly the limit is already refused.
    if (static_cast<double>(bytes) < 2 * maxChars)
        return {};
    return fieldName + u"が最大入力値を超えています。最大入力値は全角"_s + shortestDecimal(maxChars) +
           u"文字です。"_s;
}

QString shortestDecimal(double number)
{
    return QString::number(number, 'f', QLocale::FloatingPointShortest);
}

} // namespace quillon

#include "exchange/markup.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

QString escapedMarkup(QStringView text)
{
    QString markup;
    markup.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar unit = text[i];
        const char16_t code = unit.unicode();
        const bool isPair = unit.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        const bool isBlank = code == u'\t' || code == u'\n' || code == u'\r';
        const bool cannotStand = (code < 0x20 && !isBlank) || (code >= 0x7F && code < 0xA0) || code >= 0xFFFE;
        if (isPair) {
            markup += text.sliced(i++, 2);
        } else if (unit.isSurrogate() || cannotStand) {
            markup += QChar(QChar::ReplacementCharacter);
        } else if (code == u'&') {
            markup += u"&amp;"_s;
        } else if (code == u'<') {
            markup += u"&lt;"_s;
        } else if (code == u'>') {
            markup += u"&gt;"_s;
        } else if (code == u'"') {
            markup += u"&quot;"_s;
        } else if (code == u'\'') {
            markup += u"&#39;"_s;
        } else {
            markup += unit;
        }
    }
    return markup;
}

} // namespace quillon::exchange

#include "exchange/separated.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

QString joined(const QStringList& texts, QChar separator, const QString& separators)
{
    QString all;
    for (const QString& text : texts) {
        if (!all.isEmpty())
            all += separator;
        for (const QChar character : text) {
            if (character == u'\\' || separators.contains(character))
                all += u'\\';
            all += character;
        }
    }
    return all;
}

QStringList splitAt(const QString& text, const QString& separators)
{
    QStringList parts;
    QString part;
    const auto end = [&] {
        part = part.trimmed();
        if (!part.isEmpty())
            parts << part;
        part.clear();
    };
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'\\' && i + 1 < text.size()) {
            part += text[i];
            part += text[++i];
        } else if (separators.contains(text[i])) {
            end();
        } else {
            part += text[i];
        }
    }
    end();
    return parts;
}

QString plain(const QString& part)
{
    QString text;
    for (qsizetype i = 0; i < part.size(); ++i) {
        if (part[i] == u'\\' && i + 1 < part.size())
            ++i;
        text += part[i];
    }
    return text;
}

QString textOfWay(const QStringList& way)
{
    return joined(way, u'/', u"/;；\r\n"_s);
}

QStringList wayOfText(const QString& text)
{
    QStringList way;
    for (const QString& part : splitAt(text, u"/"_s))
        way << plain(part);
    return way;
}

} // namespace quillon::exchange

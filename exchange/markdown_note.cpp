#include "exchange/markdown_note.h"

#include "exchange/json_text.h"
#include "exchange/separated.h"

#include <QRegularExpression>
#include <QUrl>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

const QString Fence = u"---"_s;
// What our notes lead to stands behind their text.
const QString LinksMark = u"\n\n<!-- links -->\n"_s;

QString quotedText(const QString& text)
{
    QByteArray json;
    appendJsonText(json, text);
    return QString::fromUtf8(json);
}

/// A value of the head without what quotes it.
QString valueOf(QString value)
{
    value = value.trimmed();
    if (value.startsWith(u'"')) {
        const QByteArray json = value.toUtf8();
        if (const auto text = JsonReader(json).text())
            return *text;
    }
    if (value.size() >= 2 && value.startsWith(u'\'') && value.endsWith(u'\''))
        return value.sliced(1, value.size() - 2).replace(u"''"_s, u"'"_s);
    return value;
}

/// The values of a list in one line: "[a, b]", or "a, b".
QStringList valuesOf(QString list)
{
    list = list.trimmed();
    if (list.startsWith(u'[') && list.endsWith(u']'))
        list = list.sliced(1, list.size() - 2);
    QStringList values;
    for (const QString& value : list.split(u',', Qt::SkipEmptyParts)) {
        const QString text = valueOf(value);
        if (!text.isEmpty())
            values << text;
    }
    return values;
}

QDate dayOfHead(const QString& value)
{
    return QDate::fromString(value.first(std::min(value.size(), qsizetype(10))).replace(u'/', u'-'),
                             Qt::ISODate);
}

void takeTag(MarkdownNote& note, QString tag)
{
    if (tag.startsWith(u'#'))
        tag.remove(0, 1);
    if (!tag.isEmpty() && !note.tags.contains(tag))
        note.tags << tag;
}

void takeValue(MarkdownNote& note, const QString& key, const QString& value)
{
    if (key == u"title")
        note.title = valueOf(value);
    else if (key == u"identifier")
        note.identifier = valueOf(value);
    else if (key == u"kind")
        note.kind = valueOf(value);
    else if (key == u"date" || key == u"created")
        note.day = dayOfHead(valueOf(value));
    else if (key == u"tags" || key == u"tag") {
        for (const QString& tag : valuesOf(value))
            takeTag(note, tag);
    }
}

/// Reads the head of a note and returns what follows it.
QString takeHead(MarkdownNote& note, const QString& source)
{
    const QStringList lines = source.split(u'\n');
    const auto lineAt = [&](qsizetype i) {
        return lines[i].endsWith(u'\r') ? lines[i].chopped(1) : lines[i];
    };
    if (lineAt(0) != Fence)
        return source;
    qsizetype end = 1;
    while (end < lines.size() && lineAt(end) != Fence)
        ++end;
    if (end == lines.size())
        return source; // a ruled line, and no head
    QString key;
    for (qsizetype i = 1; i < end; ++i) {
        const QString line = lineAt(i);
        const QString item = line.trimmed();
        if (item.startsWith(u"- ") && (key == u"tags" || key == u"tag")) {
            takeTag(note, valueOf(item.sliced(2)));
            continue;
        }
        const qsizetype colon = line.indexOf(u':');
        if (colon <= 0 || line.front().isSpace())
            continue;
        key = line.first(colon).trimmed().toLower();
        takeValue(note, key, line.sliced(colon + 1));
    }
    return QStringList(lines.sliced(end + 1)).join(u'\n');
}

/// Takes the links off the end of a note of ours.
QString takeLinks(MarkdownNote& note, const QString& body)
{
    const qsizetype mark = body.lastIndexOf(LinksMark);
    if (mark < 0)
        return body.endsWith(u'\n') ? body.chopped(1) : body;
    for (const QString& line : body.sliced(mark + LinksMark.size()).split(u'\n', Qt::SkipEmptyParts)) {
        if (line.startsWith(u"- [[") && line.endsWith(u"]]"))
            note.links << line.sliced(4, line.size() - 6).section(u'|', 0, 0);
    }
    return body.first(mark);
}

/// The text without code, in which nothing means anything.
QString withoutCode(QString text)
{
    static const QRegularExpression code(u"```.*?(```|$)|`[^`\\n]*`"_s,
                                         QRegularExpression::DotMatchesEverythingOption);
    return text.replace(code, u" "_s);
}

void findLinks(MarkdownNote& note, const QString& text)
{
    static const QRegularExpression link(
        u"\\[\\[([^\\[\\]\\n]+)\\]\\]|\\]\\(<?([^)\\s>]+\\.md)(?:#[^)]*)?>?\\)"_s,
        QRegularExpression::CaseInsensitiveOption);
    for (auto found = link.globalMatch(text); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        QString target = match.captured(1).section(u'|', 0, 0).section(u'#', 0, 0).trimmed();
        if (match.capturedStart(2) >= 0) {
            target = QUrl::fromPercentEncoding(match.captured(2).toUtf8());
            if (target.startsWith(u"./"))
                target.remove(0, 2);
        }
        if (target.endsWith(u".md", Qt::CaseInsensitive))
            target.chop(3);
        if (!target.isEmpty() && !target.contains(u"://") && !note.links.contains(target))
            note.links << target;
    }
}

void findTags(MarkdownNote& note, const QString& text)
{
    static const QRegularExpression tag(u"(?:^|\\s)#([\\p{L}\\p{N}_/-]*[\\p{L}_][\\p{L}\\p{M}\\p{N}_/-]*)"_s,
                                        QRegularExpression::UseUnicodePropertiesOption);
    for (auto found = tag.globalMatch(text); found.hasNext();)
        takeTag(note, found.next().captured(1));
}

/// Takes the title off the beginning of a text that begins with a heading.
QString takeTitle(MarkdownNote& note, const QString& text)
{
    static const QRegularExpression heading(u"^\\s*# +([^\\n]*[^\\s#])[\\s#]*?(?:\\r?\\n|$)"_s);
    const QRegularExpressionMatch match = heading.match(text);
    if (!match.hasMatch() || !note.title.isEmpty())
        return text;
    note.title = match.captured(1).trimmed();
    QString rest = text.sliced(match.capturedEnd());
    while (rest.startsWith(u'\n') || rest.startsWith(u'\r'))
        rest.remove(0, 1);
    return rest;
}

} // namespace

MarkdownNote readMarkdown(const QString& source)
{
    MarkdownNote note;
    QString body = takeHead(note, source);
    note.isOurs = !note.identifier.isEmpty();
    if (note.isOurs) {
        note.text = takeLinks(note, body.startsWith(u'\n') ? body.sliced(1) : body);
        return note;
    }
    while (body.startsWith(u'\n') || body.startsWith(u'\r'))
        body.remove(0, 1);
    body = takeTitle(note, body);
    while (body.endsWith(u'\n') || body.endsWith(u'\r'))
        body.chop(1);
    note.text = body;
    const QString plainText = withoutCode(body);
    findLinks(note, plainText);
    findTags(note, plainText);
    return note;
}

QString markdownOf(const MarkdownNote& note)
{
    QString text = Fence + u"\ntitle: "_s + quotedText(note.title) + u"\nidentifier: "_s +
                   quotedText(note.identifier) + u"\nkind: "_s + quotedText(note.kind) + u'\n';
    if (!note.tags.isEmpty()) {
        text += u"tags:\n"_s;
        for (const QString& tag : note.tags)
            text += u"  - "_s + quotedText(tag) + u'\n';
    }
    text += Fence + u"\n\n"_s + note.text;
    // A text may hold what looks like the mark. The last one counts.
    if (note.links.isEmpty() && !QString(note.text + u'\n').contains(LinksMark))
        return text + u'\n';
    text += LinksMark;
    for (const QString& link : note.links)
        text += u"- [["_s + link + u"]]\n"_s;
    return text;
}

} // namespace quillon::exchange

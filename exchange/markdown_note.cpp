#include "exchange/markdown_note.h"

#include "exchange/json_text.h"
#include "exchange/separated.h"
#include "store/data_kinds.h"
#include "store/lookup/identifier_pages.h"

#include <QRegularExpression>
#include <QUrl>

#include <algorithm>
#include <vector>

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

/// What the head of a note tells under one name, with the lines that tell it.
struct HeadEntry {
    QString key;
    QString value;
    QStringList items; // of a list that goes on line by line
    QStringList lines;
};

/// The short name of a kind. A "FILE" of others is anything; one of ours has its identifier before it.
bool isKindOf(const MarkdownNote& note, const QString& name)
{
    const auto& kinds = data_kinds::all();
    return std::any_of(kinds.begin(), kinds.end(), [&](const DataKind& kind) {
        return kind.shortName == name && (&kind != &data_kinds::file() || !note.identifier.isEmpty());
    });
}

/// Splits the lines of a head.
std::vector<HeadEntry> entriesOf(const QStringList& lines)
{
    std::vector<HeadEntry> entries;
    for (const QString& line : lines) {
        const QString item = line.trimmed();
        if (item.isEmpty())
            continue;
        const qsizetype colon = line.indexOf(u':');
        const bool isItem = item.startsWith(u"- ");
        if (colon > 0 && !line.front().isSpace() && !isItem) {
            entries.push_back({.key = line.first(colon).trimmed().toLower(),
                               .value = line.sliced(colon + 1).trimmed(),
                               .items = {},
                               .lines = {line}});
            continue;
        }
        if (entries.empty())
            entries.push_back({.key = item, .value = {}, .items = {}, .lines = {}});
        HeadEntry& entry = entries.back();
        entry.lines << line;
        if (isItem)
            entry.items << item.sliced(2);
        else if (entry.value.startsWith(u'[') && !entry.value.endsWith(u']'))
            entry.value += u' ' + item;
        else
            entry.items << QString(); // what this may be nobody knows
    }
    return entries;
}

/// Takes over what an entry tells; false when it means nothing here.
bool takeEntry(MarkdownNote& note, const HeadEntry& entry)
{
    if (entry.key == u"tags" || entry.key == u"tag") {
        for (const QString& tag : valuesOf(entry.value) + entry.items)
            takeTag(note, valueOf(tag));
        return !entry.items.contains(QString());
    }
    if (!entry.items.isEmpty())
        return false;
    const QString value = valueOf(entry.value);
    if (entry.key == u"title") {
        note.title = value;
    } else if (entry.key == u"identifier" && identifierNumber(value)) {
        note.identifier = value;
    } else if (entry.key == u"kind" && isKindOf(note, value)) {
        note.kind = value;
    } else if (entry.key == u"date" || entry.key == u"created") {
        note.day = dayOfHead(value);
        return note.day.isValid() || value.isEmpty();
    } else {
        return value.isEmpty();
    }
    return true;
}

struct SplitNote {
    QString unknown; // the lines of the head that mean nothing here
    QString body;
};

/// Reads the head of a note.
SplitNote takeHead(MarkdownNote& note, const QString& source)
{
    const QStringList lines = source.split(u'\n');
    const auto lineAt = [&](qsizetype i) {
        return lines[i].endsWith(u'\r') ? lines[i].chopped(1) : lines[i];
    };
    if (lineAt(0) != Fence)
        return {.unknown = {}, .body = source};
    QStringList head;
    qsizetype end = 1;
    while (end < lines.size() && lineAt(end) != Fence)
        head << lineAt(end++);
    if (end == lines.size())
        return {.unknown = {}, .body = source}; // a ruled line, and no head
    SplitNote split{.unknown = {}, .body = QStringList(lines.sliced(end + 1)).join(u'\n')};
    for (const HeadEntry& entry : entriesOf(head)) {
        if (takeEntry(note, entry))
            continue;
        split.unknown += entry.lines.join(u'\n') + u'\n';
        if (!note.unknown.contains(entry.key))
            note.unknown << entry.key;
    }
    return split;
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
    auto [unknown, body] = takeHead(note, source);
    note.isOurs = !note.identifier.isEmpty() && !note.kind.isEmpty();
    if (note.isOurs) {
        note.text = takeLinks(note, body.startsWith(u'\n') ? body.sliced(1) : body);
    } else {
        while (body.startsWith(u'\n') || body.startsWith(u'\r'))
            body.remove(0, 1);
        body = takeTitle(note, body);
        while (body.endsWith(u'\n') || body.endsWith(u'\r'))
            body.chop(1);
        note.text = body;
        findLinks(note, unknown + withoutCode(body));
        findTags(note, withoutCode(body));
    }
    if (!unknown.isEmpty())
        note.text = note.text.isEmpty() ? unknown.chopped(1) : unknown + u'\n' + note.text;
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

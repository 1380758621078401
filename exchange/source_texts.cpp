#include "exchange/source_texts.h"

#include "app/base/one_line.h"
#include "app/base/platform/code_page.h"
#include "exchange/input.h"
#include "exchange/new_data.h"
#include "exchange/readable_text.h"
#include "exchange/refused.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

/// The bytes that a text may have at most: exactly the limit is too long.
qsizetype mostBytes(double limit)
{
    return static_cast<qsizetype>(2 * limit) - 1;
}

/// How much of the beginning of a text has at most so many bytes, without halving a character.
qsizetype beginningThatFits(QStringView text, qsizetype most)
{
    qsizetype end = 0;
    qsizetype bytes = 0;
    while (end < text.size()) {
        const bool isPair =
            text[end].isHighSurrogate() && end + 1 < text.size() && text[end + 1].isLowSurrogate();
        const bool isBreak = text[end] == u'\r' && end + 1 < text.size() && text[end + 1] == u'\n';
        const qsizetype units = isPair || isBreak ? 2 : 1;
        bytes += platform::byteLength932(text.sliced(end, units));
        if (bytes > most)
            break;
        end += units;
    }
    return end;
}

/// Cuts a text into parts that fit, where a line ends if one ends in good time.
QStringList partsOf(QStringView text, qsizetype most)
{
    QStringList parts;
    while (!text.isEmpty()) {
        qsizetype end = beginningThatFits(text, most);
        if (end < text.size()) {
            const qsizetype lineEnd = text.first(end).lastIndexOf(u'\n') + 1;
            if (lineEnd > end / 2)
                end = lineEnd;
        }
        parts << text.first(end).toString();
        text = text.sliced(end);
    }
    return parts;
}

/// No text holds a zero, but for one that somebody has put into it on purpose. Many of them are pairs of bytes without
/// their mark.
bool isNoText(const QByteArray& bytes)
{
    const bool isMarked = bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF");
    const qsizetype zeroes = isMarked ? 0 : bytes.count('\0');
    constexpr qsizetype Few = 8; // of so many bytes one
    return zeroes > 0 && (zeroes * Few > bytes.size() || !bytes.isValidUtf8());
}

QString shortened(const QString& name, qsizetype most)
{
    return name.first(beginningThatFits(name, most));
}

} // namespace

QStringList filesBelow(const QString& folder, const QStringList& endings)
{
    if (!QFileInfo(folder).isDir())
        throw Refused(u"フォルダ「%1」が見つかりません。"_s.arg(QDir::toNativeSeparators(folder)));
    QStringList paths;
    QDirIterator entries(folder, QDir::Files, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = QDir(folder).relativeFilePath(entries.next());
        const bool isWanted =
            endings.isEmpty() || std::any_of(endings.begin(), endings.end(), [&](const QString& ending) {
                return path.endsWith(ending, Qt::CaseInsensitive);
            });
        if (isWanted && !path.startsWith(u'.') && !path.contains(u"/."_s))
            paths << path;
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

SourceText textOf(const QString& path)
{
    constexpr qint64 Most = qint64{64} << 20;
    InputFile file(path);
    const QByteArray bytes = file.read(Most);
    if (file.size() > bytes.size())
        throw Error(errors::Overflow,
                    u"「%1」は大きすぎて取り込めません。"_s.arg(QDir::toNativeSeparators(path)));
    if (isNoText(bytes))
        return {.text = {}, .whyNot = u"テキストファイルではないため、取り込みませんでした。"_s};
    const ReadableText look =
        lookAtText([&](const std::function<bool(QByteArrayView)>& take) { take(bytes); });
    if (look.badLine)
        return {.text = {}, .whyNot = badLineText(*look.badLine)};
    return {.text =
                decodeText(QByteArrayView(bytes).sliced(markLength(bytes, look.encoding)), look.encoding)};
}

QString addText(NewData& data, NewDatum datum, LongTexts longTexts, std::vector<Note>& notes)
{
    if (datum.limits == NewDatum::Limits::OfDatabase)
        return data.add(datum);
    const TextLimits& limits = datum.kind->limits;
    const qsizetype mostOfName = mostBytes(limits.name);
    const QString whole = onOneLine(datum.name);
    datum.name = shortened(whole, mostOfName);
    if (datum.name != whole)
        notes.push_back(
            {.where = datum.where, .text = u"名称が長いため、「%1」に縮めました。"_s.arg(datum.name)});
    const qsizetype mostOfText = mostBytes(limits.content);
    if (longTexts == LongTexts::Refuse || platform::byteLength932(datum.text) <= mostOfText)
        return data.add(datum);
    const QStringList parts = partsOf(datum.text, mostOfText);
    notes.push_back(
        {.where = datum.where, .text = u"長いため、%1 個のデータに分けました。"_s.arg(parts.size())});
    QString first;
    QString before;
    for (qsizetype i = 0; i < parts.size(); ++i) {
        const QString number = u" (%1/%2)"_s.arg(i + 1).arg(parts.size());
        NewDatum part = datum;
        part.name = shortened(whole, mostOfName - number.size()) + number;
        part.text = parts[i];
        if (i > 0)
            part.identifier.clear();
        const QString identifier = data.add(part);
        if (i == 0)
            first = identifier;
        data.link(before, identifier);
        before = identifier;
    }
    return first;
}

} // namespace quillon::exchange

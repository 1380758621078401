#include "exchange/delimited.h"

#include "app/base/one_line.h"
#include "app/base/text_file.h"
#include "app/base/titles.h"
#include "exchange/all_data.h"
#include "exchange/delimited_rows.h"
#include "exchange/input.h"
#include "exchange/new_data.h"
#include "exchange/output.h"
#include "exchange/progress.h"
#include "exchange/readable_text.h"
#include "exchange/refused.h"
#include "exchange/separated.h"
#include "store/lookup/identifier_pages.h"
#include "store/session.h"

#include <QHash>
#include <QRegularExpression>
#include <QStringDecoder>

#include <algorithm>
#include <array>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

enum class Column { Identifier, Kind, Name, Text, Categories, Links, Day };

struct Heading {
    Column column;
    QString text;
};

/// In the order in which they are written; the last one is only read.
const std::array<Heading, 7>& headings()
{
    static const std::array<Heading, 7> all = {{{Column::Identifier, u"識別符号"_s},
                                                {Column::Kind, u"種別"_s},
                                                {Column::Name, u"名称"_s},
                                                {Column::Text, u"定義"_s},
                                                {Column::Categories, u"分類"_s},
                                                {Column::Links, u"リンク"_s},
                                                {Column::Day, u"日付"_s}}};
    return all;
}

// Between several names in one field.
const QString Separators = u";；\r\n"_s;

QString lineNumber(qint64 line)
{
    return u"%1 行目"_s.arg(line);
}

QDate dayOf(const QString& text)
{
    static const QRegularExpression day(u"^\\s*(\\d{4})\\D?(\\d{1,2})\\D?(\\d{1,2})"_s);
    const QRegularExpressionMatch match = day.match(text);
    return match.hasMatch()
               ? QDate(match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt())
               : QDate();
}

/// Goes through the lines of a file as bytes.
void forEachLine(const QString& path, const std::function<bool(QByteArrayView)>& take)
{
    InputFile file(path);
    QByteArray line;
    while (file.readLine(line)) {
        if (file.lineEnded())
            line += '\n';
        if (!take(line))
            return;
    }
}

/// Gives the text of a file in pieces.
void forEachPiece(const QString& path, Progress* progress, const std::function<void(QStringView)>& take)
{
    const ReadableText look =
        lookAtText([&](const std::function<bool(QByteArrayView)>& takeLine) { forEachLine(path, takeLine); });
    if (look.badLine)
        throw Refused(badLineText(*look.badLine));
    const TextEncoding encoding = look.encoding;
    InputFile file(path);
    constexpr qint64 BytesPerStep = qint64{1} << 18;
    qint64 told = 0;
    const auto tell = [&] {
        if (file.done() - told < BytesPerStep && file.done() != file.size())
            return;
        told = file.done();
        advance(progress, told, file.size());
    };
    if (encoding == TextEncoding::Utf16LittleEndian || encoding == TextEncoding::Utf16BigEndian) {
        QStringDecoder decoder(encoding == TextEncoding::Utf16LittleEndian ? QStringConverter::Utf16LE
                                                                           : QStringConverter::Utf16BE);
        file.read(2); // the mark
        for (QByteArray bytes = file.read(BytesPerStep); !bytes.isEmpty(); bytes = file.read(BytesPerStep)) {
            take(QString(decoder.decode(bytes)));
            tell();
        }
        return;
    }
    QByteArray line;
    bool isFirst = true;
    while (file.readLine(line)) {
        if (file.lineEnded())
            line += '\n';
        const qsizetype mark = isFirst ? markLength(line, encoding) : 0;
        isFirst = false;
        take(decodeText(QByteArrayView(line).sliced(mark), encoding));
        tell();
    }
}

class DelimitedImport
{
public:
    explicit DelimitedImport(NewData& data) : m_data(data) {}

    void takeRow(const QStringList& fields, qint64 line, const QString& wrong)
    {
        if (m_columns.isEmpty()) {
            if (!wrong.isEmpty())
                throw Refused(lineNumber(line) + u": "_s + wrong);
            takeHeadings(fields, line);
            return;
        }
        const QString where = lineNumber(line);
        if (!wrong.isEmpty()) {
            m_data.refuse(where, wrong);
        } else if (fields.size() != m_width) {
            m_data.refuse(
                where,
                u"列の数が見出しと違います (%1 列、見出しは %2 列)。"_s.arg(fields.size()).arg(m_width));
        } else {
            takeDatum(fields, where);
        }
    }
    void end() const
    {
        if (m_columns.isEmpty())
            throw Refused(noNames());
    }

    std::vector<Note> notes;
    qint64 passedOver = 0;

private:
    static QString noNames() { return u"1 行目に見出し「名称」がありません。"_s; }

    void takeHeadings(const QStringList& fields, qint64 line)
    {
        m_width = fields.size();
        for (qsizetype i = 0; i < fields.size(); ++i) {
            const QString text = fields[i].trimmed();
            const auto* const known =
                std::find_if(headings().begin(), headings().end(),
                             [&](const Heading& heading) { return heading.text == text; });
            if (known == headings().end()) {
                notes.push_back(
                    {.where = lineNumber(line), .text = u"列「%1」は取り込みません。"_s.arg(text)});
                continue;
            }
            if (m_columns.contains(known->column))
                throw Refused(u"%1: 見出し「%2」が 2 つあります。"_s.arg(lineNumber(line), text));
            m_columns.insert(known->column, i);
        }
        if (!m_columns.contains(Column::Name))
            throw Refused(noNames());
    }

    QString field(const QStringList& fields, Column column) const
    {
        const auto at = m_columns.constFind(column);
        return at == m_columns.cend() ? QString() : fields[*at];
    }

    void takeDatum(const QStringList& fields, const QString& where)
    {
        NewDatum datum{.kind = &data_kinds::definition(),
                       .name = onOneLine(field(fields, Column::Name)),
                       .text = field(fields, Column::Text),
                       .day = dayOf(field(fields, Column::Day)),
                       .identifier = field(fields, Column::Identifier).trimmed(),
                       .where = where,
                       .limits = NewDatum::Limits::OfDatabase};
        const QString day = field(fields, Column::Day).trimmed();
        if (!day.isEmpty() && !datum.day.isValid())
            notes.push_back(
                {.where = where, .text = u"日付「%1」を読み取れないため、使用しません。"_s.arg(day)});
        const QString kindName = field(fields, Column::Kind).trimmed();
        if (!kindName.isEmpty()) {
            datum.kind = nullptr;
            for (const DataKind& kind : data_kinds::all()) {
                if (kind.shortName == kindName)
                    datum.kind = &kind;
            }
        }
        if (datum.kind == nullptr) {
            m_data.refuse(where, u"種別「%1」はありません。"_s.arg(kindName));
            return;
        }
        if (datum.kind == &data_kinds::file()) {
            notes.push_back(
                {.where = where,
                 .text = u"ファイルデータは取り込みませんでした。ファイルを登録し直してください。"_s});
            ++passedOver;
            return;
        }
        if (datum.text.isEmpty() && datum.kind == &data_kinds::definition())
            datum.text = titles::Undefined; // a term that nobody has defined yet
        for (const QString& way : splitAt(field(fields, Column::Categories), Separators))
            datum.categories.push_back(wayOfText(way));
        const QString identifier = m_data.add(datum);
        for (const QString& target : splitAt(field(fields, Column::Links), Separators))
            m_data.linkLater(identifier, plain(target), where);
    }

    NewData& m_data;
    QHash<Column, qsizetype> m_columns;
    qsizetype m_width = 0;
};

/// By what a datum is named where several stand in a field: its name where that leads to it and to nothing else.
class Targets
{
public:
    explicit Targets(const AllData& all) : m_all(all)
    {
        for (const AllData::Datum& datum : all.data())
            ++m_bearers[datum.name];
    }
    QString name(std::size_t position) const
    {
        const AllData::Datum& datum = m_all.data()[position];
        const bool leads = m_bearers.value(datum.name) == 1 && !datum.name.isEmpty() &&
                           datum.name == onOneLine(datum.name).trimmed() && !identifierNumber(datum.name);
        return leads ? datum.name : datum.identifier;
    }

private:
    const AllData& m_all;
    QHash<QString, int> m_bearers;
};

} // namespace

ExportReport exportDelimited(Session& session, const QString& path, Progress* progress)
{
    ExportReport report;
    StagedOutput output(path);
    const QChar separator = path.endsWith(u".tsv", Qt::CaseInsensitive) ? u'\t' : u',';
    AllData all(session, AllData::Texts::Come);
    const Targets targets(all);
    OutputFile file(output.path());
    const auto write = [&](const QStringList& fields) {
        QString row;
        for (const QString& field : fields)
            row += (&field == &fields.front() ? QString() : QString(separator)) +
                   delimitedField(field, separator);
        if (!row.isValidUtf16())
            report.notes.push_back(
                {.where = fields.front(), .text = u"文字として不完全な部分は「?」として書き出しました。"_s});
        file.write((row + u"\r\n"_s).toUtf8());
    };
    file.write("\xEF\xBB\xBF"); // without the mark, spreadsheets take it for code page 932
    QStringList titles;
    for (const Heading& heading : headings()) {
        if (heading.column != Column::Day)
            titles << heading.text;
    }
    write(titles);
    all.forEachText([&](std::size_t position, const QString& text) {
        const AllData::Datum& datum = all.data()[position];
        QStringList categories;
        for (const std::size_t category : datum.categories)
            categories << textOfWay(all.wayTo(all.categories()[category]));
        QStringList links;
        for (const std::size_t to : datum.linksTo)
            links << targets.name(to);
        write({datum.identifier, datum.kind->shortName, datum.name, text, categories.join(u';'),
               joined(links, u';', Separators)});
        ++report.written;
        constexpr qint64 RowsPerStep = 1000;
        if (report.written % RowsPerStep == 0)
            advance(progress, report.written, static_cast<qint64>(all.data().size()));
    });
    file.finish();
    output.place();
    report.files = 1;
    return report;
}

ImportReport importDelimited(Session& session, const QString& path, const ImportOptions& options,
                             Progress* progress)
{
    std::vector<Note> notes;
    qint64 passedOver = 0;
    ImportReport report = bringIn(session, options, [&](NewData& data) {
        DelimitedImport import(data);
        DelimitedRows rows([&](const QStringList& fields, qint64 line, const QString& wrong) {
            import.takeRow(fields, line, wrong);
        });
        forEachPiece(path, progress, [&](QStringView text) { rows.take(text); });
        rows.end();
        import.end();
        notes = std::move(import.notes);
        passedOver = import.passedOver;
    });
    report.skipped += passedOver;
    report.notes.insert(report.notes.begin(), notes.begin(), notes.end());
    return report;
}

} // namespace quillon::exchange

#include "exchange/old_source.h"

#include "exchange/progress.h"
#include "exchange/refused.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

constexpr int CodePageOfTexts = 932;
constexpr qsizetype LongestName = 50;

/// What a person calls what a table holds.
QString wordFor(const QString& table)
{
    static const QHash<QString, QString> words = {
        {u"Main"_s, u"定義データ"_s},        {u"RefDoc"_s, u"文献データ"_s},
        {u"RefFile"_s, u"ファイルデータ"_s}, {u"OpenApp"_s, u"アプリケーション情報"_s},
        {u"Link"_s, u"リンク情報"_s},        {u"Category_ID"_s, u"カテゴリ情報"_s},
        {u"Category"_s, u"分類情報"_s},
    };
    return words.value(table, table);
}

QString wordForField(const QString& field)
{
    static const QHash<QString, QString> words = {
        {u"Name"_s, u"名称"_s}, {u"Object_ID"_s, u"識別符号"_s}, {u"Explanation"_s, u"内容"_s}};
    return words.value(field, field);
}

/// The tables for categories came later than the others.
bool mayLack(const TableSchema& table)
{
    return table.name == schema::Category_ID().name || table.name == schema::Category().name;
}

} // namespace

OldSource::OldSource(const QString& path) : m_database(old_format::contentOfFile(path))
{
    const QStringList names = m_database.tableNames();
    QStringList lacking;
    for (const TableSchema* table : schema::all()) {
        if (!names.contains(table->name)) {
            lacking += table->name;
            continue;
        }
        const auto definition = m_database.table(table->name);
        if (!definition)
            continue; // that is a loss
        if (!isOurs(*table, *definition))
            throw Refused(u"テーブル %1 の項目が Quillon のデータベースのものと違います。"
                          u"Quillon のデータベースか確認してください。"_s.arg(table->name));
        m_tables.insert(table->name, *definition);
    }
    if (m_tables.isEmpty())
        throw Refused(u"Quillon のデータベースのテーブルを一つも読み取れません。"
                      u"Quillon のデータベースか確認してください。"_s);
    for (const TableSchema* table : schema::all()) {
        if (!lacking.contains(table->name))
            continue;
        if (!mayLack(*table) && !m_database.isCatalogueDamaged())
            throw Refused(
                u"テーブル %1 がありません。Quillon のデータベースか確認してください。"_s.arg(table->name));
        const bool isOlderLayout = mayLack(*table) && lacking.contains(schema::Category_ID().name) &&
                                   lacking.contains(schema::Category().name);
        if (!isOlderLayout)
            m_notes.add(wordFor(table->name), u"テーブル %1 がありません。空になります。"_s.arg(table->name));
    }
    noteCodePage();
    noteOtherTables();
    noteLosses();
}

bool OldSource::isOurs(const TableSchema& table, const old_format::Definition& definition)
{
    return std::equal(
        table.fields.begin(), table.fields.end(), definition.columns.begin(), definition.columns.end(),
        [](const FieldSchema& field, const old_format::Column& column) {
            const int type = field.width == 0 ? old_format::Column::LongText : old_format::Column::Text;
            return column.name == field.name && column.type == type;
        });
}

void OldSource::noteCodePage()
{
    // The other format stores its texts in one encoding, whatever is written there.
    if (m_database.format() == old_format::Pages::Format::Three && m_database.codePage() != CodePageOfTexts)
        m_notes.add(
            {}, u"ファイルの文字コードは %1 と記録されていますが、日本語のもの (932) として読み取りました。"_s
                    .arg(m_database.codePage()));
}

void OldSource::noteOtherTables()
{
    for (const QString& name : m_database.tableNames()) {
        const auto tables = schema::all();
        if (std::none_of(tables.begin(), tables.end(),
                         [&name](const TableSchema* table) { return table->name == name; }))
            m_notes.add({}, u"テーブル「%1」は Quillon のものではないため、読み取りませんでした。"_s.arg(
                                name.left(LongestName)));
    }
}

qint64 OldSource::rowCount() const
{
    qint64 count = 0;
    for (const auto& definition : m_tables)
        count += definition.rowCount;
    return count;
}

QString OldSource::called(const TableSchema& table, const StoredRow& row)
{
    QString words = wordFor(table.name);
    const int name = table.fieldIndex(u"Name");
    for (int i = 0; i < static_cast<int>(row.size()); ++i) {
        const auto& value = row[static_cast<std::size_t>(i)];
        if (i != name && value && table.fields[static_cast<std::size_t>(i)].name.endsWith(u"_ID"))
            words += u' ' + value->left(LongestName);
    }
    const QString text = name < 0 ? QString() : row[static_cast<std::size_t>(name)].value_or(QString());
    return text.isEmpty() ? words : words + u'「' + text.left(LongestName) + u'」';
}

void OldSource::setProgress(Progress* progress, int passes)
{
    m_progress = progress;
    m_toVisit = passes * rowCount();
}

void OldSource::forEachRow(const TableSchema& table, const Visit& visit)
{
    const auto definition = m_tables.constFind(table.name);
    if (definition == m_tables.constEnd())
        return;
    constexpr qint64 RowsPerStep = 256;
    m_database.forEachRow(table.name, *definition, [&](const StoredRow& row, bool isDamaged) {
        const QString where = called(table, row);
        if (isDamaged)
            noteLosses(where);
        visit(row, where);
        // A damaged file may have more rows than it says.
        if (++m_visited % RowsPerStep == 0)
            advance(m_progress, std::min(m_visited, m_toVisit), m_toVisit);
    });
    noteLosses();
}

std::vector<Note> OldSource::takeNotes()
{
    const auto& losses = m_database.losses();
    m_notes.addBeyond(losses.count() - static_cast<qint64>(losses.kept().size()));
    return m_notes.take();
}

void OldSource::noteLosses(const QString& row)
{
    const auto& losses = m_database.losses().kept();
    for (; m_noted < losses.size(); ++m_noted) {
        const old_format::Loss& loss = losses[m_noted];
        // What is said of a field is said of the row that was read last.
        const QString where = loss.column.isEmpty() || row.isEmpty()
                                  ? wordFor(loss.table)
                                  : row + u"の"_s + wordForField(loss.column);
        m_notes.add(where, loss.text);
    }
}

} // namespace quillon::exchange

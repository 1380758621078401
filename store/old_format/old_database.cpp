#include "store/old_format/old_database.h"

#include "app/base/error.h"
#include "store/old_format/little_endian.h"
#include "store/old_format/texts.h"

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::old_format
{

namespace
{

constexpr quint32 CatalogueAt = 2;
const QString Catalogue = u"目録"_s; // what the catalogue is called to the person

// The columns of the catalogue that tell of a table.
enum CatalogueColumn : std::size_t { Id, Name, Type, Flags, CatalogueColumns };
struct CatalogueField {
    QString name;
    int type;
};
const std::array<CatalogueField, CatalogueColumns>& catalogueFields()
{
    static const std::array<CatalogueField, CatalogueColumns> fields = {{{u"Id"_s, Column::Long},
                                                                         {u"Name"_s, Column::Text},
                                                                         {u"Type"_s, Column::Integer},
                                                                         {u"Flags"_s, Column::Long}}};
    return fields;
}
constexpr quint16 TableType = 1;
constexpr quint32 SystemFlags = 0x8000'0002;
constexpr quint32 PageOfId = 0x00FF'FFFF;

/// Ascending numbers, those in a row as the first and the last.
QString inRuns(const std::vector<int>& numbers)
{
    QStringList runs;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const int first = numbers[i];
        while (i + 1 < numbers.size() && numbers[i + 1] == numbers[i] + 1)
            ++i;
        runs += numbers[i] == first ? QString::number(first) : u"%1～%2"_s.arg(first).arg(numbers[i]);
    }
    return runs.join(u'、');
}

} // namespace

OldDatabase::OldDatabase(QByteArray content) : m_pages(std::move(content), m_losses)
{
    readCatalogue();
}

void OldDatabase::lose(const QString& table, const QString& column, const QString& text)
{
    m_hasLost = true;
    if (!m_isReadAgain)
        m_losses.add({.table = table, .column = column, .text = text});
}

void OldDatabase::loseRows(const QString& table, quint32 page, const std::vector<int>& rows,
                           const QString& text)
{
    if (!rows.empty())
        lose(table, {}, m_losses.isFull() ? QString() : text.arg(QString::number(page), inRuns(rows)));
}

void OldDatabase::readCatalogue()
{
    Definition definition;
    std::vector<const Column*> columns;
    try {
        definition = readDefinition(m_pages, CatalogueAt);
    } catch (const Error& error) {
        throw Error(error.number, u"ファイルの目録を読み取れません。控えのファイルを指定してください。("_s +
                                      error.description + u')');
    }
    for (const CatalogueField& field : catalogueFields()) {
        const auto found =
            std::find_if(definition.columns.begin(), definition.columns.end(), [&](const Column& column) {
                return column.name == field.name && column.type == field.type &&
                       column.isFixed == (field.type != Column::Text);
            });
        if (found == definition.columns.end())
            throw Error(errors::NotADatabase,
                        u"ファイルの目録を読み取れません。控えのファイルを指定してください。"_s);
        columns.push_back(&*found);
    }
    m_hasLost = false;
    forEachStoredRow(Catalogue, definition, [&](const Fields& fields) { noteEntry(fields, columns); });
    m_isCatalogueDamaged = m_hasLost;
}

void OldDatabase::noteEntry(const Fields& fields, const std::vector<const Column*>& columns)
{
    std::array<Fields::Field, CatalogueColumns> values;
    for (std::size_t i = 0; i < CatalogueColumns; ++i) {
        values[i] = fields.field(*columns[i]);
        const qsizetype size = columns[i]->type == Column::Long      ? 4
                               : columns[i]->type == Column::Integer ? 2
                                                                     : values[i].bytes.size();
        if (values[i].kind != Fields::Kind::Value || values[i].bytes.size() != size)
            return lose(Catalogue, columns[i]->name, u"目録の項目の一つを読み取れません。"_s);
    }
    if (numberAt<quint16>(values[Type].bytes, 0) != TableType ||
        (numberAt<quint32>(values[Flags].bytes, 0) & SystemFlags) != 0)
        return;
    const DecodedText name = decoded(m_pages, values[Name].bytes);
    if (!name.isWhole)
        lose(Catalogue, columns[Name]->name, u"テーブルの名前の一部を読み取れません。"_s);
    m_entries.push_back({.name = name.text, .page = numberAt<quint32>(values[Id].bytes, 0) & PageOfId});
}

QStringList OldDatabase::tableNames() const
{
    QStringList names;
    for (const Entry& entry : m_entries)
        names += entry.name;
    return names;
}

std::optional<Definition> OldDatabase::table(const QString& name)
{
    const auto isOfName = [&name](const Entry& entry) { return entry.name == name; };
    const auto entry = std::find_if(m_entries.begin(), m_entries.end(), isOfName);
    if (entry == m_entries.end())
        return std::nullopt;
    const auto isOfPage = [&](const Entry& other) { return other.page == entry->page; };
    if (std::count_if(m_entries.begin(), m_entries.end(), isOfName) > 1 ||
        std::count_if(m_entries.begin(), m_entries.end(), isOfPage) > 1) {
        lose(name, {}, u"目録が壊れていて、どのテーブルか分からないため、読み取れません。"_s);
        return std::nullopt;
    }
    try {
        Definition definition = readDefinition(m_pages, entry->page);
        // Texts of fixed length are filled up with blanks, so that it would be a guess where they end.
        if (std::any_of(definition.columns.begin(), definition.columns.end(), [](const Column& column) {
                return column.isFixed && (column.type == Column::Text || column.type == Column::LongText);
            }))
            throw Error(errors::NotADatabase, u"長さの決まった文字項目があります。"_s);
        return definition;
    } catch (const Error& error) {
        lose(name, {}, error.description + u"このテーブルは読み取れません。"_s);
        return std::nullopt;
    }
}

void OldDatabase::forEachStoredRow(const QString& name, const Definition& definition,
                                   const FieldsReader& read)
{
    qint64 count = 0;
    const qint64 lossesBefore = m_losses.count();
    QSet<quint32> taken;
    Fields fields(m_pages);
    for (const quint32 number : m_pages.dataPagesOf(definition.page)) {
        const PageRows rows(m_pages, m_pages.page(number));
        if (rows.isOverfull())
            lose(name, {}, u"ページ %1 が壊れていて、その行を読み取れません。"_s.arg(number));
        std::vector<int> damaged;
        std::vector<int> doubtful;
        for (int i = 0; i < rows.count(); ++i) {
            std::optional<PageRow> row = rows.row(i);
            if (row && row->isSkipped)
                continue;
            ++count;
            if (row && row->isPointer)
                row = pointedRow(*row, definition.page, taken);
            if (!row || !fields.read(row->bytes)) {
                damaged.push_back(i + 1);
                continue;
            }
            if (fields.hasStrayBytes())
                doubtful.push_back(i + 1);
            read(fields);
        }
        loseRows(name, number, damaged, u"ページ %1 の %2 番目の行が壊れていて、読み取れません。"_s);
        loseRows(name, number, doubtful,
                 u"ページ %1 の %2 番目の行に、どの項目のものでもないバイトがあります。"_s);
    }
    if (count != definition.rowCount)
        lose(name, {},
             u"行の数が合いません (記録では %1 行、ファイルにあるのは %2 行)。%3"_s.arg(definition.rowCount)
                 .arg(count)
                 .arg(m_losses.count() == lossesBefore && count > definition.rowCount
                          ? u"ある行はすべて読み取りました。"_s
                          : u"ないものは読み取れません。"_s));
}

std::optional<PageRow> OldDatabase::pointedRow(const PageRow& pointer, quint32 owner,
                                               QSet<quint32>& taken) const
{
    if (!holds(pointer.bytes, 0, sizeof(quint32)))
        return std::nullopt;
    const RowPointer to{numberAt<quint32>(pointer.bytes, 0)};
    const QByteArrayView page = m_pages.dataPage(to.page(), owner);
    if (page.isEmpty() || taken.contains(to.value))
        return std::nullopt;
    taken.insert(to.value);
    const auto row = PageRows(m_pages, page).row(to.row());
    // One that is not skipped is read where it stands.
    return row && row->isSkipped && !row->isPointer ? row : std::nullopt;
}

void OldDatabase::forEachRow(const QString& name, const Definition& definition, const RowReader& read)
{
    m_isReadAgain = m_tablesRead.contains(name);
    m_tablesRead.insert(name);
    LongTexts longTexts(m_pages);
    Row row(definition.columns.size());
    forEachStoredRow(name, definition, [&](const Fields& fields) {
        m_hasLost = false;
        for (std::size_t i = 0; i < row.size(); ++i)
            row[i] = text(name, definition.columns[i], fields.field(definition.columns[i]), longTexts);
        read(row, m_hasLost);
    });
    m_isReadAgain = false;
}

std::optional<QString> OldDatabase::text(const QString& table, const Column& column,
                                         const Fields::Field& field, LongTexts& longTexts)
{
    if (field.kind == Fields::Kind::Null)
        return std::nullopt;
    if (field.kind == Fields::Kind::Damaged) {
        lose(table, column.name, u"項目が壊れていて、読み取れません。"_s);
        return std::nullopt;
    }
    if (column.type != Column::LongText) {
        const DecodedText found = decoded(m_pages, field.bytes);
        if (!found.isWhole)
            lose(table, column.name, u"文字として読み取れないバイトがあります。"_s);
        return found.text;
    }
    const LongTexts::Found found = longTexts.follow(field.bytes);
    const DecodedText content = decoded(m_pages, found.bytes);
    if (!found.isWhole)
        lose(table, column.name,
             found.bytes.isEmpty()
                 ? u"本文が壊れていて、読み取れません。"_s
                 : u"本文が壊れていて、一部しか読み取れません (読み取れたのは %1 文字)。"_s.arg(
                       content.text.size()));
    else if (!content.isWhole)
        lose(table, column.name, u"文字として読み取れないバイトがあります。"_s);
    return found.isWhole || !found.bytes.isEmpty() ? std::optional(content.text) : std::nullopt;
}

} // namespace quillon::old_format

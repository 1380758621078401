#include "store/text_search.h"

#include "store/criteria.h"
#include "store/like_pattern.h"
#include "store/quoted.h"
#include "store/schema.h"
#include "store/sqlite/connection.h"
#include "store/sqlite/statement.h"
#include "store/text_match.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

QString selection(const TableSchema& table)
{
    return u"SELECT rowid, "_s + quoted(table.fields[data_field::Name].name) + u", "_s +
           quoted(table.fields[data_field::Explanation].name) + u", "_s +
           quoted(table.fields[data_field::Object_ID].name) + u" FROM "_s + quoted(table.name);
}

FoldedTexts::Row rowOf(const sqlite::Statement& statement)
{
    FoldedTexts::Row row{.number = statement.number(0),
                         .name = std::nullopt,
                         .text = std::nullopt,
                         .identifier = statement.text(3)};
    if (!statement.isNull(1))
        row.name = statement.text(1);
    if (!statement.isNull(2))
        row.text = statement.text(2);
    return row;
}

} // namespace

struct TextSearch::Copy {
    FoldedTexts texts;
    QSet<qint64> written; // rows to be read again before the next search
    qint64 dataVersion = 0;
};

TextSearch::TextSearch(sqlite::Connection& connection) : m_connection(connection) {}

TextSearch::~TextSearch() = default;

std::optional<std::vector<qint64>> TextSearch::rowsFor(const Criteria& criteria, const TableSchema& table)
{
    if (table.fields.size() <= data_field::Explanation)
        return std::nullopt;
    const std::optional<QString> pattern = searchedPattern(criteria);
    // What is written in a transaction may yet be undone, and nobody would tell the copy.
    if (!pattern || m_connection.inTransaction())
        return std::nullopt;
    const FoldedTexts& texts = upToDate(table);
    if (const std::optional<QString> needle = plainNeedle(*pattern))
        return texts.holding(*needle);
    return texts.like(LikePattern(*pattern, LikePattern::Comparing::AsAReader));
}

void TextSearch::rowWritten(const QString& table, qint64 row)
{
    // More changes than this one: a trigger, or a writer that tells nothing.
    if (++m_changesSeen != m_connection.totalChanges()) {
        m_copies.clear();
        m_changesSeen = m_connection.totalChanges();
    }
    if (const auto copy = m_copies.constFind(table); copy != m_copies.cend())
        (*copy)->written.insert(row);
}

std::shared_ptr<const FoldedTexts> TextSearch::copyInStep(const QString& table)
{
    const auto known = m_copies.constFind(table);
    if (known == m_copies.cend() || m_changesSeen != m_connection.totalChanges() ||
        m_connection.inTransaction())
        return nullptr;
    const std::shared_ptr<Copy>& copy = *known;
    if (!copy->written.isEmpty() || copy->dataVersion != m_connection.dataVersion())
        return nullptr;
    return {copy, &copy->texts};
}

const FoldedTexts* TextSearch::copyOf(const QString& table) const
{
    const auto copy = m_copies.constFind(table);
    return copy != m_copies.cend() ? &(*copy)->texts : nullptr;
}

FoldedTexts& TextSearch::upToDate(const TableSchema& table)
{
    if (m_changesSeen != m_connection.totalChanges()) {
        m_copies.clear();
        m_changesSeen = m_connection.totalChanges();
    }
    // Asked before reading: what another program writes meanwhile makes the copy too old, never too new.
    const qint64 version = m_connection.dataVersion();
    std::shared_ptr<Copy>& copy = m_copies[table.name];
    constexpr qsizetype ManyRows = 10000;
    if (copy == nullptr || copy->dataVersion != version || copy->texts.needsRebuilding() ||
        copy->written.size() > ManyRows) {
        m_copies.remove(table.name);
        auto fresh = std::make_shared<Copy>();
        fresh->dataVersion = version;
        readAll(table, fresh->texts);
        return m_copies.insert(table.name, fresh).value()->texts;
    }
    for (const qint64 row : std::as_const(copy->written))
        readRow(table, row, copy->texts);
    copy->written.clear(); // only now: a row that could not be read is read the next time
    return copy->texts;
}

void TextSearch::readAll(const TableSchema& table, FoldedTexts& texts)
{
    const auto statement = m_connection.prepareOwn(selection(table) + u" ORDER BY rowid"_s);
    while (statement->step())
        texts.put(rowOf(*statement));
    texts.shrink();
}

void TextSearch::readRow(const TableSchema& table, qint64 row, FoldedTexts& texts)
{
    sqlite::Statement& statement = m_connection.prepare(selection(table) + u" WHERE rowid = ?"_s);
    const sqlite::ResetAtEnd reset(statement);
    if (statement.bind(1, row).step())
        texts.put(rowOf(statement));
    else
        texts.remove(row);
}

} // namespace quillon

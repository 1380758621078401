#include "store/record_set.h"

#include "app/base/error.h"
#include "store/criteria_sql.h"
#include "store/quoted.h"
#include "store/write_transaction.h"

#include <QRandomGenerator>
#include <QStringList>

#include <algorithm>
#include <limits>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr qsizetype Unlimited = std::numeric_limits<qsizetype>::max();

} // namespace

RecordSet::RecordSet(std::shared_ptr<Database> database, const TableSchema& table,
                     std::optional<std::vector<qint64>> rows)
    : m_database(std::move(database)), m_table(table), m_rows(std::move(rows))
{
}

std::shared_ptr<RecordSet> RecordSet::openTable(std::shared_ptr<Database> database, const TableSchema& table)
{
    if (!database)
        throw Error(errors::ObjectNotSet);
    if (!database->tableExists(table.name))
        throw Error(errors::TableNotFound);
    QStringList present;
    bool hidesRowid = false;
    {
        sqlite::Statement& columns =
            database->connection().prepare(u"SELECT name FROM pragma_table_info(?)"_s);
        const sqlite::ResetAtEnd reset(columns);
        columns.bind(1, table.name);
        while (columns.step()) {
            present << columns.text(0).toString();
            hidesRowid = hidesRowid || present.last().compare(u"rowid", Qt::CaseInsensitive) == 0;
        }
    }
    const auto lacks = [&](const FieldSchema& field) { return !present.contains(field.name); };
    if (hidesRowid || std::any_of(table.fields.begin(), table.fields.end(), lacks))
        throw Error(errors::UnknownField);
    auto set = std::shared_ptr<RecordSet>(new RecordSet(std::move(database), table, std::nullopt));
    // A table that has no row numbers fails here.
    set->tellingDamage([&] { return set->firstRow(); });
    set->noteLastRow();
    // One with indexes or rules that only another program can follow would fail in the middle of work.
    set->m_database->connection().prepareOwn(u"INSERT INTO "_s + quoted(table.name) + u" DEFAULT VALUES"_s);
    return set;
}

void RecordSet::noteLastRow() const
{
    // Should another program delete these rows, then the next one added must not get the number of one of them: a window
    // of that program may still show it.
    try {
        if (const std::optional<qint64> last = lastRow())
            m_database->noteRow(m_table.name, *last);
    } catch (const Error&) {
        // Only a precaution: whoever reads what is damaged there tells where it is.
    }
}

Error RecordSet::withPlace(const Error& error, const Damaged& damaged) const
{
    // What tells more than its number does knows better.
    if (error.number != errors::NotADatabase || error.description != standardDescription(error.number))
        return error;
    if (damaged.rowOfPass)
        return {error.number, u"データベースが壊れているため、テーブル %1 の %2 行目を読み取れませんでした。"
                              u"控えのファイルを展開してください。"_s.arg(m_table.name)
                                  .arg(*damaged.rowOfPass)};
    if (damaged.row)
        return {error.number,
                u"データベースが壊れているため、テーブル %1 の行 (番号 %2) を読み取れませんでした。"
                u"控えのファイルを展開してください。"_s.arg(m_table.name)
                    .arg(*damaged.row)};
    return {error.number, u"データベースが壊れているため、テーブル %1 を読み取れませんでした。"
                          u"控えのファイルを展開してください。"_s.arg(m_table.name)};
}

RecordSet::Stamp RecordSet::stamp() const
{
    return {m_database->connection().totalChanges(), m_database->connection().dataVersion()};
}

sqlite::Statement& RecordSet::prepare(const QString& sql) const
{
    return m_database->connection().prepare(sql);
}

std::optional<qint64> RecordSet::firstNumber(sqlite::Statement& statement)
{
    const sqlite::ResetAtEnd reset(statement);
    if (!statement.step() || statement.isNull(0))
        return std::nullopt;
    return statement.number(0);
}

qint64 RecordSet::recordCount() const
{
    if (!m_rows)
        return firstNumber(prepare(u"SELECT count(*) FROM "_s + quoted(m_table.name))).value_or(0);
    // As long as nobody has written anything, no row can have gone.
    if (stamp() == m_filteredAt)
        return static_cast<qint64>(m_rows->size());
    return std::count_if(m_rows->begin(), m_rows->end(), [this](qint64 row) { return rowExists(row); });
}

qint64 RecordSet::roughCount() const
{
    if (m_rows)
        return static_cast<qint64>(m_rows->size());
    constexpr qint64 Many =
        qint64(1) << 40; // row numbers may be anything; what is reckoned with them must not overflow
    return std::min(firstNumber(prepare(u"SELECT max(rowid) FROM "_s + quoted(m_table.name))).value_or(0),
                    Many);
}

bool RecordSet::hasRows() const
{
    return firstRow().has_value();
}

bool RecordSet::endOfFile() const
{
    switch (m_position) {
    case Position::OnRow:
        return false;
    case Position::AfterLast:
        return true;
    case Position::BetweenRows:
    case Position::NoRow:
        break;
    }
    return !hasRows();
}

bool RecordSet::rowExists(qint64 row) const
{
    return firstNumber(
               prepare(u"SELECT 1 FROM "_s + quoted(m_table.name) + u" WHERE rowid = ?"_s).bind(1, row))
        .has_value();
}

std::optional<qint64> RecordSet::firstRow() const
{
    if (!m_rows)
        return firstNumber(
            prepare(u"SELECT rowid FROM "_s + quoted(m_table.name) + u" ORDER BY rowid LIMIT 1"_s));
    const auto found =
        std::find_if(m_rows->begin(), m_rows->end(), [this](qint64 row) { return rowExists(row); });
    return found != m_rows->end() ? std::optional(*found) : std::nullopt;
}

std::optional<qint64> RecordSet::lastRow() const
{
    if (!m_rows)
        return firstNumber(
            prepare(u"SELECT rowid FROM "_s + quoted(m_table.name) + u" ORDER BY rowid DESC LIMIT 1"_s));
    const auto found =
        std::find_if(m_rows->rbegin(), m_rows->rend(), [this](qint64 row) { return rowExists(row); });
    return found != m_rows->rend() ? std::optional(*found) : std::nullopt;
}

std::optional<qint64> RecordSet::rowAfter(qint64 row) const
{
    if (!m_rows) {
        return firstNumber(prepare(u"SELECT rowid FROM "_s + quoted(m_table.name) +
                                   u" WHERE rowid > ? ORDER BY rowid LIMIT 1"_s)
                               .bind(1, row));
    }
    const auto next = std::upper_bound(m_rows->begin(), m_rows->end(), row);
    const auto found =
        std::find_if(next, m_rows->end(), [this](qint64 candidate) { return rowExists(candidate); });
    return found != m_rows->end() ? std::optional(*found) : std::nullopt;
}

void RecordSet::standOn(std::optional<qint64> row)
{
    m_position = row ? Position::OnRow : Position::NoRow;
    m_row = row.value_or(0);
    // Should another program delete this row, then the next one added must not get its number.
    if (row)
        m_database->noteRow(m_table.name, *row);
}

void RecordSet::requireCurrentRow() const
{
    if (m_position != Position::OnRow)
        throw Error(errors::NoCurrentRecord);
}

qint64 RecordSet::rowNumber() const
{
    requireCurrentRow();
    return m_row;
}

void RecordSet::checkField(int index) const
{
    if (index < 0 || static_cast<std::size_t>(index) >= m_table.fields.size())
        throw Error(errors::InvalidArgument);
}

void RecordSet::moveFirst()
{
    standOn(firstRow());
    requireCurrentRow();
}

void RecordSet::moveLast()
{
    standOn(lastRow());
    requireCurrentRow();
}

void RecordSet::moveNext()
{
    if (m_position != Position::OnRow && m_position != Position::BetweenRows)
        throw Error(errors::NoCurrentRecord);
    const std::optional<qint64> next = rowAfter(m_row);
    standOn(next);
    if (!next)
        m_position = Position::AfterLast;
}

void RecordSet::findFirst(const QString& criteria)
{
    const std::vector<qint64> found = tellingDamage([&] { return matchingRows(criteria, 1); });
    standOn(found.empty() ? std::nullopt : std::optional(found.front()));
}

bool RecordSet::goTo(int field, const QString& key)
{
    checkField(field);
    findFirst(m_table.fields[static_cast<std::size_t>(field)].name + u" ='"_s + key + u"'"_s);
    // A quote in the key may have made it another question, and what was found another row.
    if (hasCurrentRow() && this->field(field) != key)
        standOn(std::nullopt);
    return hasCurrentRow();
}

std::unique_ptr<sqlite::Statement> RecordSet::prepareLookUp(int keyField, int field) const
{
    Criteria isKey;
    isKey.node = Comparison{.field = keyField, .kind = Comparison::Kind::Equal, .text = {}};
    return m_database->connection().prepareOwn(
        u"SELECT "_s + selectList({keyField, field}) + u" FROM "_s + quoted(m_table.name) + u" WHERE "_s +
        compileCriteria(isKey, m_table).condition + u" ORDER BY rowid LIMIT 1"_s);
}

std::vector<qint64> RecordSet::matchingRows(const QString& criteria, qsizetype atMost) const
{
    const Criteria parsed = parseCriteria(criteria, m_table);
    if (auto rows = m_database->textSearch().rowsFor(parsed, m_table)) {
        if (m_rows)
            std::erase_if(*rows, [this](qint64 row) {
                return !std::binary_search(m_rows->begin(), m_rows->end(), row);
            });
        if (static_cast<qsizetype>(rows->size()) > atMost)
            rows->resize(static_cast<std::size_t>(atMost));
        return *std::move(rows);
    }
    const CriteriaSql compiled = compileCriteria(parsed, m_table);
    QString sql = u"SELECT rowid FROM "_s + quoted(m_table.name) + u" WHERE "_s + compiled.condition +
                  u" ORDER BY rowid"_s;
    // With a limit SQLite prefers an index that finds one row over a walk through the table.
    if (!m_rows && atMost == 1)
        sql += u" LIMIT 1"_s;
    // Long criteria are asked once; they would only drive the others out of the cache.
    constexpr qsizetype WorthKeeping = 10;
    std::unique_ptr<sqlite::Statement> own;
    if (compiled.values.size() > WorthKeeping)
        own = m_database->connection().prepareOwn(sql);
    sqlite::Statement& statement = own ? *own : prepare(sql);
    const sqlite::ResetAtEnd reset(statement);
    for (qsizetype i = 0; i < compiled.values.size(); ++i)
        statement.bind(static_cast<int>(i) + 1, compiled.values[i]);
    std::vector<qint64> rows;
    while (static_cast<qsizetype>(rows.size()) < atMost && statement.step()) {
        const qint64 row = statement.number(0);
        if (!m_rows || std::binary_search(m_rows->begin(), m_rows->end(), row))
            rows.push_back(row);
    }
    return rows;
}

QString RecordSet::field(int index) const
{
    return fieldOrNull(index).value_or(QString());
}

std::optional<QString> RecordSet::fieldOrNull(int index) const
{
    checkField(index);
    requireCurrentRow();
    sqlite::Statement& statement = prepare(u"SELECT "_s + selectList({index}) + u" FROM "_s +
                                           quoted(m_table.name) + u" WHERE rowid = ?"_s);
    const sqlite::ResetAtEnd reset(statement);
    if (!tellingDamage([&] { return statement.bind(1, m_row).step(); },
                       Damaged{.rowOfPass = std::nullopt, .row = m_row}))
        throw Error(errors::RecordDeleted);
    return statement.isNull(0) ? std::nullopt : std::optional(statement.text(0).toString());
}

QString RecordSet::selectList(std::initializer_list<int> fields) const
{
    QString list;
    for (const int index : fields) {
        checkField(index);
        if (!list.isEmpty())
            list += u", "_s;
        list += quoted(m_table.fields[static_cast<std::size_t>(index)].name);
    }
    return list;
}

/// The statement of a pass: over all rows at once, or row by row in a filtered set.
QString RecordSet::passSql(std::initializer_list<int> fields) const
{
    return u"SELECT "_s + selectList(fields) + u" FROM "_s + quoted(m_table.name) +
           (m_rows ? u" WHERE rowid = ?"_s : u" ORDER BY rowid"_s);
}

void RecordSet::forEachName(const std::function<void(QStringView name, QStringView identifier)>& visit) const
{
    const auto found = m_rows ? m_database->textSearch().copyInStep(m_table.name) : nullptr;
    if (found)
        found->forEachName(*m_rows, visit);
    else
        forEachRow({0, 1}, [&](const Row& row) { visit(row.text(0), row.text(1)); });
}

void RecordSet::addNew()
{
    m_values.assign(m_table.fields.size(), std::nullopt);
    m_change = Change::Adding;
}

void RecordSet::edit()
{
    m_change = Change::None;
    requireCurrentRow();
    if (!rowExists(m_row))
        throw Error(errors::RecordDeleted);
    m_values.assign(m_table.fields.size(), std::nullopt);
    m_change = Change::Editing;
    m_editedRow = m_row;
}

void RecordSet::setField(int index, const QString& text)
{
    checkField(index);
    if (m_change == Change::None)
        throw Error(errors::NoCurrentRecord);
    m_values[static_cast<std::size_t>(index)] = text;
}

qint64 RecordSet::update(Widths widths)
{
    const Change change = std::exchange(m_change, Change::None);
    if (change == Change::None)
        throw Error(errors::NoCurrentRecord);
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        const int width = m_table.fields[i].width;
        if (widths == Widths::Kept && width > 0 && m_values[i] && m_values[i]->size() > width)
            throw Error(errors::FieldTooSmall);
    }
    if (change == Change::Adding)
        return insertRow();
    changeRow();
    return m_editedRow;
}

/// Leaves out some numbers where the last ones may have been those of rows that others have added, shown and deleted
/// meanwhile, and that nothing here has met: a window of another program would take the new row for its own.
void RecordSet::leaveOutNumbers() const
{
    if (!m_database->beginsToNumber(m_table.name))
        return;
    constexpr int AtMost = 1000; // few, because the last number tells roughly how many rows there are
    constexpr qint64 Greatest = qint64(1) << 62;
    const qint64 last =
        std::max(firstNumber(prepare(u"SELECT max(rowid) FROM "_s + quoted(m_table.name))).value_or(0),
                 m_database->greatestRow(m_table.name));
    if (last < Greatest)
        m_database->noteRow(m_table.name, last + 1 + QRandomGenerator::global()->bounded(AtMost));
}

qint64 RecordSet::insertRow()
{
    leaveOutNumbers();
    // ABORT: the table's own idea of a conflict may be to drop the new row or to replace the old ones.
    // SQLite would give the number of a deleted last row to the next one, and every cursor that remembers the
    // deleted row would then stand on a stranger. Only at the end of all numbers it may choose for itself.
    QString names = u"rowid"_s;
    QString places = u"(SELECT nullif(max(coalesce(max(rowid), 0), ?), 9223372036854775807) + 1 FROM "_s +
                     quoted(m_table.name) + u')';
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        if (!m_values[i])
            continue;
        names += u", "_s + quoted(m_table.fields[i].name);
        places += u", ?"_s;
    }
    sqlite::Statement& statement = prepare(u"INSERT OR ABORT INTO "_s + quoted(m_table.name) + u" ("_s +
                                           names + u") VALUES ("_s + places + u')');
    statement.bind(1, m_database->greatestRow(m_table.name));
    int position = 1;
    for (const auto& value : m_values) {
        if (value)
            statement.bind(++position, *value);
    }
    statement.run();
    const qint64 row = m_database->connection().lastInsertRowid();
    m_database->noteRow(m_table.name, row);
    m_database->textSearch().rowWritten(m_table.name, row);
    return row;
}

void RecordSet::changeRow()
{
    QString assignments;
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        if (m_values[i])
            assignments +=
                (assignments.isEmpty() ? u""_s : u", "_s) + quoted(m_table.fields[i].name) + u" = ?"_s;
    }
    if (assignments.isEmpty())
        return;
    sqlite::Statement& statement = prepare(u"UPDATE OR ABORT "_s + quoted(m_table.name) + u" SET "_s +
                                           assignments + u" WHERE rowid = ?"_s);
    int position = 0;
    for (const auto& value : m_values) {
        if (value)
            statement.bind(++position, *value);
    }
    statement.bind(position + 1, m_editedRow).run();
    if (m_database->connection().changes() == 0)
        throw Error(errors::RecordDeleted);
    m_database->textSearch().rowWritten(m_table.name, m_editedRow);
}

void RecordSet::deleteRow()
{
    requireCurrentRow();
    prepare(u"DELETE FROM "_s + quoted(m_table.name) + u" WHERE rowid = ?"_s).bind(1, m_row).run();
    if (m_database->connection().changes() == 0)
        throw Error(errors::RecordDeleted);
    m_database->noteRow(m_table.name, m_row);
    m_database->textSearch().rowWritten(m_table.name, m_row);
    m_position = Position::BetweenRows;
}

void RecordSet::deleteEveryRow()
{
    if (!hasRows())
        return;
    inWriteTransaction(*m_database, [&] {
        for (moveFirst(); !endOfFile(); moveNext())
            deleteRow();
    });
}

void RecordSet::deleteRowsIf(std::initializer_list<int> fields,
                             const std::function<bool(const Row&)>& matches)
{
    std::vector<qint64> matching;
    const int rowid = static_cast<int>(fields.size());
    const auto pass = m_database->connection().prepareOwn(
        u"SELECT "_s + selectList(fields) + u", rowid FROM "_s + quoted(m_table.name) + u" ORDER BY rowid"_s);
    while (pass->step()) {
        const qint64 row = pass->number(rowid);
        const bool ours = !m_rows || std::binary_search(m_rows->begin(), m_rows->end(), row);
        if (ours && matches(Row(*pass)))
            matching.push_back(row);
    }
    sqlite::Statement& removal = prepare(u"DELETE FROM "_s + quoted(m_table.name) + u" WHERE rowid = ?"_s);
    for (const qint64 row : matching) {
        removal.bind(1, row).run();
        m_database->noteRow(m_table.name, row);
        if (m_database->connection().changes() > 0)
            m_database->textSearch().rowWritten(m_table.name, row);
    }
}

std::unique_ptr<sqlite::Statement> RecordSet::askAgain(std::initializer_list<int> fields) const
{
    auto statement = m_database->connection().prepareOwn(u"SELECT "_s + selectList(fields) + u" FROM "_s +
                                                         quoted(m_table.name) + u" WHERE "_s +
                                                         m_question->condition + u" ORDER BY rowid"_s);
    int position = 0;
    for (const QString& value : m_question->values)
        statement->bind(++position, value);
    return statement;
}

std::shared_ptr<RecordSet> RecordSet::filtered(const QString& criteria) const
{
    const Stamp before = stamp();
    auto result = std::shared_ptr<RecordSet>(
        new RecordSet(m_database, m_table, tellingDamage([&] { return matchingRows(criteria, Unlimited); })));
    result->m_filteredAt = before;
    if (const Criteria parsed = parseCriteria(criteria, m_table);
        !m_rows && isAnsweredByIndex(parsed, m_table))
        result->m_question = std::make_shared<const CriteriaSql>(compileCriteria(parsed, m_table));
    // Another program may delete the last of these rows; the next row added must not get its number.
    if (!result->m_rows->empty())
        m_database->noteRow(m_table.name, result->m_rows->back());
    return result;
}

} // namespace quillon

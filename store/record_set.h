#pragma once

#include "app/base/error.h"
#include "store/database.h"
#include "store/schema.h"
#include "store/sqlite/statement.h"
#include "store/sqlite/transaction.h"

#include <QString>

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <type_traits>
#include <vector>

namespace quillon
{

struct CriteriaSql;

/// A cursor over the rows of a table: over the whole table, live and in insertion order, or over the rows that
/// matched a criteria text when the set was made.
///
/// There is a current row, or the cursor stands before, between or after the rows. Reading, editing or deleting
/// without a current row is error 3021, as is moving in an empty set; a current row that another program has deleted
/// is error 3167.
class RecordSet
{
public:
    /// All rows of a table. Errors: 3078 no such table, 3061 the table lacks a field. Does not stand on a row.
    static std::shared_ptr<RecordSet> openTable(std::shared_ptr<Database> database, const TableSchema& table);

    const TableSchema& table() const { return m_table; }
    Database& database() const { return *m_database; }

    /// The number of rows at this moment; in a filtered set without the rows that are gone.
    qint64 recordCount() const;
    /// About as many, found without counting: in a table the highest row number. For choosing how to read.
    qint64 roughCount() const;
    bool hasRows() const;
    /// True when the cursor has moved past the last row (or the set is empty).
    bool endOfFile() const;
    bool hasCurrentRow() const { return m_position == Position::OnRow; }
    /// The number of the current row. In a table that is open no number is given out twice, unlike an identifier.
    qint64 rowNumber() const;

    void moveFirst();
    void moveLast();
    /// After a deletion this goes to the row that followed the deleted one.
    void moveNext();
    /// Goes to the first row that matches; without a match there is no current row.
    void findFirst(const QString& criteria);
    /// Goes to the first row of which a field holds exactly this key; without one there is no current row. Asks by a
    /// criteria text, so error 3075 for a key that none can hold.
    [[nodiscard]] bool goTo(int field, const QString& key);
    /// The question of `goTo` for many keys of a whole table, without moving the cursor: bind a key, step, and see that
    /// the first column is that key; the column after it holds `field`.
    std::unique_ptr<sqlite::Statement> prepareLookUp(int keyField, int field) const;
    /// The text of a field of the current row; empty for null.
    QString field(int index) const;
    /// The same; nothing for null.
    std::optional<QString> fieldOrNull(int index) const;

    /// Begins a new row; the cursor stays where it is.
    void addNew();
    /// Begins to change the current row.
    void edit();
    /// Sets a field of the row begun with `addNew` or `edit`. Error 3021 when none was begun.
    void setField(int index, const QString& text);
    /// Whether texts wider than their fields are refused. Other programs have written some, and where rows come from
    /// one database into another nothing of them is to be lost.
    enum class Widths { Kept, Exceeded };
    /// Saves the row begun and returns its number. Errors: 3163 a text wider than its field, 3022 a duplicate, 3260 locked.
    /// A failed save drops what was begun.
    qint64 update(Widths widths = Widths::Kept);
    /// Deletes the current row and leaves the cursor between rows.
    void deleteRow();
    /// Deletes all rows of this set, one after the other.
    void deleteEveryRow();

    /// The rows of this set that match, as a set of their own that does not stand on a row; this cursor stays.
    std::shared_ptr<RecordSet> filtered(const QString& criteria) const;

    /// Visits every row in order, in one pass, without moving the cursor. `visit` gets a `Row`; when it returns a
    /// bool, false ends the pass.
    template <class Visit> void forEachRow(std::initializer_list<int> fields, Visit&& visit) const;

    /// The same for the first two fields of a data table, name and identifier; the rows that a search has found come
    /// from memory. `visit` must neither search nor write.
    void forEachName(const std::function<void(QStringView name, QStringView identifier)>& visit) const;

    /// A row of a pass; the views are valid during the visit only.
    class Row
    {
    public:
        /// The text of the n-th field asked for; empty for null.
        QStringView text(int n) const { return m_statement.text(n); }
        bool isNull(int n) const { return m_statement.isNull(n); }
        /// Whether it is a text and not a number or bytes that read as one. To be asked before `text`.
        bool isText(int n) const { return m_statement.isText(n); }

    private:
        friend class RecordSet;
        explicit Row(const sqlite::Statement& statement) : m_statement(statement) {}
        const sqlite::Statement& m_statement;
    };

    /// Deletes the rows of this set of which `matches` says so, after one pass over them; it is asked about no other
    /// row. The cursor stays where it is.
    void deleteRowsIf(std::initializer_list<int> fields, const std::function<bool(const Row&)>& matches);

private:
    enum class Position { OnRow, BetweenRows, NoRow, AfterLast };

    RecordSet(std::shared_ptr<Database> database, const TableSchema& table,
              std::optional<std::vector<qint64>> rows);

    struct Stamp {
        qint64 ownChanges = 0;
        qint64 dataVersion = 0;
        bool operator==(const Stamp&) const = default;
    };

    /// What could not be read: the n-th row of a pass, the row of a number, or the table.
    struct Damaged {
        std::optional<qint64> rowOfPass;
        std::optional<qint64> row;
    };
    /// Reads, and lets a failure of a damaged file tell the table and the row.
    template <class Read> auto tellingDamage(Read&& read, const Damaged& damaged) const
    {
        try {
            return std::forward<Read>(read)();
        } catch (const Error& error) {
            throw withPlace(error, damaged);
        }
    }
    template <class Read> auto tellingDamage(Read&& read) const
    {
        return tellingDamage(std::forward<Read>(read),
                             Damaged{.rowOfPass = std::nullopt, .row = std::nullopt});
    }
    Error withPlace(const Error& error, const Damaged& damaged) const;

    Stamp stamp() const;
    sqlite::Statement& prepare(const QString& sql) const;
    static std::optional<qint64> firstNumber(sqlite::Statement& statement);
    std::vector<qint64> matchingRows(const QString& criteria, qsizetype atMost) const;
    bool rowExists(qint64 row) const;
    std::optional<qint64> firstRow() const;
    std::optional<qint64> lastRow() const;
    void noteLastRow() const;
    std::optional<qint64> rowAfter(qint64 row) const;
    void standOn(std::optional<qint64> row);
    void requireCurrentRow() const;
    void leaveOutNumbers() const;
    qint64 insertRow();
    void changeRow();
    void checkField(int index) const;
    QString selectList(std::initializer_list<int> fields) const;
    QString passSql(std::initializer_list<int> fields) const;
    /// The statement that reads these fields of the rows that `m_question` finds, in order.
    std::unique_ptr<sqlite::Statement> askAgain(std::initializer_list<int> fields) const;

    std::shared_ptr<Database> m_database;
    const TableSchema& m_table;
    std::optional<std::vector<qint64>> m_rows; // of a filtered set, ascending
    Stamp m_filteredAt;                        // the state of the file when these rows matched
    // What an index answers: as long as the file is in that state, asking again is quicker than fetching row by row.
    std::shared_ptr<const CriteriaSql> m_question;
    Position m_position = Position::NoRow;
    qint64 m_row = 0; // the current row, or the deleted one while between rows

    enum class Change { None, Adding, Editing };
    Change m_change = Change::None;
    qint64 m_editedRow = 0;
    std::vector<std::optional<QString>> m_values; // by field; nothing: not set
};

template <class Visit> void RecordSet::forEachRow(std::initializer_list<int> fields, Visit&& visit) const
{
    const auto keepsGoing = [&visit](const Row& row) {
        if constexpr (std::is_same_v<decltype(visit(row)), bool>) {
            return visit(row);
        } else {
            visit(row);
            return true;
        }
    };
    if (!m_rows) {
        const auto statement = m_database->connection().prepareOwn(passSql(fields));
        qint64 read = 0;
        while (tellingDamage([&] { return statement->step(); },
                             Damaged{.rowOfPass = read + 1, .row = std::nullopt})) {
            ++read;
            if (!keepsGoing(Row(*statement)))
                return;
        }
        noteLastRow();
        return;
    }
    const sqlite::Transaction reading(m_database->connection(), sqlite::Transaction::Purpose::Reading);
    if (m_question && stamp() == m_filteredAt) {
        const auto again = askAgain(fields);
        while (tellingDamage([&] { return again->step(); })) {
            if (!keepsGoing(Row(*again)))
                return;
        }
        return;
    }
    const auto statement = m_database->connection().prepareOwn(passSql(fields));
    for (const qint64 row : *m_rows) {
        statement->reset();
        statement->bind(1, row);
        if (tellingDamage([&] { return statement->step(); },
                          Damaged{.rowOfPass = std::nullopt, .row = row}) &&
            !keepsGoing(Row(*statement)))
            return;
    }
}

} // namespace quillon

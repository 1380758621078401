#pragma once

#include "exchange/notes.h"
#include "exchange/stored_row.h"
#include "store/old_format/old_database.h"
#include "store/schema.h"

#include <QHash>
#include <QString>

namespace quillon::exchange
{

class Progress;

/// A file of the older engine that holds a database of this program: the rows of its tables, and notes of all that
/// could not be read.
class OldSource : public RowSource
{
public:
    /// Reads the file and looks for our tables. Errors: those of reading it, 3343 with the reason when it cannot be
    /// read; `Refused` when it is another program's, or when nothing of ours is left in it.
    explicit OldSource(const QString& path);

    /// In how many places the file could not be read, so far.
    qint64 lossCount() const { return m_database.losses().count(); }
    /// How many rows the tables say they have.
    qint64 rowCount() const;

    /// None where the file has no such table. What is lost of a table is noted when it is gone through for the first
    /// time.
    void forEachRow(const TableSchema& table, const Visit& visit) override;
    /// Who is told of the rows, all of which are gone through so many times. May be null.
    void setProgress(Progress* progress, int passes);

    Notes& notes() { return m_notes; }
    /// All notes, at the end.
    std::vector<Note> takeNotes();

private:
    /// What a person calls a row: its kind, its identifiers and its name.
    static QString called(const TableSchema& table, const StoredRow& row);
    void noteLosses(const QString& row = {});
    void noteOtherTables();
    void noteCodePage();
    static bool isOurs(const TableSchema& table, const old_format::Definition& definition);

    Notes m_notes;
    old_format::OldDatabase m_database;
    QHash<QString, old_format::Definition> m_tables;
    std::size_t m_noted = 0; // of the losses
    Progress* m_progress = nullptr;
    qint64 m_visited = 0;
    qint64 m_toVisit = 0;
};

} // namespace quillon::exchange

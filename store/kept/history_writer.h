#pragma once

#include "store/sqlite/row_watch.h"

#include <QByteArray>

#include <memory>
#include <vector>

namespace quillon::kept
{

class HistoryFile;
struct PutBackNote;

/// Appends to a history that a file was replaced. `hash`: of its former content, empty when that is not kept.
void writeFileReplaced(HistoryFile& history, const QString& name, const QByteArray& hash, qint64 size);

/// Appends to a history that something is there again.
void writePutBack(HistoryFile& history, const PutBackNote& note);

/// Appends to a history that the database is again what it was at a time, in milliseconds since 1970: a copy of then has
/// taken its place.
void writeSetBack(HistoryFile& history, qint64 to);

/// Writes what a connection overwrites and deletes to a history: each transaction as one group, when it is durable.
class HistoryWriter : public sqlite::RowListener
{
public:
    /// `longFrom`: with so many bytes a transaction begins to be written in pieces, instead of filling the memory.
    explicit HistoryWriter(std::shared_ptr<HistoryFile> file, qsizetype longFrom = qsizetype{1} << 17);
    ~HistoryWriter() override;
    HistoryWriter(const HistoryWriter&) = delete;
    HistoryWriter& operator=(const HistoryWriter&) = delete;

    void rowGoes(const sqlite::OldRow& row) override;
    void missed() noexcept override;
    std::size_t told() const noexcept override { return m_writtenRows + m_ends.size(); }
    void putBack(std::size_t rows) noexcept override;
    void durable() noexcept override;
    void settled() noexcept override;

private:
    void writeGroup();
    void writePiece();
    void forget() noexcept;

    std::shared_ptr<HistoryFile> m_file;
    qsizetype m_longFrom;
    QByteArray m_changes;          // not yet written
    std::vector<qsizetype> m_ends; // of each of them
    std::size_t m_writtenRows = 0; // in pieces
    bool m_isBroken = false;       // a piece could not be written, or a row was missed
    qint64 m_pieces = 0;           // the number of this transaction among those in pieces
};

} // namespace quillon::kept

#include "store/kept/history_writer.h"

#include "app/base/error.h"
#include "app/base/ports/clock.h"
#include "app/base/reporting.h"
#include "store/kept/history_file.h"
#include "store/kept/history_format.h"
#include "store/kept/put_back_note.h"

#include <QDateTime>

#include <algorithm>
#include <new>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::kept
{

namespace
{

/// What every record begins with.
QByteArray recordOf(RecordKind kind)
{
    QByteArray payload;
    appendNumber(payload, static_cast<quint16>(kind));
    appendNumber(payload, quint16{0});
    return payload;
}

void appendOccasion(QByteArray& payload, const Reporting& reporting)
{
    appendNumber(payload, reporting.clock.now().toMSecsSinceEpoch());
    appendText(payload, reporting.operation);
}

} // namespace

void writeFileReplaced(HistoryFile& history, const QString& name, const QByteArray& hash, qint64 size)
{
    QByteArray payload = recordOf(RecordKind::FileReplaced);
    appendOccasion(payload, history.reporting());
    appendText(payload, name);
    appendBytes(payload, hash);
    appendNumber(payload, size);
    history.append(payload);
}

void writePutBack(HistoryFile& history, const PutBackNote& note)
{
    QByteArray payload = recordOf(RecordKind::PutBack);
    appendOccasion(payload, history.reporting());
    appendPutBackNote(payload, note);
    history.append(payload);
}

void writeSetBack(HistoryFile& history, qint64 to)
{
    QByteArray payload = recordOf(RecordKind::SetBack);
    appendOccasion(payload, history.reporting());
    appendNumber(payload, to);
    history.append(payload);
}

HistoryWriter::HistoryWriter(std::shared_ptr<HistoryFile> file, qsizetype longFrom)
    : m_file(std::move(file)), m_longFrom(longFrom)
{
}

HistoryWriter::~HistoryWriter() = default;

void HistoryWriter::rowGoes(const sqlite::OldRow& row)
{
    const std::optional<quint16> table = tableNumber(row.table());
    if (!table)
        return; // of another program, which alone knows what it means
    const qsizetype before = m_changes.size();
    try {
        appendChange(m_changes, row, *table);
        m_ends.push_back(m_changes.size());
    } catch (...) {
        m_changes.truncate(before);
        throw;
    }
}

void HistoryWriter::missed() noexcept
{
    try {
        m_file->tellOnce(errors::OutOfMemory, standardDescription(errors::OutOfMemory));
    } catch (...) {
        // Without memory not even for the log line there is nothing left to do.
    }
}

void HistoryWriter::putBack(std::size_t rows) noexcept
{
    if (rows >= told())
        return;
    if (rows < m_writtenRows) {
        forget(); // the pieces have no end and do not count
        return;
    }
    m_ends.resize(rows - m_writtenRows);
    m_changes.truncate(m_ends.empty() ? 0 : m_ends.back());
}

void HistoryWriter::durable() noexcept
{
    try {
        if (m_writtenRows == 0)
            writeGroup();
        else
            writePiece();
        if (m_writtenRows > 0 && !m_isBroken) {
            QByteArray payload = recordOf(RecordKind::PiecesEnd);
            appendNumber(payload, m_pieces);
            appendOccasion(payload, m_file->reporting());
            m_file->append(payload, HistoryFile::Where::SameFile);
        }
    } catch (...) {
        missed();
    }
    forget();
}

void HistoryWriter::settled() noexcept
{
    if (m_changes.size() < m_longFrom)
        return;
    try {
        writePiece();
    } catch (...) {
        m_isBroken = true;
        missed();
    }
}

void HistoryWriter::writeGroup()
{
    if (m_ends.empty())
        return;
    QByteArray payload = recordOf(RecordKind::Group);
    appendOccasion(payload, m_file->reporting());
    payload += m_changes;
    m_file->append(payload);
}

void HistoryWriter::writePiece()
{
    const bool isFirst = m_writtenRows == 0;
    if (isFirst)
        ++m_pieces;
    if (!m_isBroken && !m_ends.empty()) {
        QByteArray payload = recordOf(RecordKind::Piece);
        appendNumber(payload, m_pieces);
        payload += m_changes;
        const auto where = isFirst ? HistoryFile::Where::Anywhere : HistoryFile::Where::SameFile;
        m_isBroken = !m_file->append(payload, where);
    }
    m_writtenRows += m_ends.size();
    m_ends.clear();
    m_changes.truncate(0);
}

void HistoryWriter::forget() noexcept
{
    m_changes.truncate(0);
    // A long transaction must not hold on to its memory.
    if (m_changes.capacity() > 2 * m_longFrom)
        m_changes = QByteArray();
    m_ends.clear();
    m_writtenRows = 0;
    m_isBroken = false;
}

} // namespace quillon::kept

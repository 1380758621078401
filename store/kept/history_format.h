#pragma once

#include "store/schema.h"
#include "store/sqlite/row_watch.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <memory>
#include <optional>
#include <vector>

/// How a history lies in its files. A file begins with eight letters; records follow: their length and a checksum, four
/// bytes each, and as many bytes as they are long. Everything begins at an even place, so that texts, which are in
/// UTF-16, can be read where they lie.
namespace quillon::kept
{

inline constexpr QByteArrayView HistoryLetters = "QLHIST1\n";

enum class RecordKind : quint16 {
    Group = 1,        // time, operation, changes: what one transaction has overwritten and deleted
    Piece = 2,        // number of a long transaction, some of its changes
    PiecesEnd = 3,    // that number, time, operation: only now its pieces count
    FileReplaced = 4, // time, operation, name, hash and size of a file's former content
    PutBack = 5,      // time, operation: an item or a category is there again, see `PutBackNote`
    SetBack = 6       // time, operation, the time whose state the whole database has again
};

enum class RowFate : quint16 { Changed = 1, Deleted = 2 };

/// The position of a table among the seven, which is its number in the history; nothing for any other.
std::optional<quint16> tableNumber(const char* name);

// Writing.

void appendNumber(QByteArray& bytes, quint16 number);
void appendNumber(QByteArray& bytes, quint32 number);
void appendNumber(QByteArray& bytes, qint64 number);
/// The length in bytes, the bytes, and one more if need be.
void appendBytes(QByteArray& bytes, QByteArrayView content);
void appendText(QByteArray& bytes, QStringView text);
/// A row as it was.
void appendChange(QByteArray& bytes, const sqlite::OldRow& row, quint16 table);

/// Tells whether bytes are what they were; quick, and no protection against anyone. A sum goes on from the one before.
quint64 checksum(QByteArrayView bytes, quint64 sum = 0);

/// A record with its length and checksum before it.
QByteArray record(QByteArrayView payload);

// Reading. Nothing that stands in a file is believed: reading past the end gives zeros and remembers it.

/// What stands before the payload of a record.
struct RecordHead {
    static constexpr qsizetype Size = 2 * sizeof(quint32);
    qsizetype payloadSize = 0;
    quint32 sum = 0;
};
/// Nothing when it cannot be one.
std::optional<RecordHead> readRecordHead(QByteArrayView bytes);
/// Whether a payload is all there, and what it was.
bool isWhole(const RecordHead& head, QByteArrayView payload);

/// What stands in a record.
class PayloadReader
{
public:
    explicit PayloadReader(QByteArrayView payload) : m_payload(payload) {}

    quint16 number16() { return number<quint16>(); }
    quint32 number32() { return number<quint32>(); }
    qint64 number64() { return number<qint64>(); }
    QByteArrayView bytes();
    QStringView text();
    bool isAtEnd() const { return m_position >= m_payload.size(); }
    bool hasFailed() const { return m_hasFailed; }
    QByteArrayView rest() const { return m_payload.sliced(m_position); }

private:
    template <class Number> Number number();

    QByteArrayView m_payload;
    qsizetype m_position = 0;
    bool m_hasFailed = false;
};

/// A row as it was.
struct StoredRow {
    std::shared_ptr<const QByteArray> owner; // of the texts
    RowFate fate = RowFate::Changed;
    const TableSchema* table = nullptr;
    qint64 row = 0;
    std::vector<sqlite::StoredValue> fields;

    /// A field as the program would show it; empty for null.
    QString text(int index) const;
    bool isNull(int index) const;
};

/// The next change of a record; nothing when what follows is none.
std::optional<StoredRow> readChange(PayloadReader& payload);

/// The same without looking at more than one of its fields: for going through many.
struct PassedRow {
    RowFate fate = RowFate::Changed;
    quint16 table = 0;
    QByteArrayView first; // the bytes of the first two fields
    QByteArrayView second;
    QByteArrayView all; // of the change
};
std::optional<PassedRow> passChange(PayloadReader& payload);

} // namespace quillon::kept

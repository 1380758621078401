#pragma once

#include "store/kept/history_format.h"
#include "store/kept/log_bytes.h"
#include "store/kept/place.h"
#include "store/kept/put_back_note.h"

#include <QByteArray>
#include <QHash>
#include <QSet>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace quillon::kept
{

/// What a person may have lost.
enum class EventKind : quint8 {
    ItemDeleted,
    ItemChanged,
    LinkRemoved,        // and neither item was deleted
    TakenOutOfCategory, // and neither the item nor the category was deleted
    CategoryDeleted,
    CategoryRenamed,
    FileReplaced,
    Other // a row of a table without a window
};

/// One of a history, which alone can say more about it. There may be a million.
struct Event {
    qint64 time = 0;  // milliseconds since 1970, UTC
    qint64 place = 0; // in its file
    quint32 file = 0;
    quint32 group = 0;
    EventKind kind = EventKind::Other;
};

/// What came first of two.
bool isBefore(const Event& a, const Event& b);

/// That something was put back, and when: it is no event itself, and of no group.
struct PutBackEvent {
    PutBackNote note;
    Event when;
};

/// The former content of a file that was replaced.
struct FormerFile {
    QString name;
    QByteArray hash;
    qint64 size = 0;
};

/// The history of a database as it stands when this is made, read from the newest event back as far as it is asked for.
class History
{
public:
    explicit History(const Place& place);
    ~History();
    History(const History&) = delete;
    History& operator=(const History&) = delete;

    /// Adds older events behind those that are known. False when there are none.
    bool readOlder();
    /// Newest first.
    const std::vector<Event>& events() const { return m_events; }
    /// In no order.
    const std::vector<PutBackEvent>& putBacks() const { return m_putBacks; }
    /// Whether a file was there and could not be read.
    bool hasFailed() const { return m_bytes.hasFailed(); }

    /// By which operation it came about.
    QString operation(const Event& event) const;
    /// The row as it was, without a table when it cannot be read any more. Not for `FileReplaced`.
    StoredRow row(const Event& event) const;
    FormerFile file(const Event& event) const;
    /// Everything that was overwritten and deleted together with an event, itself included, in that order.
    void forEachRowBeside(const Event& event, const std::function<void(const StoredRow&)>& visit) const;
    /// The texts of an event, for looking through many.
    void forEachText(const Event& event, const std::function<void(QStringView)>& visit) const;

private:
    /// Where some changes stand in a file.
    struct Piece {
        qint64 place = 0;
        qsizetype size = 0;
    };
    struct Group {
        qint64 time = 0;
        QString operation;
        std::vector<Piece> changes; // one, or some of a long transaction, in their order
    };
    struct LogFile {
        QString path;
        qint64 begin = 0; // when it was begun, and last written
        qint64 end = 0;
        std::vector<Group> groups;
    };

    void read(quint32 number);
    void addRecord(quint32 number, QByteArrayView bytes, qint64 place,
                   QHash<qint64, std::vector<Piece>>& pieces);
    void addGroup(quint32 number, Group group);
    QString operationNamed(QStringView name);
    HeldBytes bytesAt(quint32 number, const Piece& piece) const;
    const Group& groupOf(const Event& event) const;
    HeldBytes from(const Event& event) const;

    std::vector<LogFile> m_files; // the one begun last first
    std::vector<bool> m_isRead;
    std::vector<Event> m_events;
    std::vector<PutBackEvent> m_putBacks;
    QSet<QString> m_operations; // each once
    mutable LogBytes m_bytes;
};

} // namespace quillon::kept

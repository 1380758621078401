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
    quint32 mark = 0; // of a deleted item or category: tells the identifiers apart, nearly
    EventKind kind = EventKind::Other;
};

/// When an event happened, for comparing with events that were read at another time.
struct Moment {
    qint64 time = 0;
    QString file;
    qint64 place = 0;
    quint32 group = 0;
};

/// What came first of two.
bool isBefore(const Moment& a, const Moment& b);

/// That something was put back, and when: it is no event itself, and of no group.
struct PutBackEvent {
    PutBackNote note;
    Moment when;
};

/// That the database became again what it was at a time, by a copy of then: what happened in between is not its past.
struct SetBack {
    qint64 when = 0; // milliseconds since 1970, both
    qint64 to = 0;
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
    /// Of the same place only the files to which something was written since `known` has read or found them: all that
    /// is newer, and some that is not.
    History(const Place& place, const History& known);
    ~History();
    History(const History&) = delete;
    History& operator=(const History&) = delete;

    /// Adds older events behind those that are known. False when there are none.
    bool readOlder();
    /// The same until everything since `time` is known.
    void readBackTo(qint64 time);
    /// Newest first.
    const std::vector<Event>& events() const { return m_events; }
    /// In no order.
    const std::vector<PutBackEvent>& putBacks() const { return m_putBacks; }
    /// In no order.
    const std::vector<SetBack>& setBacks() const { return m_setBacks; }
    /// Whether a file was there and could not be read.
    bool hasFailed() const { return m_bytes.hasFailed(); }

    /// Each of the known deletions of items (or of categories) with an identifier, in no order.
    void forEachDeletion(EventKind kind, const QString& identifier,
                         const std::function<void(const Event&)>& visit) const;
    Moment moment(const Event& event) const;
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
        qint64 size = 0; // when it was found, and then when it was read
        std::vector<Group> groups;
    };
    /// A deletion among the events, found by its mark.
    struct Mark {
        quint32 mark = 0;
        quint32 event = 0;
    };

    void read(quint32 number);
    void addRecord(quint32 number, QByteArrayView bytes, qint64 place,
                   QHash<qint64, std::vector<Piece>>& pieces);
    void addGroup(quint32 number, Group group);
    QString operationNamed(QStringView name);
    HeldBytes bytesAt(quint32 number, const Piece& piece) const;
    const Group& groupOf(const Event& event) const;
    HeldBytes from(const Event& event, qsizetype most) const;
    void markDeletions() const;

    std::vector<LogFile> m_files; // the one begun last first
    std::vector<bool> m_isRead;
    std::vector<Event> m_events;
    std::vector<PutBackEvent> m_putBacks;
    std::vector<SetBack> m_setBacks;
    QSet<QString> m_operations; // each once
    mutable LogBytes m_bytes;
    mutable std::vector<Mark> m_marks; // in their order
    mutable std::size_t m_marked = 0;  // so many events have been looked at for them
};

} // namespace quillon::kept

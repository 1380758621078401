#pragma once

#include "store/kept/history_format.h"
#include "store/kept/place.h"

#include <QByteArray>
#include <QFile>
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

    /// By which operation it came about.
    QString operation(const Event& event) const;
    /// The row as it was. Its texts live as long as this. Not for `FileReplaced`.
    StoredRow row(const Event& event) const;
    FormerFile file(const Event& event) const;
    /// Everything that was overwritten and deleted together with an event, itself included, in that order.
    void forEachRowBeside(const Event& event, const std::function<void(const StoredRow&)>& visit) const;
    /// The texts of an event, for looking through many.
    void forEachText(const Event& event, const std::function<void(QStringView)>& visit) const;

private:
    struct Group {
        qint64 time = 0;
        QStringView operation;
        std::vector<QByteArrayView> changes; // one, or some of a long transaction
    };
    struct LogFile {
        QString path;
        qint64 begin = 0; // when it was begun, and last written
        qint64 end = 0;
        std::unique_ptr<QFile> file; // holds what is mapped
        QByteArrayView content;
        std::vector<Group> groups;
    };

    void read(quint32 number);
    void addGroup(quint32 number, Group group);
    const Group& groupOf(const Event& event) const;
    QByteArrayView from(const Event& event) const;

    std::vector<LogFile> m_files; // the one begun last first
    std::vector<bool> m_isRead;
    std::vector<Event> m_events;
};

} // namespace quillon::kept

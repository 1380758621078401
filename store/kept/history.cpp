#include "store/kept/history.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <algorithm>
#include <limits>
#include <tuple>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::kept
{

namespace
{

/// The positions of tables among the seven.
enum Table : quint16 { Main, RefDoc, RefFile, OpenApp, Link, CategoryId, Category };

bool isItem(quint16 table)
{
    return table == Main || table == RefDoc || table == RefFile;
}

/// What was deleted as a whole in a transaction: what hung on it is no event of its own.
struct Wholes {
    QSet<QByteArrayView> items;
    QSet<QByteArrayView> categories;
};

/// Nothing for what is a part of something else.
std::optional<EventKind> kindOf(const PassedRow& row, const Wholes& wholes)
{
    const bool isDeleted = row.fate == RowFate::Deleted;
    switch (row.table) {
    case Main:
    case RefDoc:
    case RefFile:
        return isDeleted ? EventKind::ItemDeleted : EventKind::ItemChanged;
    case Link:
        if (wholes.items.contains(row.first) || wholes.items.contains(row.second))
            return std::nullopt;
        return EventKind::LinkRemoved;
    case CategoryId:
        return isDeleted ? EventKind::CategoryDeleted : EventKind::CategoryRenamed;
    case Category:
        if (wholes.categories.contains(row.first) || wholes.items.contains(row.second))
            return std::nullopt;
        return EventKind::TakenOutOfCategory;
    default:
        return EventKind::Other;
    }
}

/// When a file was begun, by its name; 0 for a name of another kind.
qint64 beginOf(const QString& name)
{
    QDateTime begin = QDateTime::fromString(name.section(u'-', 0, 0), u"yyyyMMdd'T'HHmmsszzz"_s);
    begin.setTimeSpec(Qt::UTC);
    return begin.isValid() ? begin.toMSecsSinceEpoch() : 0;
}

} // namespace

History::History(const Place& place)
{
    const QFileInfoList found =
        QDir(place.history()).entryInfoList({u"*.log"_s}, QDir::Files, QDir::Name | QDir::Reversed);
    for (const QFileInfo& info : found) {
        LogFile file;
        file.path = info.filePath();
        file.begin = beginOf(info.fileName());
        file.end = std::max(file.begin, info.lastModified().toMSecsSinceEpoch());
        m_files.push_back(std::move(file));
    }
    m_isRead.resize(m_files.size());
}

History::~History() = default;

bool History::readOlder()
{
    const std::size_t before = m_events.size();
    const auto next = std::find(m_isRead.begin(), m_isRead.end(), false);
    if (next == m_isRead.end())
        return false;
    // Files that several programs wrote at the same time are read together, and so are those that these overlap.
    qint64 since = std::numeric_limits<qint64>::max();
    std::size_t number = static_cast<std::size_t>(next - m_isRead.begin());
    while (number < m_files.size()) {
        read(static_cast<quint32>(number));
        since = std::min(since, m_files[number].begin);
        number = 0;
        while (number < m_files.size() && (m_isRead[number] || m_files[number].end < since))
            ++number;
    }
    const auto newestFirst = [](const Event& a, const Event& b) {
        return std::tuple(-a.time, a.file, -a.place) < std::tuple(-b.time, b.file, -b.place);
    };
    std::sort(m_events.begin() + static_cast<std::ptrdiff_t>(before), m_events.end(), newestFirst);
    // A file without anything readable is not the end.
    return m_events.size() > before || readOlder();
}

void History::read(quint32 number)
{
    LogFile& log = m_files[number];
    m_isRead[number] = true;
    log.file = std::make_unique<QFile>(log.path);
    if (!log.file->open(QIODevice::ReadOnly) || log.file->size() == 0)
        return;
    const qsizetype size = log.file->size();
    const uchar* const content = log.file->map(0, size);
    log.file->close(); // what is mapped stays
    if (content == nullptr)
        return;
    log.content = QByteArrayView(content, size);

    QHash<qint64, std::vector<QByteArrayView>> pieces;
    RecordReader records(log.content);
    while (const std::optional<QByteArrayView> found = records.next()) {
        PayloadReader payload(*found);
        const auto kind = static_cast<RecordKind>(payload.number16());
        payload.number16();
        Group group;
        switch (kind) {
        case RecordKind::Group:
            group.time = payload.number64();
            group.operation = payload.text();
            group.changes.push_back(payload.rest());
            addGroup(number, std::move(group));
            break;
        case RecordKind::Piece: {
            const qint64 transaction = payload.number64();
            pieces[transaction].push_back(payload.rest());
            break;
        }
        case RecordKind::PiecesEnd:
            group.changes = pieces.take(payload.number64());
            group.time = payload.number64();
            group.operation = payload.text();
            addGroup(number, std::move(group));
            break;
        case RecordKind::FileReplaced:
            group.time = payload.number64();
            group.operation = payload.text();
            m_events.push_back({.time = group.time,
                                .place = payload.rest().data() - log.content.data(),
                                .file = number,
                                .group = static_cast<quint32>(log.groups.size()),
                                .kind = EventKind::FileReplaced});
            group.changes.push_back(payload.rest());
            log.groups.push_back(std::move(group));
            break;
        default:
            break; // of a later version of the program
        }
    }
}

void History::addGroup(quint32 number, Group group)
{
    LogFile& log = m_files[number];
    Wholes wholes;
    for (const QByteArrayView& changes : group.changes) {
        PayloadReader payload(changes);
        while (!payload.isAtEnd()) {
            const std::optional<PassedRow> row = passChange(payload);
            if (!row)
                break;
            if (row->fate == RowFate::Deleted && isItem(row->table))
                wholes.items.insert(row->second);
            else if (row->fate == RowFate::Deleted && row->table == CategoryId)
                wholes.categories.insert(row->first);
        }
    }
    for (const QByteArrayView& changes : group.changes) {
        PayloadReader payload(changes);
        while (!payload.isAtEnd()) {
            const std::optional<PassedRow> row = passChange(payload);
            if (!row)
                break;
            if (const std::optional<EventKind> kind = kindOf(*row, wholes))
                m_events.push_back({.time = group.time,
                                    .place = row->all.data() - log.content.data(),
                                    .file = number,
                                    .group = static_cast<quint32>(log.groups.size()),
                                    .kind = *kind});
        }
    }
    log.groups.push_back(std::move(group));
}

const History::Group& History::groupOf(const Event& event) const
{
    return m_files.at(event.file).groups.at(event.group);
}

QByteArrayView History::from(const Event& event) const
{
    return m_files.at(event.file).content.sliced(event.place);
}

QString History::operation(const Event& event) const
{
    return groupOf(event).operation.toString();
}

StoredRow History::row(const Event& event) const
{
    PayloadReader payload(from(event));
    return readChange(payload).value_or(StoredRow());
}

FormerFile History::file(const Event& event) const
{
    PayloadReader payload(from(event));
    FormerFile file;
    file.name = payload.text().toString();
    file.hash = payload.bytes().toByteArray();
    file.size = payload.number64();
    return file;
}

void History::forEachRowBeside(const Event& event, const std::function<void(const StoredRow&)>& visit) const
{
    for (const QByteArrayView& changes : groupOf(event).changes) {
        PayloadReader payload(changes);
        while (!payload.isAtEnd()) {
            const std::optional<StoredRow> row = readChange(payload);
            if (!row)
                break;
            visit(*row);
        }
    }
}

void History::forEachText(const Event& event, const std::function<void(QStringView)>& visit) const
{
    if (event.kind == EventKind::FileReplaced) {
        PayloadReader payload(from(event));
        visit(payload.text());
        return;
    }
    for (const sqlite::StoredValue& value : row(event).fields) {
        if (value.type == sqlite::StoredValue::Type::Text)
            visit(value.text);
    }
}

} // namespace quillon::kept

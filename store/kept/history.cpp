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

constexpr qsizetype Everything = std::numeric_limits<qsizetype>::max();

/// The positions of tables among the seven.
enum Table : quint16 { Main, RefDoc, RefFile, OpenApp, Link, CategoryId, Category };

bool isItem(quint16 table)
{
    return table == Main || table == RefDoc || table == RefFile;
}

/// What was deleted as a whole in a transaction: what hung on it is no event of its own.
struct Wholes {
    QSet<QByteArray> items;
    QSet<QByteArray> categories;

    bool hasItem(QByteArrayView identifier) const { return has(items, identifier); }
    bool hasCategory(QByteArrayView identifier) const { return has(categories, identifier); }
    static bool has(const QSet<QByteArray>& all, QByteArrayView identifier)
    {
        return all.contains(QByteArray::fromRawData(identifier.data(), identifier.size()));
    }
};

quint32 markOf(QByteArrayView identifier)
{
    const quint64 sum = checksum(identifier);
    return static_cast<quint32>(sum ^ (sum >> 32U));
}

/// The place of the identifier among the fields of what an event deleted.
int identifierField(EventKind kind)
{
    return kind == EventKind::ItemDeleted ? 1 : 0;
}

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
        if (wholes.hasItem(row.first) || wholes.hasItem(row.second))
            return std::nullopt;
        return EventKind::LinkRemoved;
    case CategoryId:
        return isDeleted ? EventKind::CategoryDeleted : EventKind::CategoryRenamed;
    case Category:
        if (wholes.hasCategory(row.first) || wholes.hasItem(row.second))
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

bool isBefore(const Moment& a, const Moment& b)
{
    // The names of the files tell when they were begun.
    return std::tie(a.time, a.file, a.place) < std::tie(b.time, b.file, b.place);
}

History::History(const Place& place)
{
    const QFileInfoList found =
        QDir(place.history()).entryInfoList({u"*.log"_s}, QDir::Files, QDir::Name | QDir::Reversed);
    for (const QFileInfo& info : found) {
        LogFile file;
        file.path = info.filePath();
        file.begin = beginOf(info.fileName());
        // A folder may tell of a file that somebody writes what it was when it was closed last.
        QFile opened(file.path);
        const bool isOpen = opened.open(QIODevice::ReadOnly);
        file.size = isOpen ? opened.size() : info.size();
        const QDateTime written =
            isOpen ? opened.fileTime(QFileDevice::FileModificationTime) : info.lastModified();
        file.end = std::max(file.begin, written.toMSecsSinceEpoch());
        m_files.push_back(std::move(file));
    }
    m_isRead.resize(m_files.size());
}

History::History(const Place& place, const History& known) : History(place)
{
    QHash<QString, qint64> sizes;
    for (const LogFile& file : known.m_files)
        sizes.insert(file.path, file.size);
    const auto isKnown = [&](const LogFile& file) { return sizes.value(file.path, -1) == file.size; };
    m_files.erase(std::remove_if(m_files.begin(), m_files.end(), isKnown), m_files.end());
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
    // Of two files the first is the younger one.
    const auto newestFirst = [](const Event& a, const Event& b) {
        return std::tuple(b.time, a.file, b.place) < std::tuple(a.time, b.file, a.place);
    };
    std::sort(m_events.begin() + static_cast<std::ptrdiff_t>(before), m_events.end(), newestFirst);
    // A file without anything readable is not the end.
    return m_events.size() > before || readOlder();
}

void History::readBackTo(qint64 time)
{
    while ((m_events.empty() || m_events.back().time >= time) && readOlder()) {
    }
}

void History::read(quint32 number)
{
    m_isRead[number] = true;
    const QString& path = m_files[number].path;
    m_files[number].size = QFileInfo(path).size();
    if (m_bytes.read(number, path, 0, HistoryLetters.size()).bytes != HistoryLetters)
        return;
    QHash<qint64, std::vector<Piece>> pieces;
    for (qint64 place = HistoryLetters.size();;) {
        const auto head = readRecordHead(m_bytes.read(number, path, place, RecordHead::Size).bytes);
        if (!head)
            return;
        place += RecordHead::Size;
        const HeldBytes payload = m_bytes.read(number, path, place, head->payloadSize);
        if (!isWhole(*head, payload.bytes))
            return;
        addRecord(number, payload.bytes, place, pieces);
        place += head->payloadSize;
    }
}

void History::addRecord(quint32 number, QByteArrayView bytes, qint64 place,
                        QHash<qint64, std::vector<Piece>>& pieces)
{
    LogFile& log = m_files[number];
    PayloadReader payload(bytes);
    const auto kind = static_cast<RecordKind>(payload.number16());
    payload.number16();
    Group group;
    const auto occasion = [&] {
        group.time = payload.number64();
        group.operation = operationNamed(payload.text());
    };
    const auto rest = [&]() -> Piece {
        const qsizetype size = payload.rest().size();
        return {.place = place + bytes.size() - size, .size = size};
    };
    switch (kind) {
    case RecordKind::Group:
        occasion();
        group.changes.push_back(rest());
        addGroup(number, std::move(group));
        break;
    case RecordKind::Piece: {
        const qint64 transaction = payload.number64();
        pieces[transaction].push_back(rest());
        break;
    }
    case RecordKind::PiecesEnd:
        group.changes = pieces.take(payload.number64());
        occasion();
        addGroup(number, std::move(group));
        break;
    case RecordKind::FileReplaced:
        occasion();
        m_events.push_back({.time = group.time,
                            .place = rest().place,
                            .file = number,
                            .group = static_cast<quint32>(log.groups.size()),
                            .kind = EventKind::FileReplaced});
        group.changes.push_back(rest());
        log.groups.push_back(std::move(group));
        break;
    case RecordKind::PutBack:
        occasion();
        m_putBacks.push_back({.note = readPutBackNote(payload),
                              .when = {.time = group.time,
                                       .file = log.path,
                                       .place = place,
                                       .group = std::numeric_limits<quint32>::max()}});
        break;
    case RecordKind::SetBack:
        occasion();
        m_setBacks.push_back({.when = group.time, .to = payload.number64()});
        break;
    default:
        break; // of a later version of the program
    }
}

QString History::operationNamed(QStringView name)
{
    return *m_operations.insert(name.toString());
}

void History::addGroup(quint32 number, Group group)
{
    LogFile& log = m_files[number];
    // What lies in the file is looked at twice: first for what was deleted as a whole.
    Wholes wholes;
    const auto forEachChange = [&](const auto& visit) {
        for (const auto& change : group.changes) {
            const HeldBytes bytes = bytesAt(number, change);
            PayloadReader payload(bytes.bytes);
            while (!payload.isAtEnd()) {
                const std::optional<PassedRow> row = passChange(payload);
                if (!row)
                    break;
                visit(*row, change.place + (row->all.data() - bytes.bytes.data()));
            }
        }
    };
    forEachChange([&](const PassedRow& row, qint64 /*place*/) {
        if (row.fate == RowFate::Deleted && isItem(row.table))
            wholes.items.insert(row.second.toByteArray());
        else if (row.fate == RowFate::Deleted && row.table == CategoryId)
            wholes.categories.insert(row.first.toByteArray());
    });
    forEachChange([&](const PassedRow& row, qint64 place) {
        const std::optional<EventKind> kind = kindOf(row, wholes);
        if (!kind)
            return;
        const bool isDeletion = row.fate == RowFate::Deleted;
        m_events.push_back(
            {.time = group.time,
             .place = place,
             .file = number,
             .group = static_cast<quint32>(log.groups.size()),
             .mark = isDeletion ? markOf(identifierField(*kind) == 0 ? row.first : row.second) : 0,
             .kind = *kind});
    });
    log.groups.push_back(std::move(group));
}

HeldBytes History::bytesAt(quint32 number, const Piece& piece) const
{
    return m_bytes.read(number, m_files.at(number).path, piece.place, piece.size);
}

const History::Group& History::groupOf(const Event& event) const
{
    return m_files.at(event.file).groups.at(event.group);
}

/// What stands in the file from an event on, up to the end of its piece, but no more than `most` bytes.
HeldBytes History::from(const Event& event, qsizetype most) const
{
    const std::vector<Piece>& pieces = groupOf(event).changes;
    const auto behind =
        std::upper_bound(pieces.begin(), pieces.end(), event.place,
                         [](qint64 place, const Piece& piece) { return place < piece.place; });
    if (behind == pieces.begin())
        return {};
    const Piece& piece = *std::prev(behind);
    const auto rest = piece.size - (event.place - piece.place);
    return bytesAt(event.file, {.place = event.place, .size = std::min(rest, most)});
}

void History::markDeletions() const
{
    if (m_marked == m_events.size())
        return;
    const auto known = static_cast<std::ptrdiff_t>(m_marks.size());
    for (; m_marked < m_events.size(); ++m_marked) {
        const EventKind kind = m_events[m_marked].kind;
        if (kind == EventKind::ItemDeleted || kind == EventKind::CategoryDeleted)
            m_marks.push_back({.mark = m_events[m_marked].mark, .event = static_cast<quint32>(m_marked)});
    }
    const auto byMark = [](const Mark& a, const Mark& b) { return a.mark < b.mark; };
    std::sort(m_marks.begin() + known, m_marks.end(), byMark);
    std::inplace_merge(m_marks.begin(), m_marks.begin() + known, m_marks.end(), byMark);
}

void History::forEachDeletion(EventKind kind, const QString& identifier,
                              const std::function<void(const Event&)>& visit) const
{
    markDeletions();
    const QStringView text(identifier);
    const quint32 mark =
        markOf({reinterpret_cast<const char*>(text.utf16()), text.size() * qsizetype{sizeof(char16_t)}});
    auto one = std::lower_bound(m_marks.begin(), m_marks.end(), mark,
                                [](const Mark& a, quint32 sought) { return a.mark < sought; });
    for (; one != m_marks.end() && one->mark == mark; ++one) {
        const Event& event = m_events[one->event];
        if (event.kind == kind && row(event).text(identifierField(kind)) == identifier)
            visit(event);
    }
}

Moment History::moment(const Event& event) const
{
    return {
        .time = event.time, .file = m_files.at(event.file).path, .place = event.place, .group = event.group};
}

QString History::operation(const Event& event) const
{
    return groupOf(event).operation;
}

StoredRow History::row(const Event& event) const
{
    // Thousands of rows may follow in the same piece, and what crosses the border of two blocks has to be copied.
    constexpr qsizetype AsMostRowsAre = 1 << 14;
    for (const qsizetype most : {AsMostRowsAre, Everything}) {
        const HeldBytes held = from(event, most);
        PayloadReader payload(held.bytes);
        if (std::optional<StoredRow> row = readChange(payload)) {
            row->owner = held.owner;
            return *row;
        }
        if (held.bytes.size() < most)
            break;
    }
    return {};
}

FormerFile History::file(const Event& event) const
{
    const HeldBytes held = from(event, Everything);
    PayloadReader payload(held.bytes);
    FormerFile file;
    file.name = payload.text().toString();
    file.hash = payload.bytes().toByteArray();
    file.size = payload.number64();
    return file;
}

void History::forEachRowBeside(const Event& event, const std::function<void(const StoredRow&)>& visit) const
{
    for (const Piece& piece : groupOf(event).changes) {
        const HeldBytes held = bytesAt(event.file, piece);
        PayloadReader payload(held.bytes);
        while (!payload.isAtEnd()) {
            std::optional<StoredRow> row = readChange(payload);
            if (!row)
                break;
            row->owner = held.owner;
            visit(*row);
        }
    }
}

void History::forEachText(const Event& event, const std::function<void(QStringView)>& visit) const
{
    if (event.kind == EventKind::FileReplaced) {
        visit(file(event).name);
        return;
    }
    for (const sqlite::StoredValue& value : row(event).fields) {
        if (value.type == sqlite::StoredValue::Type::Text)
            visit(value.text);
    }
}

} // namespace quillon::kept

#include "core/whereabouts.h"

#include "store/data_kinds.h"
#include "store/schema.h"

#include <algorithm>

namespace quillon
{

namespace
{

using kept::Event;
using kept::EventKind;
using kept::isBefore;
using kept::OwedRelation;
using kept::PutBackEvent;

Whereabouts::Kind kindOf(const PutBackEvent& event)
{
    return event.note.isCategory ? Whereabouts::Kind::Category : Whereabouts::Kind::Item;
}

/// What the other end of an owed relation is.
Whereabouts::Kind kindOfOther(OwedRelation::Other role)
{
    return role == OwedRelation::Other::Category ? Whereabouts::Kind::Category : Whereabouts::Kind::Item;
}

bool isOneWrite(const Event& a, const Event& b)
{
    return a.file == b.file && a.group == b.group;
}

} // namespace

Whereabouts::Whereabouts(const kept::Place& place, const kept::History& history, const Event& lost)
    : m_history(place), m_lost(lost)
{
    readBackTo(lost.time);
    // Programs that have begun to write since have moved the numbers of the files.
    const QString identifier = history.row(lost).text(data_field::Object_ID);
    for (const Event& event : m_history.events()) {
        if (event.time == lost.time && event.place == lost.place && event.kind == lost.kind &&
            m_history.row(event).text(data_field::Object_ID) == identifier)
            m_lost = event;
    }
    qint64 earliest = lost.time;
    for (const PutBackEvent& event : m_history.putBacks())
        earliest = std::min(earliest, event.note.deletedAt);
    readBackTo(earliest);
    for (const Event& event : m_history.events()) {
        if (event.kind == EventKind::ItemDeleted)
            m_deletions.insert(m_history.row(event).text(data_field::Object_ID),
                               {.kind = Kind::Item, .event = event});
        else if (event.kind == EventKind::CategoryDeleted)
            m_deletions.insert(m_history.row(event).text(category_field::Category_ID),
                               {.kind = Kind::Category, .event = event});
    }
}

void Whereabouts::readBackTo(qint64 time)
{
    while ((m_history.events().empty() || m_history.events().back().time >= time) && m_history.readOlder()) {
    }
}

std::optional<QString> Whereabouts::now(Kind kind, const QString& identifier) const
{
    return follow(kind, identifier, m_lost);
}

std::optional<QString> Whereabouts::follow(Kind kind, const QString& identifier, const Event& since) const
{
    std::optional<Event> deleted; // for the first time since
    for (auto one = m_deletions.constFind(identifier); one != m_deletions.cend() && one.key() == identifier;
         ++one) {
        const bool isSince = isBefore(since, one->event) || isOneWrite(since, one->event);
        if (one->kind == kind && isSince && (!deleted || isBefore(one->event, *deleted)))
            deleted = one->event;
    }
    if (!deleted)
        return identifier;
    for (const PutBackEvent& back : m_history.putBacks()) {
        if (kindOf(back) != kind || back.note.before != identifier || back.note.deletedAt != deleted->time ||
            !isBefore(*deleted, back.when))
            continue;
        if (auto there = follow(kind, back.note.after, back.when))
            return there;
    }
    return std::nullopt;
}

std::vector<Whereabouts::Due> Whereabouts::dueTo(Kind kind, const QString& before) const
{
    std::vector<Due> due;
    for (const PutBackEvent& back : m_history.putBacks()) {
        if (!isBefore(m_lost, back.when))
            continue;
        for (const OwedRelation& owed : back.note.owed) {
            if (kindOfOther(owed.role) != kind || owed.other != before || back.note.deletedAt > m_lost.time)
                continue;
            // An earlier bearer of the identifier is meant when it was deleted in between.
            const auto deletions = m_deletions.values(before);
            const bool isAnother =
                std::any_of(deletions.begin(), deletions.end(), [&](const Deletion& deletion) {
                    return deletion.kind == kind && deletion.event.time >= back.note.deletedAt &&
                           isBefore(deletion.event, m_lost);
                });
            if (isAnother)
                continue;
            if (const auto with = follow(kindOf(back), back.note.after, back.when))
                due.push_back({.role = owed.role, .with = *with});
        }
    }
    return due;
}

} // namespace quillon

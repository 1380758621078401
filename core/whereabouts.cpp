#include "core/whereabouts.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace quillon
{

namespace
{

using kept::Event;
using kept::EventKind;
using kept::History;
using kept::isBefore;
using kept::Moment;
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

EventKind deletionOf(Whereabouts::Kind kind)
{
    return kind == Whereabouts::Kind::Item ? EventKind::ItemDeleted : EventKind::CategoryDeleted;
}

bool isOneWrite(const Moment& a, const Moment& b)
{
    return a.file == b.file && a.group == b.group;
}

} // namespace

Whereabouts::Whereabouts(const kept::Place& place, History& known) : m_known(known), m_newer(place, known)
{
    m_newer.readBackTo(std::numeric_limits<qint64>::min());
    addPutBacks(m_newer, 0);
}

void Whereabouts::addPutBacks(const History& history, std::size_t from) const
{
    const std::vector<PutBackEvent>& more = history.putBacks();
    m_putBacks.insert(m_putBacks.end(), more.begin() + static_cast<std::ptrdiff_t>(from), more.end());
    const auto inOrder = [](const PutBackEvent& a, const PutBackEvent& b) {
        return isBefore(a.when, b.when);
    };
    const auto isSame = [](const PutBackEvent& a, const PutBackEvent& b) {
        return a.when.file == b.when.file && a.when.place == b.when.place;
    };
    std::sort(m_putBacks.begin(), m_putBacks.end(), inOrder);
    // What was written while the known history was read may be in both.
    m_putBacks.erase(std::unique(m_putBacks.begin(), m_putBacks.end(), isSame), m_putBacks.end());
}

const std::vector<PutBackEvent>& Whereabouts::putBacks() const
{
    const std::size_t known = m_known.putBacks().size();
    if (m_seenPutBacks != known)
        addPutBacks(m_known, std::exchange(m_seenPutBacks, known));
    return m_putBacks;
}

/// Whether the present database has lived through a time: after the last copy that took its place, or before that copy
/// was made, and so on.
bool Whereabouts::isPast(qint64 time) const
{
    qint64 end = std::numeric_limits<qint64>::max();
    for (;;) {
        std::optional<kept::SetBack> last;
        for (const History* history : {static_cast<const History*>(&m_known), &m_newer}) {
            for (const kept::SetBack& one : history->setBacks()) {
                if (one.to < one.when && one.when <= end && (!last || one.when > last->when))
                    last = one;
            }
        }
        if (!last || time >= last->when)
            return time <= end;
        if (time > last->to)
            return false;
        end = last->to;
    }
}

/// Whether something has happened to what was lost before.
bool Whereabouts::counts(const Moment& what, const Moment& since) const
{
    return isPast(what.time) || !isPast(since.time);
}

std::optional<Whereabouts::Deletion> Whereabouts::firstDeletion(Kind kind, const QString& identifier,
                                                                const Moment& since) const
{
    std::optional<Deletion> first;
    for (const History* history : {static_cast<const History*>(&m_known), &m_newer}) {
        history->forEachDeletion(deletionOf(kind), identifier, [&](const Event& event) {
            const Moment moment = history->moment(event);
            const bool isSince = isBefore(since, moment) || isOneWrite(since, moment);
            if (isSince && counts(moment, since) && (!first || isBefore(moment, first->moment)))
                first = {.moment = moment, .history = history, .event = event};
        });
    }
    return first;
}

std::optional<QString> Whereabouts::now(Kind kind, const QString& identifier, const Event& lost) const
{
    return follow(kind, identifier, m_known.moment(lost));
}

kept::StoredRow Whereabouts::deletedSince(Kind kind, const QString& identifier, const Event& lost) const
{
    const auto deleted = firstDeletion(kind, identifier, m_known.moment(lost));
    return deleted ? deleted->history->row(deleted->event) : kept::StoredRow();
}

std::optional<QString> Whereabouts::follow(Kind kind, const QString& identifier, const Moment& since) const
{
    const auto deleted = firstDeletion(kind, identifier, since);
    if (!deleted)
        return identifier;
    for (const PutBackEvent& back : putBacks()) {
        if (kindOf(back) != kind || back.note.before != identifier ||
            back.note.deletedAt != deleted->moment.time || !isBefore(deleted->moment, back.when) ||
            !counts(back.when, deleted->moment))
            continue;
        if (auto there = follow(kind, back.note.after, back.when))
            return there;
    }
    return std::nullopt;
}

std::vector<Whereabouts::Due> Whereabouts::dueTo(Kind kind, const QString& before, const Event& lostEvent)
{
    const Moment lost = m_known.moment(lostEvent);
    const auto isOwed = [&](const PutBackEvent& back, const OwedRelation& owed) {
        return isBefore(lost, back.when) && counts(back.when, lost) && back.note.deletedAt <= lost.time &&
               kindOfOther(owed.role) == kind && owed.other == before;
    };
    qint64 earliest = lost.time;
    for (const PutBackEvent& back : putBacks()) {
        for (const OwedRelation& owed : back.note.owed) {
            if (isOwed(back, owed))
                earliest = std::min(earliest, back.note.deletedAt);
        }
    }
    m_known.readBackTo(earliest);

    std::vector<Due> due;
    for (const PutBackEvent& back : putBacks()) {
        for (const OwedRelation& owed : back.note.owed) {
            if (!isOwed(back, owed))
                continue;
            // An earlier bearer of the identifier is meant when it was deleted in between.
            bool isAnother = false;
            m_known.forEachDeletion(deletionOf(kind), before, [&](const Event& event) {
                const Moment moment = m_known.moment(event);
                isAnother = isAnother || (moment.time >= back.note.deletedAt && isBefore(moment, lost));
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

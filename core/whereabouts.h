#pragma once

#include "store/kept/history.h"

#include <QString>

#include <optional>
#include <vector>

namespace quillon
{

/// What has become of items and categories since something was lost. Identifiers are given out anew; so whatever bears
/// one now need not be what bore it then, and what bore it then may be there under another. Where a copy has taken the
/// place of the database, what happened after it was made has not happened to what was lost before.
class Whereabouts
{
public:
    enum class Kind { Item, Category };

    /// Of a place, up to now. `known`: its history, which may be older, is not read once more; what it is asked about
    /// are its events. Stays valid as long as it does.
    Whereabouts(const kept::Place& place, kept::History& known);

    /// The present identifier of what bore `identifier` when something was lost; nothing when it is gone. Whether it is
    /// really there only the database knows.
    std::optional<QString> now(Kind kind, const QString& identifier, const kept::Event& lost) const;

    /// How what bore `identifier` when something was lost was deleted for the first time since; without a table when it
    /// was not.
    kept::StoredRow deletedSince(Kind kind, const QString& identifier, const kept::Event& lost) const;

    /// A relation of the lost one that did not come back with its other end.
    struct Due {
        kept::OwedRelation::Other role; // of the lost one for the other end
        QString with;                   // the present identifier of that
    };
    /// `before`: the identifier of the lost one when it was lost. May read more of the history.
    std::vector<Due> dueTo(Kind kind, const QString& before, const kept::Event& lost);

private:
    struct Deletion {
        kept::Moment moment;
        const kept::History* history = nullptr;
        kept::Event event;
    };

    std::optional<Deletion> firstDeletion(Kind kind, const QString& identifier,
                                          const kept::Moment& since) const;
    std::optional<QString> follow(Kind kind, const QString& identifier, const kept::Moment& since) const;
    bool isPast(qint64 time) const;
    bool counts(const kept::Moment& what, const kept::Moment& since) const;
    void addPutBacks(const kept::History& history, std::size_t from) const;
    const std::vector<kept::PutBackEvent>& putBacks() const;

    kept::History& m_known;
    kept::History m_newer;                              // what has been written since
    mutable std::vector<kept::PutBackEvent> m_putBacks; // of both, in their order
    mutable std::size_t m_seenPutBacks = 0;             // so many of the known ones
};

} // namespace quillon

#pragma once

#include "store/kept/history.h"

#include <QMultiHash>
#include <QString>

#include <optional>
#include <vector>

namespace quillon
{

/// What has become of items and categories since something was lost. Identifiers are given out anew; so whatever bears
/// one now need not be what bore it then, and what bore it then may be there under another.
class Whereabouts
{
public:
    enum class Kind { Item, Category };

    /// Reads the history of a place once more, up to now. `lost`: of `history`, which may be older.
    Whereabouts(const kept::Place& place, const kept::History& history, const kept::Event& lost);

    /// The present identifier of what bore `identifier` when the other was lost; nothing when it is gone. Whether it is
    /// really there only the database knows.
    std::optional<QString> now(Kind kind, const QString& identifier) const;

    /// A relation of the lost one that did not come back with its other end.
    struct Due {
        kept::OwedRelation::Other role; // of the lost one for the other end
        QString with;                   // the present identifier of that
    };
    /// `before`: the identifier of the lost one when it was lost.
    std::vector<Due> dueTo(Kind kind, const QString& before) const;

private:
    struct Deletion {
        Kind kind;
        kept::Event event;
    };

    void readBackTo(qint64 time);
    std::optional<QString> follow(Kind kind, const QString& identifier, const kept::Event& since) const;

    kept::History m_history;
    kept::Event m_lost; // as this history has it
    QMultiHash<QString, Deletion> m_deletions;
};

} // namespace quillon

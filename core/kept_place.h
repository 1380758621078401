#pragma once

#include "store/keeper.h"
#include "store/kept/place.h"
#include "store/session.h"

#include <QString>

#include <optional>

namespace quillon
{

/// Where the things are kept that belong to a database; nothing when nothing is kept.
inline std::optional<kept::Place> keptPlace(const Session& session, const QString& database)
{
    const auto folder = session.keeper != nullptr ? session.keeper->keptFolder() : std::nullopt;
    return folder ? std::optional(kept::Place(*folder, database)) : std::nullopt;
}

} // namespace quillon

#pragma once

#include "store/kept/place.h"

#include <QDateTime>
#include <QString>

#include <functional>
#include <optional>

namespace quillon::kept
{

/// That a database is damaged.
struct Damage {
    QString database;
    std::optional<QDateTime> newestGood; // when the newest copy was made that is still what it was; local
};

using DamageListener = std::function<void(const Damage&)>;

/// What there is to take the place of a damaged database. Reads copies.
Damage lookForGoodCopy(const Place& place);

} // namespace quillon::kept

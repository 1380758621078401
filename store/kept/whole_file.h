#pragma once

#include <QByteArrayView>
#include <QString>

namespace quillon::kept
{

/// A name in a folder of kept things for what is not finished yet. `prune` removes what a killed program leaves of it.
QString nameForTheTimeBeing(const QString& folder);

/// Writes a file for this user alone, in place of one that has its name. False when that cannot be done: then everything
/// is as it was. Otherwise it outlives a power failure.
bool writeWhole(const QString& path, QByteArrayView bytes);

} // namespace quillon::kept

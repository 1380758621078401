#pragma once

#include <QIcon>

namespace quillon
{

/// The icon of every window, in all its sizes; each is read when something first draws it.
QIcon programIcon();

} // namespace quillon

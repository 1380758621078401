#pragma once

#include <QString>

namespace quillon::platform
{

/// What the toolkit's bridge to the accessibility bus of the desktop leaves out. `object`: the number under which the
/// bridge knows an accessible object. Only to be called while somebody listens; nothing happens where there is no such
/// bus.
/// Tells that a state of an object (one of the bus, "expanded" for instance) has changed.
void tellStateOnBus(unsigned int object, const QString& state, bool isSet);
/// Tells that other children of an object are selected than before.
void tellSelectionOnBus(unsigned int object);

} // namespace quillon::platform

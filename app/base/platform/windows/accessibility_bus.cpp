#include "app/base/platform/accessibility_bus.h"

namespace quillon::platform
{

// There is no such bus: the toolkit's bridge asks for states by itself.
void tellStateOnBus(unsigned int /*object*/, const QString& /*state*/, bool /*isSet*/) {}

void tellSelectionOnBus(unsigned int /*object*/) {}

} // namespace quillon::platform

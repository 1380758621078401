#pragma once

#include <QString>

namespace quillon
{

class DataWindow;
class Session;

/// The shared registration window of a kind ("M", "R", "F") with a new identifier and nothing else in it, not yet
/// shown. When it is open with something else, it puts its closing question first. Null when that was cancelled or a
/// save refused (the window comes to the front then), or when there is no identifier (which has been reported).
/// Not trapped: error 91 for any other kind.
DataWindow* newRegistration(Session& session, const QString& kind);

} // namespace quillon

#pragma once

#include <QString>

namespace quillon
{

class Session;

/// Opens the file of a file datum with its associated application. Failures are reported as "ShowRefFile".
void ShowRefFile(Session& session, const QString& identifier);

/// Lets the user register an outside file in the registration window and links the new file datum to `identifier`.
/// False when the user did not register one, or there was no identifier for it. Not trapped: failures go to the caller.
bool RegisterFileAndLink(Session& session, const QString& identifier);

} // namespace quillon

#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace quillon
{

class Session;

/// Brings the window of a datum to the front, or opens a new one in display mode; the file of a file datum is opened
/// with its associated application. Failures are reported as "ShowData".
void ShowData(Session& session, const QString& identifier);

/// Opens the shared registration window of a kind ("M", "R", "F") with a new identifier, filed under the category
/// that is selected in the main window. Failures are reported as "CreateRegisterForm".
void CreateRegisterForm(Session& session, const QString& kind);

/// Deletes a datum with its links and memberships; those go even when its row is gone already. The copied file of a
/// file datum stays. `mode`: 1 or 3 asks first, 2 or more tells afterwards, 0 is silent.
/// True when the row was deleted. Failures are reported as "DeleteData".
bool DeleteData(Session& session, const QString& identifier, qint16 mode);

/// `DeleteData` without questions and notices for many data, as one durable write. A datum that fails is tried once
/// more and then passed over; the boxes about that come after the write. `advance` is called after each datum.
/// For each identifier, whether its row was deleted. Throws when nothing could be deleted at all.
std::vector<bool> DeleteManyData(Session& session, const QStringList& identifiers,
                                 const std::function<void()>& advance);

} // namespace quillon

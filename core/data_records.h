#pragma once

#include "core/listed_datum.h"

#include <QString>

#include <functional>
#include <vector>

namespace quillon
{

class Session;
struct DatumPlace;

/// Brings the window of a datum to the front, or opens a new one in display mode; the file of a file datum is opened
/// with its associated application. Failures are reported as "ShowData".
void ShowData(Session& session, const QString& identifier);

/// Opens the shared registration window of a kind ("M", "R", "F") with a new identifier, filed under the category
/// that is selected in the main window. One that is open with something else asks its closing question first; when that
/// is cancelled, or there is no identifier, nothing is opened. Failures are reported as "CreateRegisterForm".
void CreateRegisterForm(Session& session, const QString& kind);

/// What became of a datum that was to be deleted.
enum class Deletion {
    Deleted,
    Gone, ///< its row was gone already, or another datum has its identifier now
    Kept, ///< cancelled, or a failure was reported
};

/// Deletes a datum with its links and memberships as one write: together or not at all. Links and memberships go even
/// when its row is gone already. The copied file of a file datum stays. `mode`: 1 or 3 asks first, 2 or more tells
/// afterwards, 0 is silent. Failures are reported as "DeleteData".
Deletion DeleteDatum(Session& session, const QString& identifier, qint16 mode);

/// The same for the very datum that a window shows. Not trapped: error 3021, before any question, when its row is gone,
/// another datum has its identifier, or another database is open.
Deletion DeleteDatum(Session& session, const DatumPlace& place, qint16 mode);

/// The same. True when the row was deleted.
bool DeleteData(Session& session, const QString& identifier, qint16 mode);

/// Deletes many data without questions as one durable write. A datum that fails is tried once more and then passed
/// over; one that bears another name by now is another datum and stays. The boxes about all that come after the write,
/// a single one for those that are gone. `advance` is called after each datum. Failures are reported as "DeleteData".
/// What became of each.
std::vector<Deletion> DeleteManyData(Session& session, const std::vector<ListedDatum>& data,
                                     const std::function<void()>& advance);

} // namespace quillon

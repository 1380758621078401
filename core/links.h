#pragma once

#include "app/base/ports/data_window.h"

#include <QString>

#include <vector>

namespace quillon
{

class DataNameLookup;
class Session;
struct ListedDatum;

/// Links two data unless they are linked already, in either direction; a datum may be linked to itself.
/// `mode`: 1 or 3 asks first, 2 or more tells afterwards, 0 is silent.
/// True when a row was added. Failures are reported as "LinkData"; it is one when one of the data that were named is
/// gone or another by then.
bool LinkData(Session& session, const QString& source, const QString& target, qint16 mode);

/// Whether two data are linked, in either direction. Not trapped. Moves the cursor of the links.
bool areLinked(Session& session, const QString& a, const QString& b);

/// Adds the row of a link. Not trapped: error 3021 when one of the data is not there (any more).
void addLink(Session& session, const QString& source, const QString& target);

/// Deletes the link between two data in both directions and always tells so, without asking.
/// True unless a failure was reported, as "DeleteLink".
bool DeleteLink(Session& session, const QString& a, const QString& b);

/// The same for two data that a question or a list has named: error 3021, reported as above, when one of them is another by now.
bool DeleteLink(Session& session, const ListedDatum& a, const ListedDatum& b);

/// Deletes every link of a datum without a word. Failures are reported as "DeleteRelationalLink".
void DeleteRelationalLink(Session& session, const QString& identifier);
/// The same as a part of a larger write. Not trapped.
void deleteLinksOf(Session& session, const QString& identifier);

/// The links of a datum from its own point of view: each row is the partner, on whichever side it is stored. Not
/// trapped; the caller tells what `names` could not read.
std::vector<LinkRow> linksOf(Session& session, const QString& identifier, DataNameLookup& names);

/// Fills a data window's link list with the links of a datum, from the datum's own point of view: each row is the
/// partner, on whichever side it is stored. Failures are reported as "SetLinkList".
void SetLinkList(Session& session, DataWindow& window, const QString& identifier);

/// Fills the link list window with every link and shows it. Without any link it only says so; a window that is open
/// is emptied then. Failures are reported as "CloseAllForm".
void SetAllLinkList(Session& session);

} // namespace quillon

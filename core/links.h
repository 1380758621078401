#pragma once

#include <QString>

namespace quillon {

class DataWindow;
class Session;

/// Fills a data window's link list with the links of a datum, from the datum's own point of view: each row is the
/// partner, on whichever side it is stored. Failures are reported as "SetLinkList".
void SetLinkList(Session& session, DataWindow& window, const QString& identifier);

} // namespace quillon

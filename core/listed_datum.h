#pragma once

#include <QString>

namespace quillon
{

class Session;

/// A datum as a person sees it: by its name. Its identifier may have been given to another one meanwhile.
struct ListedDatum {
    QString identifier;
    QString name;
};

/// A datum under its present name, as a question names it: what a list shows may be older. A failure to read the name is
/// reported as "GetDataName".
ListedDatum presentDatum(Session& session, const QString& identifier);

/// Whether there is such a datum and it is still the one that was seen. Not trapped. Moves the cursor of its table.
bool isStillThere(Session& session, const ListedDatum& datum);

/// Tells that so many data were not there any more; nothing for none.
void tellNotFound(Session& session, qsizetype count);

} // namespace quillon

#pragma once

#include <QString>

#include <optional>

namespace quillon
{

class Session;

/// A datum as a person sees it: by its name. Its identifier may have been given to another one meanwhile.
struct ListedDatum {
    QString identifier;
    QString name;
};

/// A datum under its present name, as a question names it: what a list shows may be older. Nothing when the name cannot
/// be read, which has been reported as "GetDataName": nobody can be asked about a datum without a name.
std::optional<ListedDatum> presentDatum(Session& session, const QString& identifier);

/// Whether there is such a datum and it is still the one that was seen. Not trapped. Moves the cursor of its table.
bool isStillThere(Session& session, const ListedDatum& datum);

/// Tells that so many data were not there any more; nothing for none.
void tellNotFound(Session& session, qsizetype count);

} // namespace quillon

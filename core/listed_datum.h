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

/// Tells that so many data were not there any more; nothing for none.
void tellNotFound(Session& session, qsizetype count);

} // namespace quillon

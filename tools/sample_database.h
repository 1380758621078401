#pragma once

#include <QString>

namespace quillon::tour
{

/// Creates the sample database of the tour: a small knowledge base on tea, with categories, links, documents and
/// files. `path` must not exist yet.
void createSampleDatabase(const QString& path);

} // namespace quillon::tour

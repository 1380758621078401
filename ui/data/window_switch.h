#pragma once

#include <QString>

namespace quillon
{

class Windows;

/// Brings the definition or document window that was loaded after the one with this identifier to the front; after
/// the last comes the first. Windows of the same identifier count as one, at the place of the last of them.
void switchDataWindow(const Windows& windows, const QString& identifier);

} // namespace quillon

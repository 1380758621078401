#pragma once

#include <QString>
#include <QStringView>

namespace quillon::exchange
{

/// A text as it stands in HTML or XML, in an attribute, too: it means nothing there. What cannot stand in them becomes
/// "�".
QString escapedMarkup(QStringView text);

} // namespace quillon::exchange

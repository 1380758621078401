#pragma once

#include <QString>

namespace quillon {

class Session;

/// The name of a datum, "不明" when there is no such datum. An unknown kind is looked up among the definitions.
QString GetDataName(Session& session, const QString& identifier);

/// Brings the window of a datum to the front, or opens a new one in display mode. Nothing happens for a
/// file datum yet. Failures are reported as "ShowData".
void ShowData(Session& session, const QString& identifier);

/// Opens the shared registration window of a kind ("M", "R", "F") with a new identifier, filed under the category
/// that is selected in the main window. Failures are reported as "CreateRegisterForm".
void CreateRegisterForm(Session& session, const QString& kind);

} // namespace quillon

#pragma once

#include <QString>

class QLabel;
class QWidget;

namespace quillon
{

/// A label of plain text. `buddy`: the control it names, if any.
QLabel* plainLabel(const QString& name, const QString& text, QWidget* buddy, QWidget* parent);

/// Gives a control its tool tip, which a screen reader reads as its description.
void describe(QWidget* widget, const QString& toolTip);

} // namespace quillon

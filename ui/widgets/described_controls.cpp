#include "ui/widgets/described_controls.h"

#include <QLabel>

namespace quillon
{

QLabel* plainLabel(const QString& name, const QString& text, QWidget* buddy, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    if (buddy != nullptr)
        label->setBuddy(buddy);
    return label;
}

void describe(QWidget* widget, const QString& toolTip)
{
    widget->setToolTip(toolTip);
    widget->setAccessibleDescription(toolTip);
}

} // namespace quillon

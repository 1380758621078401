#pragma once

#include <QStyledItemDelegate>

namespace quillon
{

/// Shows any text as plain text on one line. Only the drawing differs: the model's text stays what it is.
class OneLineDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QString displayText(const QVariant& value, const QLocale& locale) const override;
};

} // namespace quillon

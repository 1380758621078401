#pragma once

#include "ui/widgets/laid_out_lines.h"

#include <QStyledItemDelegate>

namespace quillon
{

/// Shows any text as plain text on one line. Only the drawing differs: the model's text stays what it is.
class OneLineDelegate : public QStyledItemDelegate
{
public:
    explicit OneLineDelegate(QObject* parent = nullptr);

    QString displayText(const QVariant& value, const QLocale& locale) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

protected:
    /// The models shown here know texts alone: nothing else is asked for.
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

private:
    void paintText(QPainter& painter, const QStyleOptionViewItem& option, const QString& text) const;

    mutable LaidOutLines m_lines;
};

} // namespace quillon

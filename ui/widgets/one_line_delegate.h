#pragma once

#include <QCache>
#include <QFont>
#include <QStaticText>
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

private:
    void paintText(QPainter& painter, const QStyleOptionViewItem& option) const;
    const QStaticText& laidOut(const QString& text, const QFont& font) const;

    // Texts whose glyphs have been found and placed, which costs more than drawing them.
    mutable QCache<QString, QStaticText> m_laidOut;
    mutable QFont m_font; // of all of them
};

} // namespace quillon

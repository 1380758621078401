#pragma once

#include <QLayout>
#include <QList>

namespace quillon
{

/// The row of buttons at the lower end of a window: at the right, but for what leads it at the left. Where the window
/// is too narrow the row breaks into several.
class ButtonRow : public QLayout
{
    Q_OBJECT

public:
    using QLayout::QLayout;
    ~ButtonRow() override;
    ButtonRow(const ButtonRow&) = delete;
    ButtonRow& operator=(const ButtonRow&) = delete;

    /// Adds something that stands at the left end; to be called before the others are added.
    void addLeading(QWidget* widget);

    void addItem(QLayoutItem* item) override;
    int count() const override { return static_cast<int>(m_items.size()); }
    QLayoutItem* itemAt(int index) const override { return m_items.value(index); }
    QLayoutItem* takeAt(int index) override;

    /// All in one row.
    QSize sizeHint() const override;
    QSize minimumSize() const override;
    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    void setGeometry(const QRect& place) override;

private:
    using Line = QList<int>; // the numbers of the items in it

    int gap() const;
    QList<Line> linesFor(int width) const;
    int heightOf(const Line& line) const;
    int widthOf(int item, int width) const;

    QList<QLayoutItem*> m_items;
    int m_leading = 0; // so many at the beginning
};

} // namespace quillon

#pragma once

#include <QScrollArea>

namespace quillon
{

/// Holds a widget that takes the room there is, and scrolls where that is less than it needs. What gets the keyboard
/// comes into view.
class ScrolledArea : public QScrollArea
{
    Q_OBJECT

public:
    /// How small it may be made before the window stops a person.
    enum class Least {
        Content, // as the widget in it would be without scrolling
        FewLines // what does not fit scrolls
    };

    ScrolledArea(QWidget* content, Least least, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    /// The least size of the widget in it.
    virtual QSize leastContent() const;
    /// Scrolls so far that a control in it is seen, all of it where there is room for that.
    void bringIntoView(QWidget& control);

protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    /// Gives the widget the room there is, or what it needs.
    void fitContent();
    QSize neededFor(int width) const;

    Least m_least;
};

} // namespace quillon

#pragma once

#include <QFocusFrame>
#include <QPointer>

namespace quillon
{

/// A ring around the control that has the keyboard, be there anything in it or not. It lies outside the control and
/// takes neither room nor clicks.
class FocusRing : public QFocusFrame // which assistive technology passes over
{
    Q_OBJECT

public:
    /// Shows from now on, in every window and box of the application, where the keyboard is.
    static void followFocus();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    explicit FocusRing(QWidget& control);
    static void goTo(QWidget* control);
    void place();

    QPointer<QWidget> m_control;
};

} // namespace quillon

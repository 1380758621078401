#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

namespace quillon
{

/// Long work of a window that the person may cancel, with Esc, the window's close box or a button of its own. While it
/// goes on the windows paint, and what the person does otherwise leads to nothing.
class CancellableWork : public QObject
{
public:
    CancellableWork(QWidget& window, QWidget& cancelButton);

    /// Whether work goes on in which the person can do nothing with a control.
    static bool keepsFromActing(const QWidget& control);

    void cancel() { m_cancelled = true; }
    /// Lets the person's events arrive. False when the work is to end.
    bool goesOn();

protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    QPointer<QWidget> m_window;
    QPointer<QWidget> m_cancelButton;
    bool m_cancelled = false;
};

} // namespace quillon

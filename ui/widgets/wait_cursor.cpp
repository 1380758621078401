#include "ui/widgets/wait_cursor.h"

#include <QApplication>

#include <utility>

namespace quillon
{

WaitCursor::WaitCursor()
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
    QMetaObject::invokeMethod(
        &m_untilEvents, [this] { end(); }, Qt::QueuedConnection);
}

WaitCursor::~WaitCursor()
{
    end();
}

void WaitCursor::end()
{
    if (std::exchange(m_shown, false))
        QApplication::restoreOverrideCursor();
}

} // namespace quillon

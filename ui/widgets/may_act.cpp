#include "ui/widgets/may_act.h"

#include "ui/widgets/cancellable_work.h"

#include <QApplication>
#include <QWindow>

namespace quillon
{

bool mayActOn(const QWidget& widget)
{
    if (CancellableWork::keepsFromActing(widget))
        return false;
    const QWidget* const answeredFirst = QApplication::activeModalWidget();
    if (answeredFirst == nullptr)
        return true;
    // A menu belongs to a window, too.
    for (const QWidget* part = &widget; part != nullptr; part = part->parentWidget()) {
        if (part == answeredFirst)
            return true;
    }
    // So does the manual to the one in which it was asked for.
    const QWindow* const owner = answeredFirst->windowHandle();
    const QWindow* const window = widget.window()->windowHandle();
    return owner != nullptr && window != nullptr && owner->isAncestorOf(window);
}

} // namespace quillon

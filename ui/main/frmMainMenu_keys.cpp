#include "app/base/twips.h"
#include "store/session.h"
#include "ui/main/frmMainMenu.h"
#include "ui/main/main_window_metrics.h"
#include "ui/main/pane_splitter.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"

#include <QShortcut>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

void frmMainMenu::connectKeys()
{
    const auto onKey = [this](const QKeySequence& key, const std::function<void()>& act) {
        auto* shortcut = new QShortcut(key, this);
        connect(shortcut, &QShortcut::activated, this,
                eventSlot(session().reporting, u"Form_KeyDown"_s, act));
        return shortcut;
    };
    // Held down, a key that goes to and fro would end in the one or the other by chance.
    onKey(Qt::Key_F6, [this] { goToOtherPane(); })->setAutoRepeat(false);
    onKey(Qt::SHIFT | Qt::Key_F6, [this] { goToOtherPane(); }) // backwards, which is the same with two
        ->setAutoRepeat(false);
    onKey(Qt::Key_F8, [this] { goToSplitter(); })->setAutoRepeat(false);
    connect(imgSplitter, &PaneSplitter::left, this,
            eventSlot(session().reporting, u"Form_KeyDown"_s, [this] { leaveSplitter(); }));
    connect(imgSplitter, &PaneSplitter::moveWanted, this, [this](int percent) {
        handleEvent(session().reporting, u"Form_KeyDown"_s, [&] {
            auto position = static_cast<float>(twipsFromPixels(centralWidget()->width()) * percent / 100);
            SizeControls(position);
        });
    });
    onKey(Qt::CTRL | Qt::Key_Left, [this] { moveSplitterBy(-metrics::SplitterStep); });
    onKey(Qt::CTRL | Qt::Key_Right, [this] { moveSplitterBy(metrics::SplitterStep); });
}

void frmMainMenu::goToOtherPane()
{
    QWidget* const other = tvwCategory->hasFocus() ? static_cast<QWidget*>(lsvData) : tvwCategory;
    other->setFocus(Qt::ShortcutFocusReason);
}

void frmMainMenu::goToSplitter()
{
    if (imgSplitter->hasFocus()) {
        leaveSplitter();
        return;
    }
    m_beforeSplitter = focusWidget();
    imgSplitter->setFocus(Qt::ShortcutFocusReason);
}

void frmMainMenu::leaveSplitter()
{
    QWidget* const before = m_beforeSplitter.isNull() ? tvwCategory : m_beforeSplitter.data();
    before->setFocus(Qt::ShortcutFocusReason);
}

void frmMainMenu::moveSplitterBy(double twips)
{
    auto position = static_cast<float>(m_splitterLeft + twips);
    SizeControls(position);
}

} // namespace quillon

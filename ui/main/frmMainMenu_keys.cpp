#include "store/session.h"
#include "ui/main/frmMainMenu.h"
#include "ui/main/main_window_metrics.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"

#include <QShortcut>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

void frmMainMenu::connectKeys()
{
    const auto onKey = [this](const QKeySequence& key, const std::function<void()>& act) {
        connect(new QShortcut(key, this), &QShortcut::activated, this,
                eventSlot(session().reporting, u"Form_KeyDown"_s, act));
    };
    onKey(Qt::Key_F6, [this] { goToOtherPane(); });
    onKey(Qt::SHIFT | Qt::Key_F6, [this] { goToOtherPane(); }); // backwards, which is the same with two
    onKey(Qt::CTRL | Qt::Key_Left, [this] { moveSplitterBy(-metrics::SplitterStep); });
    onKey(Qt::CTRL | Qt::Key_Right, [this] { moveSplitterBy(metrics::SplitterStep); });
}

void frmMainMenu::goToOtherPane()
{
    QWidget* const other = tvwCategory->hasFocus() ? static_cast<QWidget*>(lsvData) : tvwCategory;
    other->setFocus(Qt::ShortcutFocusReason);
}

void frmMainMenu::moveSplitterBy(double twips)
{
    auto position = static_cast<float>(m_splitterLeft + twips);
    SizeControls(position);
    // A panel of the status bar is what assistive technology reads out.
    const int percent = qRound(100.0 * tvwCategory->width() / std::max(1, centralWidget()->width()));
    setStatus(1, u"カテゴリツリーの幅：画面の "_s + QString::number(percent) + u" ％"_s);
}

} // namespace quillon

#include "app/base/twips.h"
#include "ui/main/frmMainMenu.h"
#include "ui/main/main_window_metrics.h"
#include "ui/main/pane_splitter.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"

#include <QEvent>
#include <QFrame>
#include <QMouseEvent>
#include <QProgressBar>
#include <QtMath>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

void place(QWidget* widget, double left, double top, double width, double height)
{
    widget->setGeometry(pixelsFromTwips(left), pixelsFromTwips(top),
                        pixelsFromTwips(left + width) - pixelsFromTwips(left), pixelsFromTwips(height));
}

} // namespace

void frmMainMenu::Form_Resize()
{
    if (isMinimized())
        return;
    m_laidOutFrame = frameSize();
    const double width = twipsFromPixels(m_laidOutFrame.width());
    const double height = twipsFromPixels(m_laidOutFrame.height());
    // Frames, menu and status bars differ in height; nothing may disappear behind the status bar.
    const double room = twipsFromPixels(centralWidget()->height());
    const double paneHeight = std::min(height - metrics::PaneHeightLess, room - 2 * metrics::Margin);
    const double third = width / 3;

    place(tvwCategory, metrics::Margin, metrics::Margin, third - metrics::TreeWidthLess, paneHeight);
    place(lsvData, third - metrics::ListLeftLess, metrics::Margin, width / 1.5 - metrics::ListWidthLess,
          paneHeight);
    placeSplitter(third - metrics::SplitterLeftLess, pixelsFromTwips(metrics::SplitterTop),
                  imgSplitter->height());
    pgbMain->resize(pixelsFromTwips(width - metrics::ProgressWidthLess), pgbMain->height());
    pgbMain->move(
        pixelsFromTwips(metrics::Margin),
        pixelsFromTwips(std::min(height - metrics::ProgressTopLess, room - metrics::ProgressHeight)));
    pgbMain->raise();
}

void frmMainMenu::SizeControls(float& x)
{
    const double width = twipsFromPixels(frameSize().width());
    if (x < metrics::PaneLimit)
        x = static_cast<float>(metrics::PaneLimit);
    if (x > width - metrics::PaneLimit)
        x = static_cast<float>(width - metrics::PaneLimit);
    const auto position = static_cast<double>(x);
    tvwCategory->resize(pixelsFromTwips(position), tvwCategory->height());
    lsvData->setGeometry(pixelsFromTwips(position + metrics::ListLeftBeyondTree), lsvData->y(),
                         pixelsFromTwips(width - (position + metrics::ListWidthLessTree)),
                         tvwCategory->height());
    placeSplitter(position, tvwCategory->y(), tvwCategory->height());
}

void frmMainMenu::placeSplitter(double left, int top, int height)
{
    m_splitterLeft = left;
    // Of the handle's width only the gap between the panes can be grabbed, and that is a few pixels; so the whole gap
    // counts and the frames of the panes with it, but nothing of what is in them.
    const int from = tvwCategory->geometry().right() + 1 - tvwCategory->frameWidth();
    const int to = lsvData->x() + lsvData->frameWidth();
    imgSplitter->setGeometry(from, top, to - from, height);
    m_splitterGap->setGeometry(from, tvwCategory->y(), to - from, tvwCategory->height());

    // Its ends lie at the limits of the panes or beyond them, so that whoever goes to an end gets to the very limit.
    const int width = std::max(1, centralWidget()->width());
    const auto percent = [width](int pixels) { return 100.0 * pixels / width; };
    const int least = pixelsFromTwips(metrics::PaneLimit);
    imgSplitter->standAt(qRound(percent(tvwCategory->width())), qFloor(percent(least)),
                         qCeil(percent(width - least)));
}

void frmMainMenu::imgSplitter_MouseDown()
{
    const int barWidth = static_cast<int>(metrics::SplitterWidth) / 2; // whole twips
    picSplitter->setGeometry(pixelsFromTwips(m_splitterLeft), imgSplitter->y(), pixelsFromTwips(barWidth),
                             imgSplitter->height() - pixelsFromTwips(metrics::SplitterBarHeightLess));
    picSplitter->raise();
    picSplitter->show();
    Moving = true;
}

void frmMainMenu::imgSplitter_MouseMove(double x)
{
    if (!Moving)
        return;
    const double width = twipsFromPixels(frameSize().width());
    const double position = x + twipsFromPixels(imgSplitter->x());
    const double left = position < metrics::DragLimit           ? metrics::DragLimit
                        : position > width - metrics::DragLimit ? width - metrics::DragLimit
                                                                : position;
    picSplitter->move(pixelsFromTwips(left), picSplitter->y());
}

void frmMainMenu::imgSplitter_MouseUp()
{
    auto position = static_cast<float>(twipsFromPixels(picSplitter->x()));
    SizeControls(position);
    picSplitter->hide();
    Moving = false;
}

void frmMainMenu::splitterEvent(QEvent& event)
{
    const auto isLeft = [&] { return static_cast<QMouseEvent&>(event).button() == Qt::LeftButton; };
    if (event.type() == QEvent::MouseButtonPress && isLeft())
        imgSplitter_MouseDown();
    else if (event.type() == QEvent::MouseMove)
        imgSplitter_MouseMove(twipsFromPixels(qRound(static_cast<QMouseEvent&>(event).position().x())));
    else if (event.type() == QEvent::MouseButtonRelease && Moving && isLeft())
        imgSplitter_MouseUp();
}

bool frmMainMenu::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == centralWidget() && event->type() == QEvent::Resize) {
        Form_Resize();
    } else if (watched == imgSplitter || watched == m_splitterGap) {
        splitterEvent(*event);
    }
    return FormWindow::eventFilter(watched, event);
}

bool frmMainMenu::event(QEvent* event)
{
    const bool handled = FormWindow::event(event);
    // The window manager tells the thickness of the frame after the window is shown; the outer size changes with it.
    const bool mayTell = event->type() == QEvent::Move || event->type() == QEvent::WindowActivate ||
                         event->type() == QEvent::Show;
    if (mayTell && lsvData != nullptr && isVisible() && frameSize() != m_laidOutFrame)
        Form_Resize();
    return handled;
}

} // namespace quillon

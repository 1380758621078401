#include "ui/main/fill_progress.h"

#include <QProgressBar>

#include <algorithm>
#include <limits>

namespace quillon
{

namespace
{
// Most lists are there before anybody could read a bar, and painting it takes longer than many rows.
constexpr PaintPace::Times PaintTimes{.first = 250, .next = 100};
} // namespace

FillProgress::FillProgress(QProgressBar& bar, const Clock& clock) : m_bar(bar), m_pace(clock, PaintTimes) {}

void FillProgress::start(qint64 maximum)
{
    prepare(maximum);
    m_bar.show();
}

void FillProgress::prepare(qint64 maximum)
{
    m_done = 0;
    m_bar.setRange(0, static_cast<int>(std::min<qint64>(maximum, std::numeric_limits<int>::max())));
    m_bar.setValue(0);
    m_pace.start();
}

void FillProgress::finish()
{
    // A visible bar paints itself at every change, and the window around it with it; this one disappears anyway.
    m_bar.setUpdatesEnabled(false);
    m_bar.setValue(m_bar.maximum());
    m_bar.setUpdatesEnabled(true); // what it covered is painted again only if it may be painted itself
    m_bar.hide();
}

void FillProgress::paintNowAndThen()
{
    if (!m_pace.isDue())
        return;
    m_bar.setValue(static_cast<int>(std::min<qint64>(m_done, m_bar.maximum())));
    // Painted at once: the event loop gets no turn while a list is being filled.
    if (m_bar.isVisible())
        m_bar.repaint();
}

} // namespace quillon

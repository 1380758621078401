#pragma once

#include "ui/widgets/paint_pace.h"

class QProgressBar;

namespace quillon
{

/// A progress bar while something is filled on the one thread: it paints itself, and only now and then, so
/// that a million rows cost no more than their reading.
class FillProgress
{
public:
    FillProgress(QProgressBar& bar, const Clock& clock);

    /// Shows the bar from 0 to `maximum` steps.
    void start(qint64 maximum);
    /// Sets the bar without showing it.
    void prepare(qint64 maximum);
    void advance()
    {
        // Asking the clock costs more than adding a row.
        if ((++m_done & 0x1FF) == 0)
            paintNowAndThen();
    }
    void finish();

    /// Shows the bar as long as it lives.
    class Showing
    {
    public:
        Showing(FillProgress& progress, qint64 maximum) : m_progress(progress) { progress.start(maximum); }
        ~Showing() { m_progress.finish(); }
        Showing(const Showing&) = delete;
        Showing& operator=(const Showing&) = delete;

    private:
        FillProgress& m_progress;
    };

private:
    void paintNowAndThen();

    QProgressBar& m_bar;
    PaintPace m_pace;
    qint64 m_done = 0;
};

} // namespace quillon

#include "ui/widgets/status_panels.h"

#include "app/base/error.h"
#include "app/base/ports/clock.h"
#include "ui/widgets/plain_tool_tip.h"
#include "ui/widgets/screen_room.h"

#include <QEvent>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QStyle>
#include <QTimer>

#include <algorithm>

namespace quillon
{

namespace
{

/// A label with a wanted and a least width. What does not fit ends in "…" on the screen only; then the whole text is the
/// tool tip.
class PanelLabel : public QLabel
{
public:
    PanelLabel(const StatusPanels::Panel& panel, QWidget* parent)
        : QLabel(parent), m_width(panel.width), m_minimumWidth(panel.minimumWidth),
          m_stretches(panel.stretches), m_writtenToolTip(panel.toolTip)
    {
        setToolTip(m_writtenToolTip);
    }

    void adaptToolTip()
    {
        const QString wanted = isShortened() ? plainToolTip(text()) : m_writtenToolTip;
        if (toolTip() != wanted)
            setToolTip(wanted);
    }

    QSize sizeHint() const override
    {
        const QSize content = QLabel::sizeHint();
        return m_width > 0 ? QSize(m_width, content.height()) : content;
    }

    QSize minimumSizeHint() const override
    {
        const QSize content = QLabel::minimumSizeHint();
        // A long message must never make the window wider.
        if (m_minimumWidth > 0 || m_stretches)
            return {m_minimumWidth, content.height()};
        return content;
    }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        if (!isShortened()) {
            QLabel::paintEvent(event);
            return;
        }
        QPainter painter(this);
        drawFrame(&painter);
        const QRect place = placeOfText();
        style()->drawItemText(&painter, place, static_cast<int>(alignment()), palette(), isEnabled(),
                              fontMetrics().elidedText(text(), Qt::ElideRight, place.width()),
                              foregroundRole());
    }

    void resizeEvent(QResizeEvent* event) override
    {
        QLabel::resizeEvent(event);
        adaptToolTip();
    }

    void changeEvent(QEvent* event) override
    {
        QLabel::changeEvent(event);
        if (event->type() == QEvent::FontChange)
            adaptToolTip();
    }

private:
    /// As the label itself places its text: half an "x" beside the frame.
    QRect placeOfText() const
    {
        const int indent = fontMetrics().horizontalAdvance(u'x') / 2;
        return contentsRect().adjusted(indent, 0, 0, 0);
    }
    bool isShortened() const { return fontMetrics().horizontalAdvance(text()) > placeOfText().width(); }

    int m_width;
    int m_minimumWidth;
    bool m_stretches;
    QString m_writtenToolTip;
};

} // namespace

StatusPanels::StatusPanels(const std::vector<Panel>& panels, QWidget* parent) : QStatusBar(parent)
{
    for (const Panel& panel : panels) {
        auto* panelLabel = new PanelLabel(panel, this);
        panelLabel->setObjectName(panel.objectName);
        panelLabel->setTextFormat(Qt::PlainText); // A name in angle brackets is a name, not a tag.
        panelLabel->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        panelLabel->setText(panel.text);
        panelLabel->setAccessibleDescription(panel.toolTip);
        addWidget(panelLabel, panel.stretches ? 1 : 0);
        m_labels.push_back(panelLabel);
    }
}

QSize StatusPanels::minimumSizeHint() const
{
    const QSize least = QStatusBar::minimumSizeHint();
    return {std::min(least.width(), roomInUsualFrame(*this).width()), least.height()};
}

QLabel* StatusPanels::label(int panel) const
{
    if (panel < 1 || static_cast<std::size_t>(panel) > m_labels.size())
        throw Error(errors::IndexOutOfBounds);
    return m_labels[static_cast<std::size_t>(panel) - 1];
}

void StatusPanels::setText(int panel, const QString& text)
{
    // Setting the same text again would still announce a change to assistive technology.
    if (QLabel* panelLabel = label(panel); panelLabel->text() != text) {
        panelLabel->setText(text);
        static_cast<PanelLabel*>(panelLabel)->adaptToolTip();
    }
}

QString StatusPanels::text(int panel) const
{
    return label(panel)->text();
}

void StatusPanels::keepDateAndTime(int datePanel, int timePanel, const Clock& clock)
{
    const auto refresh = [dateLabel = label(datePanel), timeLabel = label(timePanel), &clock] {
        // In Japanese like the rest of the window, whatever the system's language.
        const QLocale japanese(QLocale::Japanese, QLocale::Japan);
        const QDateTime now = clock.now();
        if (const QString date = japanese.toString(now.date(), QLocale::ShortFormat);
            dateLabel->text() != date)
            dateLabel->setText(date);
        if (const QString time = japanese.toString(now.time(), QLocale::ShortFormat);
            timeLabel->text() != time)
            timeLabel->setText(time);
    };
    refresh();
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, refresh);
    timer->start(1000);
}

} // namespace quillon

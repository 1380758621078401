#pragma once

#include <QStatusBar>
#include <QString>

#include <vector>

class QLabel;

namespace quillon
{

class Clock;

/// A status bar of numbered text panels (from 1), one label each.
class StatusPanels : public QStatusBar
{
    Q_OBJECT

public:
    struct Panel {
        QString objectName; // may be empty
        int width = 0;      // as created, in pixels; 0: by its content
        int minimumWidth = 0;
        QString text;
        QString toolTip;
        bool stretches = false;
    };

    explicit StatusPanels(const std::vector<Panel>& panels, QWidget* parent = nullptr);

    /// On a screen with too little room for all panels they share what there is.
    QSize minimumSizeHint() const override;

    void setText(int panel, const QString& text);
    QString text(int panel) const;
    /// Lets two panels show the current date and time by themselves.
    void keepDateAndTime(int datePanel, int timePanel, const Clock& clock);

private:
    QLabel* label(int panel) const;

    std::vector<QLabel*> m_labels;
};

} // namespace quillon

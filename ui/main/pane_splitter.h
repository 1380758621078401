#pragma once

#include <QAbstractSlider>

namespace quillon
{

/// The handle between the panes. It shows nothing of itself; where it stands is its value, in percent, which assistive
/// technology reads out and can set. The mouse is its window's business.
class PaneSplitter : public QAbstractSlider
{
    Q_OBJECT

public:
    explicit PaneSplitter(QWidget* parent);

    /// Tells where it stands, which is no wish to move it. All in percent.
    void standAt(int percent, int least, int most);

Q_SIGNALS:
    /// The person wants it there, in percent.
    void moveWanted(int percent);
    /// The person has done with it.
    void left();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    int m_percent = 0; // where it was told to stand
};

} // namespace quillon

#pragma once

#include <QLabel>
#include <QPointer>

class QAbstractItemView;

namespace quillon
{

/// A sentence over an empty list or tree that says what to do. It is a label beside the view, and no row of it: nothing
/// can be done with it, and a screen reader finds it as a text and as the description of the view. The description goes
/// with the label.
class PaneHint : public QLabel
{
    Q_OBJECT

public:
    PaneHint(QAbstractItemView& view, const QString& name, const QString& text);
    ~PaneHint() override;
    PaneHint(const PaneHint&) = delete;
    PaneHint& operator=(const PaneHint&) = delete;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void place();

    QPointer<QAbstractItemView> m_view;
};

} // namespace quillon

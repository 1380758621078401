#pragma once

#include <QLabel>

class QAbstractItemView;
class QInputMethodEvent;

namespace quillon
{

/// A small field at the current row of a list or tree. It shows what an input method composes there, where nothing can
/// be edited and the person types to find a row; it is gone as soon as that is confirmed or taken back.
class CompositionField : public QLabel
{
    Q_OBJECT

public:
    explicit CompositionField(QAbstractItemView& view);

    /// To be given each event of an input method before the view gets it. True when it was the blank that an input method
    /// makes of the space bar while nothing is composed: the view has got the key instead, which means something there.
    bool takes(const QInputMethodEvent& event);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void place();

    QAbstractItemView& m_view;
};

} // namespace quillon

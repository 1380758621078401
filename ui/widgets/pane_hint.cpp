#include "ui/widgets/pane_hint.h"

#include <QAbstractItemView>
#include <QEvent>

namespace quillon
{

PaneHint::PaneHint(QAbstractItemView& view, const QString& name, const QString& text)
    : QLabel(text, view.parentWidget()), m_view(&view)
{
    setObjectName(name);
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setAlignment(Qt::AlignCenter);
    setMargin(fontMetrics().height());
    // It lies over the view's background.
    setForegroundRole(QPalette::Text);
    // What is clicked, dropped or hovered here is meant for the view.
    setAttribute(Qt::WA_TransparentForMouseEvents);
    view.setAccessibleDescription(text);
    view.installEventFilter(this);
    view.viewport()->installEventFilter(this);
    place();
}

PaneHint::~PaneHint()
{
    if (m_view)
        m_view->setAccessibleDescription({});
}

bool PaneHint::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::Show:
        place();
        break;
    default:
        break;
    }
    return QLabel::eventFilter(watched, event);
}

void PaneHint::place()
{
    if (!m_view)
        return;
    const QWidget& viewport = *m_view->viewport();
    setGeometry(QRect(viewport.mapTo(parentWidget(), QPoint(0, 0)), viewport.size()));
    raise();
}

} // namespace quillon

#include "ui/widgets/composition_field.h"

#include <QAbstractItemView>
#include <QCoreApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

CompositionField::CompositionField(QAbstractItemView& view) : QLabel(view.viewport()), m_view(view)
{
    setObjectName(u"composition"_s);
    setTextFormat(Qt::PlainText);
    setFrameShape(QFrame::Box);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    setForegroundRole(QPalette::Text);
    setMargin(2);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    view.installEventFilter(this);
}

bool CompositionField::takes(const QInputMethodEvent& event)
{
    const bool composed = !isHidden();
    setText(event.preeditString());
    if (!event.preeditString().isEmpty()) {
        place();
        show();
        return false;
    }
    hide();
    const bool isBlank = event.commitString() == u" "_s || event.commitString() == u"\u3000"_s;
    if (composed || !isBlank)
        return false;
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent space(type, Qt::Key_Space, Qt::NoModifier, u" "_s);
        QCoreApplication::sendEvent(&m_view, &space);
    }
    return true;
}

void CompositionField::place()
{
    QFont underlined = m_view.font();
    underlined.setUnderline(true); // as in a field
    setFont(underlined);
    const QRect room = m_view.viewport()->rect();
    const QRect row = m_view.currentIndex().isValid()
                          ? m_view.visualRect(m_view.currentIndex()).intersected(room)
                          : QRect();
    const QSize size = sizeHint().boundedTo(room.size()).expandedTo({0, row.height()});
    const int left = std::clamp(row.left(), 0, std::max(0, room.width() - size.width()));
    const int top = std::clamp(row.isEmpty() ? 0 : row.top(), 0, std::max(0, room.height() - size.height()));
    setGeometry(QRect(QPoint(left, top), size));
}

bool CompositionField::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FocusOut)
        hide();
    return QLabel::eventFilter(watched, event);
}

} // namespace quillon

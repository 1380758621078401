#include "ui/widgets/composition.h"

#include <QAbstractItemView>
#include <QCoreApplication>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QKeyEvent>

namespace quillon
{

void Composition::follow(QWidget& widget, const QEvent& event)
{
    switch (event.type()) {
    case QEvent::InputMethod:
        m_text = static_cast<const QInputMethodEvent&>(event).preeditString();
        m_field = m_text.isEmpty() ? nullptr : &widget;
        break;
    case QEvent::FocusAboutToChange:
        if (m_field == &widget)
            confirm();
        break;
    case QEvent::FocusOut:
        if (m_field != &widget)
            break;
        // A menu leaves the field to the input method. Else it is too late to confirm anything: the input method speaks
        // to another field already.
        if (static_cast<const QFocusEvent&>(event).reason() == Qt::PopupFocusReason)
            confirm();
        else
            m_field = nullptr;
        break;
    default:
        break;
    }
}

bool Composition::isActiveIn(const QWidget& widget) const
{
    return m_field == &widget || widget.isAncestorOf(m_field);
}

void Composition::confirm()
{
    if (m_field.isNull())
        return;
    QInputMethod& method = *QGuiApplication::inputMethod();
    const bool searches = qobject_cast<QAbstractItemView*>(m_field) != nullptr;
    if (!searches && QGuiApplication::focusObject() == m_field)
        method.commit(); // it answers with an event, by which the composition ends here as well
    if (m_field.isNull())
        return;
    // It cannot do so. What it still knows of is dropped, and what it has shown is taken at its word.
    const QPointer<QWidget> field = m_field;
    const QString text = m_text;
    method.reset();
    if (field.isNull())
        return;
    QInputMethodEvent confirmed;
    if (!searches)
        confirmed.setCommitString(text);
    QCoreApplication::sendEvent(field, &confirmed);
    m_field = nullptr;
}

bool Composition::takes(const QWidget& field, const QKeyEvent& key)
{
    const bool confirms = key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter;
    if (!isActiveIn(field) || (!confirms && key.key() != Qt::Key_Escape))
        return false;
    if (confirms) {
        confirm();
    } else {
        m_field = nullptr;
        QGuiApplication::inputMethod()->reset();
    }
    return true;
}

} // namespace quillon

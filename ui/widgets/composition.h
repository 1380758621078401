#pragma once

#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QKeyEvent>

namespace quillon
{

/// Whether an input method holds text in a field that is not confirmed yet.
class Composition
{
public:
    /// To be told of every event of the fields.
    void follow(const QEvent& event)
    {
        if (event.type() == QEvent::InputMethod)
            m_active = !static_cast<const QInputMethodEvent&>(event).preeditString().isEmpty();
        else if (event.type() == QEvent::FocusOut)
            m_active = false;
    }
    bool isActive() const { return m_active; }

    /// Whether a key ends the composition and means nothing else: Enter confirms it, Esc takes it back. Most input
    /// methods keep these keys to themselves.
    bool takes(const QKeyEvent& key)
    {
        const bool confirms = key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter;
        if (!m_active || (!confirms && key.key() != Qt::Key_Escape))
            return false;
        m_active = false;
        if (confirms)
            QGuiApplication::inputMethod()->commit();
        else
            QGuiApplication::inputMethod()->reset();
        return true;
    }

private:
    bool m_active = false;
};

} // namespace quillon

#pragma once

#include "ui/widgets/composition.h"
#include "ui/widgets/key_repeats.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

class QKeyEvent;

namespace quillon
{

/// Follows what the person does in all windows of the program.
/// - It knows the window whose action is going on, so that what an action asks is asked in front of that window.
/// - A key that is held down answers no box, confirms nothing and closes nothing again.
/// - What an input method has not confirmed yet is confirmed before a command, a closing question or an access key acts.
/// - Access keys go to the menus before the controls (see `isAccessKeyOfMenus`).
class PersonsInput : public QObject
{
public:
    /// The one of the application, made when it is asked for first.
    static PersonsInput& ofApplication();

    /// The window in which the person acted last, or the one that a `Claim` names; null when it is not on the screen.
    /// What is done in a box or a menu is done in the window that it belongs to.
    QWidget* actingWindow() const;
    KeyRepeats& repeats() { return m_repeats; }
    Composition& composition() { return m_composition; }

    /// Makes a window the acting one for as long as this lives: it acts by itself, as in closing.
    class Claim
    {
    public:
        explicit Claim(QWidget& window);
        ~Claim();
        Claim(const Claim&) = delete;
        Claim& operator=(const Claim&) = delete;

    private:
        QPointer<QWidget> m_before;
    };

protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    using QObject::QObject;

    KeyRepeats m_repeats{this};
    Composition m_composition;
    QPointer<QWidget> m_acting;
};

} // namespace quillon

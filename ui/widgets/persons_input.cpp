#include "ui/widgets/persons_input.h"

#include "ui/widgets/access_key.h"
#include "ui/widgets/may_act.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>

namespace quillon
{

namespace
{

/// The window that a widget belongs to in the end: a box or a menu belongs to another one.
QWidget* owningWindow(QWidget* widget)
{
    while (widget->parentWidget() != nullptr)
        widget = widget->parentWidget();
    return widget->windowType() == Qt::Popup || widget->windowType() == Qt::ToolTip ? nullptr : widget;
}

/// Whether an event is something that the person does in a widget.
bool isAct(const QEvent& event)
{
    switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::TouchBegin:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Shortcut:
    case QEvent::ContextMenu:
    case QEvent::InputMethod:
    case QEvent::Drop:
    case QEvent::Close:
        return true;
    default:
        return false;
    }
}

/// Whether a key would answer, confirm, close or open something here.
bool isCommand(const QWidget& receiver, const QKeyEvent& key)
{
    const auto* text = qobject_cast<const QPlainTextEdit*>(&receiver);
    switch (key.key()) {
    case Qt::Key_Escape:
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return text == nullptr || text->isReadOnly(); // there they are line breaks
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return false;
    default:
        break;
    }
    // Access keys, and the characters of the buttons of a box.
    const bool typesCharacter = !key.text().isEmpty();
    const bool inBox = qobject_cast<const QMessageBox*>(receiver.window()) != nullptr;
    return typesCharacter && (inBox || key.modifiers().testFlag(Qt::AltModifier));
}

/// Whether a key press is that of an access key, or of a key of the desktop, which nothing has taken. The toolkit would
/// type its character.
bool isUnusedAccessKey(const QWidget& receiver, const QKeyEvent& key)
{
    const Qt::KeyboardModifiers held = key.modifiers();
    // With Ctrl and Alt the characters of a third level are typed on some systems.
    const bool isCommand = held.testFlag(Qt::MetaModifier) ||
                           (held.testFlag(Qt::AltModifier) && !held.testFlag(Qt::ControlModifier));
    return isCommand && !key.text().isEmpty() && key.text().front().isPrint() &&
           receiver.testAttribute(Qt::WA_InputMethodEnabled);
}

} // namespace

PersonsInput& PersonsInput::ofApplication()
{
    static QPointer<PersonsInput> input;
    if (input.isNull()) {
        input = new PersonsInput(QCoreApplication::instance());
        QCoreApplication::instance()->installEventFilter(input);
    }
    return *input;
}

QWidget* PersonsInput::actingWindow() const
{
    return !m_acting.isNull() && m_acting->isVisible() ? m_acting.data() : nullptr;
}

PersonsInput::Claim::Claim(QWidget& window) : m_before(ofApplication().m_acting)
{
    ofApplication().m_acting = &window;
}

PersonsInput::Claim::~Claim()
{
    ofApplication().m_acting = m_before;
}

bool PersonsInput::eventFilter(QObject* receiver, QEvent* event)
{
    if (m_repeats.takes(receiver, event))
        return true;
    if (!receiver->isWidgetType())
        return false;
    auto& widget = static_cast<QWidget&>(*receiver);
    m_composition.follow(widget, *event);
    // The access key of a button, also of one in a box; boxes that are closed.
    if (event->type() == QEvent::Shortcut || event->type() == QEvent::Close)
        m_composition.confirm();
    if (isAct(*event)) {
        if (QWidget* window = owningWindow(&widget))
            m_acting = window;
    }
    const bool released = event->type() == QEvent::KeyRelease;
    if (!released && event->type() != QEvent::KeyPress && event->type() != QEvent::ShortcutOverride)
        return false;
    const auto& key = static_cast<const QKeyEvent&>(*event);
    QWidget* window = owningWindow(&widget);
    // Also in a box: Alt may have been pressed before it came, and is released there.
    if (window != nullptr && key.key() == Qt::Key_Alt && event->type() != QEvent::ShortcutOverride)
        followAlt(*window, key);
    // The menus of a window that waits for an answer wait with it.
    if (window != nullptr && !mayActOn(*window))
        window = nullptr;
    if (released)
        return false;
    if (m_repeats.isRepeat(key) && isCommand(widget, key)) {
        event->accept();
        return true;
    }
    if (window == nullptr || !isAccessKeyOfMenus(*window, key)) {
        if (event->type() != QEvent::KeyPress || !isUnusedAccessKey(widget, key))
            return false;
        event->accept();
        return true;
    }
    // Taken in its first form, the key comes as a key press; else the toolkit would share it out by turns.
    if (event->type() == QEvent::KeyPress) {
        m_composition.confirm();
        useAccessKey(*window, key);
    }
    event->accept();
    return true;
}

} // namespace quillon

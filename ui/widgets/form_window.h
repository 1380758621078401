#pragma once

#include "app/base/ports/windows.h"

#include <QHash>
#include <QMainWindow>
#include <QSizeF>
#include <QString>

#include <functional>

class QAction;
class QLayout;
class QMenu;
class QPushButton;

namespace quillon
{

class Session;
class WindowRegistry;

/// A top-level window of the program: loaded when it is constructed, unloaded when it has been closed.
/// While it is loaded it stands in the registry, in the order of loading. It deletes itself after unloading.
class FormWindow : public QMainWindow, public virtual LoadedWindow
{
    Q_OBJECT

public:
    FormWindow(Session& session, WindowRegistry& registry, const QString& windowName);
    ~FormWindow() override;
    FormWindow(const FormWindow&) = delete;
    FormWindow& operator=(const FormWindow&) = delete;

    QString windowName() const override { return objectName(); }
    bool unload() override;
    bool mayUnload() override;
    void unloadAnswered() override;
    void bringToFront() override;

    void showModeless() override;
    /// Shows the window modally and returns when it has been unloaded.
    void showModal() override;

Q_SIGNALS:
    /// The window has left the registry and will be deleted.
    void unloaded();

protected:
    Session& session() const { return m_session; }
    WindowRegistry& registry() const { return m_registry; }

    /// The window's own question before it closes; false keeps it open.
    virtual bool queryUnload() { return true; }

    /// Takes the controls of the window, the parts of its central widget: what is in `body` scrolls where the screen has
    /// no room for it, the row below, if there is one, stays in view.
    void setContents(QWidget* body, QLayout* bottom = nullptr);

    /// Sets the least size of the window with its frame, in twips. The window manager hears of it as well, so that a
    /// person who drags the border feels the limit. On a screen with less room than that the room is the limit.
    void keepAtLeast(double width, double height);

    /// For a small window: it is wide enough for its title, and opens over the middle of the main window.
    void openOverMainWindow() { m_opensOverMainWindow = true; }

    /// The room for the window on its screen, inside the window's frame.
    QSize roomOnScreen() const;

    /// Makes a window that appears so much larger as what scrolls in it lacks room, where the screen has it.
    void growWhereItScrolls();

    void closeEvent(QCloseEvent* event) override;
    bool event(QEvent* event) override;
    /// Enter presses the button that has the focus, as it does in dialogs.
    void keyPressEvent(QKeyEvent* event) override;

    using Handler = std::function<void()>;

    /// Adds an entry to a menu under its design name; captions are used as they stand. Choosing it runs `handler`, a
    /// function or a member of the window, as the event "<name>_Click"; without one it does nothing.
    QAction* addEntry(QMenu* menu, const QString& name, const QString& caption, const Handler& handler = {});
    template <class Form>
    QAction* addEntry(QMenu* menu, const QString& name, const QString& caption, void (Form::*handler)())
    {
        return addEntry(menu, name, caption, bound(handler));
    }
    /// Makes a button in the same way. One of an array, "cmdSize(1)", runs its handler as "cmdSize_Click".
    QPushButton* addButton(QWidget* parent, const QString& name, const QString& caption,
                           const Handler& handler);
    template <class Form>
    QPushButton* addButton(QWidget* parent, const QString& name, const QString& caption,
                           void (Form::*handler)())
    {
        return addButton(parent, name, caption, bound(handler));
    }
    QMenu* addMenu(const QString& name, const QString& caption);
    QMenu* addSubmenu(QMenu* menu, const QString& name, const QString& caption);
    QAction* addLine(QMenu* menu, const QString& name);
    /// A menu or an entry by its design name, null if there is none.
    QAction* action(const QString& name) const { return m_actions.value(name); }

private:
    template <class Form> Handler bound(void (Form::*handler)())
    {
        return [form = static_cast<Form*>(this), handler] { (form->*handler)(); };
    }
    bool tryUnload();
    void enforceLeastSize();
    /// Makes the window as small as its screen, when it is larger.
    void fitScreen();
    void moveOntoScreen();
    void followScreen();
    void prepareToAppear();
    void placeOverMainWindow();

    Session& m_session;
    WindowRegistry& m_registry;
    QHash<QString, QAction*> m_actions;
    bool m_asking = false; // a closing question is on the screen
    bool m_unloaded = false;
    bool m_opensOverMainWindow = false;
    bool m_followsScreen = false;
    QMetaObject::Connection m_screenWatch;
    QSizeF m_leastFrame; // twips; empty for none
    QSize m_fittedFrame; // the thickness of the frame with which the window was last made to fit its screen
};

} // namespace quillon

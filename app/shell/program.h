#pragma once

#include "store/kept/keeping.h"
#include "store/session.h"
#include "ui/widgets/help_key.h"
#include "ui/widgets/window_registry.h"

#include <QPointer>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace quillon
{

class frmMainMenu;
class frmRestore;

/// One run of the program: the session, the windows and how each window comes into being. It knows nothing of where
/// its ports come from, so a test builds it with ports of its own.
class Program
{
public:
    struct Ports {
        Dialogs& dialogs;
        EventLog& eventLog;
        Clock& clock;
        Desktop& desktop;
        Files& files;
        /// Where what is overwritten and deleted is kept; nothing: it is not.
        std::optional<QString> keptFolder = {};
        /// When copies are made there; nothing: never.
        std::optional<kept::CopyTimes> copies = kept::CopyTimes();
        /// Where the page of the manual lies.
        QString manualFolder = {};
    };

    /// `currentFolder`: the process's current folder, empty when there is none.
    Program(const Ports& ports, const QString& currentFolder);
    /// Destroys the windows without asking them anything.
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    Session& session() { return m_session; }
    WindowRegistry& windows() { return m_windows; }

    /// The main window, created and made known to the session on first use; it is not shown.
    frmMainMenu& mainWindow();
    /// The window to take things back, in its place in a run for that.
    frmRestore& restoreWindow();

    /// What happens when the person has confirmed the end of the program; nothing by default.
    void setEnd(std::function<void()> end) { m_end = std::move(end); }
    /// How another run of the program is started to open a database; false when that fails. Not at all by default.
    void setStart(std::function<bool(const QString&)> start) { m_start = std::move(start); }

private:
    void registerWindows(const QString& manualFolder);
    void tellDamage(const kept::Damage& damage);

    WindowRegistry m_windows;
    Session m_session;
    std::unique_ptr<kept::Keeping> m_keeping;
    HelpKey m_helpKey;
    QPointer<frmMainMenu> m_mainWindow;
    QPointer<frmRestore> m_restoreWindow;
    std::function<void()> m_end;
    std::function<bool(const QString&)> m_start;
};

} // namespace quillon

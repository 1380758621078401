#pragma once

#include "app/shell/program.h"
#include "tests/support/scripted_dialogs.h"
#include "tests/support/test_folder.h"
#include "tests/support/test_ports.h"

#include <QWidget>

class QAction;

namespace quillon
{
class FormWindow;
class frmMainMenu;
} // namespace quillon

namespace quillon::testing
{

/// The program with all its windows in a temporary current folder, with scripted dialogs, a clock that stands still
/// and a desktop that opens nothing. The main window exists and is shown from the beginning.
class WindowWorld
{
public:
    /// `manualFolder`: where the page of the manual lies, if anywhere.
    explicit WindowWorld(const QString& manualFolder = {});
    /// Destroys all windows without asking them anything.
    ~WindowWorld();
    WindowWorld(const WindowWorld&) = delete;
    WindowWorld& operator=(const WindowWorld&) = delete;

    /// Creates an empty database with its seven tables in the current folder; returns its full name.
    QString createDatabase(const QString& name = QStringLiteral("QUILLON.mdb"));
    /// Opens a database as the File menu does once a name has been chosen, and fills the data list.
    void open(const QString& path);
    /// Adds one row to a record set's table.
    static void addRow(const std::shared_ptr<RecordSet>& recordSet, const QStringList& fields);
    /// All rows of a record set, each as its fields joined by "|".
    static QStringList rowsOf(const std::shared_ptr<RecordSet>& recordSet);

    Session& session() { return program.session(); }
    frmMainMenu& mainWindow() { return program.mainWindow(); }

    /// How many windows of a design name are loaded.
    int windowCount(const QString& designName);
    /// The names of all loaded windows in the order of loading.
    QStringList loadedNames();
    /// The n-th loaded window (from 0) of a design name; null when there are fewer.
    template <class Form> Form* window(const QString& designName, int n = 0)
    {
        return dynamic_cast<Form*>(loadedWindow(designName, n));
    }

    /// The menu entry or menu of a window under its design name; null, which fails a test, when there is none.
    static QAction* entry(QWidget& window, const QString& designName);
    /// Chooses a menu entry as a person does: a disabled, hidden or missing entry cannot be chosen.
    static bool choose(QWidget& window, const QString& designName);
    /// The control of a window under its design name; null when there is none.
    template <class Control> static Control* control(QWidget& window, const QString& designName)
    {
        return window.template findChild<Control*>(designName);
    }

    /// Lets posted events, deferred deletions included, run.
    static void processEvents();

    TestFolder folder;
    CallLog calls; // what all of the following are asked to do, in order
    ScriptedDialogs dialogs{calls};
    MemoryEventLog eventLog{calls};
    FixedClock clock;
    RecordingDesktop desktop{calls};
    RealFiles files{calls};
    Program program;
    /// How often the end of the program has been asked for and confirmed.
    int ends = 0;

private:
    LoadedWindow* loadedWindow(const QString& designName, int n);
};

} // namespace quillon::testing

#pragma once

#include "app/base/system_files.h"
#include "app/base/system_ports.h"
#include "app/shell/program.h"
#include "tools/guide.h"
#include "tools/silent_ports.h"

#include <QString>

#include <functional>

namespace quillon
{
class FormWindow;
}

namespace quillon::tour
{

/// The program as the tour plays it, and the hands to play it with.
class Stage
{
public:
    /// `currentFolder`: where the tour's databases and files lie.
    Stage(Guide& tourGuide, const QString& currentFolder);

    frmMainMenu& mainWindow() { return program.mainWindow(); }
    /// What a run of the program stands on.
    Program::Ports ports();
    QString keptFolder() const { return folder + QStringLiteral("/kept"); }
    /// The window of this name that was loaded last; null, which is complained about, when there is none.
    FormWindow* lastWindow(const QString& name);
    /// Chooses a menu entry.
    void choose(QWidget& window, const QString& name);
    /// Presses a button.
    void press(QWidget& window, const QString& name);
    /// Clicks a node of the main window's tree.
    void chooseNode(const QString& key);
    /// Selects the row of a list whose first column reads so.
    void selectRow(QWidget& window, const QString& list, const QString& name);
    /// Replaces the text of a field.
    void type(QWidget& window, const QString& field, const QString& text);
    /// Runs `action` while the window of this name, which the next action opens, is modal.
    void whileModal(const QString& windowName, std::function<void(FormWindow&)> action);
    /// Pictures the last window of a name, if there is one.
    void picture(const QString& windowName, const QString& pictureName);

    Guide& guide;
    QString folder;
    GuidedDialogs dialogs;
    SilentEventLog log;
    SystemClock clock;
    SilentDesktop desktop; // the tour has no business in other programs
    SystemFiles files;
    Program program;
};

/// Registers a document and a file.
void playDocumentsAndFiles(Stage& stage);
/// Links, classifies, takes apart and deletes.
void playRelations(Stage& stage);
/// Makes, renames and deletes categories.
void playCategories(Stage& stage);
/// Searches, lists all links and opens the console.
void playSearches(Stage& stage);

} // namespace quillon::tour

#pragma once

#include "app/base/ports/clock.h"
#include "app/base/ports/dialogs.h"
#include "app/base/system_files.h"
#include "app/shell/program.h"
#include "tools/silent_ports.h"

#include <QTemporaryDir>

namespace quillon
{
class KeyedTree;
class ReportList;
class frmMainMenu;
} // namespace quillon

namespace quillon::bench
{

/// Nobody sits at the screen: a box that was not announced means that what is measured has failed, and throws.
class NoDialogs : public Dialogs
{
public:
    /// The next box has this text and is answered with OK.
    void announceBox(const QString& text) { m_announced = text; }

    Answer messageBox(const MessageBox& box) override;
    std::optional<QString> inputBox(const InputBox& box) override;
    std::optional<QString> fileDialog(const FileDialog& dialog) override;

private:
    QString m_announced;
};

/// Columns of the main list.
constexpr int NameColumn = 0;
constexpr int IdentifierColumn = 2;

/// A clock that shows what it is set to.
class SetClock : public Clock
{
public:
    QDateTime now() const override { return time; }
    QString shortDate() const override { return time.date().toString(u"yyyy/MM/dd"); }
    QString shortTime() const override { return time.time().toString(u"HH:mm"); }

    QDateTime time{QDate(2026, 1, 15), QTime(10, 0)};
};

/// The program with its main window on the screen, as a person has it before choosing a file.
class QuietProgram
{
public:
    QuietProgram();
    ~QuietProgram();
    QuietProgram(const QuietProgram&) = delete;
    QuietProgram& operator=(const QuietProgram&) = delete;

    Session& session() { return m_program.session(); }
    NoDialogs& dialogs() { return m_dialogs; }
    frmMainMenu& mainWindow() { return m_program.mainWindow(); }
    ReportList& list();
    KeyedTree& tree();

    /// Opens a database as the File menu does once a name has been chosen, up to the painted list. Throws unless
    /// the list then has rows or `expectRows` is false.
    void open(const QString& path, bool expectRows = true);
    /// Clicks the node with this key, as far as it fills the list.
    void clickNode(const QString& key);
    /// Leaves the main window alone on the screen. Throws when a window does not close.
    void closeOtherWindows();

    SetClock clock;

private:
    QTemporaryDir m_folder;
    NoDialogs m_dialogs;
    SilentEventLog m_eventLog;
    SilentDesktop m_desktop;
    SystemFiles m_files;
    Program m_program;
};

} // namespace quillon::bench

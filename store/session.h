#pragma once

#include "app/base/reporting.h"

#include <QString>

#include <array>
#include <functional>
#include <memory>
#include <optional>

namespace quillon
{

class Database;
class DataWindow;
class Desktop;
class Files;
class Keeper;
class MainWindowPort;
class RecordSet;
class Windows;

/// The state of one run of the program, under the names of its design, and the ports to the world.
/// Built once in the program's entry (or a test) and passed by reference.
class Session
{
public:
    struct Ports {
        Dialogs& dialogs;
        EventLog& eventLog;
        Clock& clock;
        Desktop& desktop;
        Files& files;
        Windows& windows;
    };

    /// `currentFolder`: the process's current folder, base of the file folder and of the Info menu's texts.
    Session(const Ports& ports, QString currentFolder);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    Reporting reporting;
    Dialogs& dialogs;
    Clock& clock;
    Desktop& desktop;
    Files& files;
    Windows& windows;

    /// The main window as operations below it see it. Error 91 while there is none.
    MainWindowPort& mainWindow() const;
    void setMainWindow(MainWindowPort* window) { m_mainWindow = window; }

    /// A path below the current folder: the folder, the separator, `name`.
    QString inCurrentFolder(const QString& name) const;

    QString CurrentFolder;

    /// Who keeps what is overwritten and deleted; null: nobody.
    Keeper* keeper = nullptr;

    std::shared_ptr<Database> OpenDb;
    std::shared_ptr<RecordSet> RsMain;
    std::shared_ptr<RecordSet> RsOpenApp;
    std::shared_ptr<RecordSet> RsRefFile;
    std::shared_ptr<RecordSet> RsRefDoc;
    std::shared_ptr<RecordSet> RsLink;
    std::shared_ptr<RecordSet> RsCategoryID;
    std::shared_ptr<RecordSet> RsCategory;

    using Set = std::shared_ptr<RecordSet> Session::*;
    /// The sets of the open database, one for each table.
    static const std::array<Set, 7>& recordSets();
    /// Lets go of the open database and of its sets; its file is free unless somebody else holds one of them.
    void closeDatabase();

    qint16 MainLastFieldIndex = 0;

    bool LinkSourceMode = false;
    QString LinkSourceID;
    QString LinkSourceName;
    DataWindow* LinkSourceForm = nullptr;

    QString RegisteredFolder; // where the file lay that was registered last

    /// A file that is being registered to be linked with a datum.
    struct FileToLink {
        QString with;                         // the identifier of the datum
        std::function<void()> requireIt = {}; // fails when it is not the datum that was meant any more
        QString registered = {};              // that of the file, once it is registered
        std::optional<Error> failure = {};    // why it is not linked
    };
    std::optional<FileToLink> RegisteringToLink;

    bool CategoryChosen = false;
    QString ChosenCategoryID;
    QString ChosenCategoryName;

    qint16 PrivateMode = 0;

private:
    MainWindowPort* m_mainWindow = nullptr;
};

/// The record set, or error 91 when there is none (no database is open, or making the set failed).
RecordSet& required(const std::shared_ptr<RecordSet>& recordSet);

} // namespace quillon

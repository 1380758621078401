#pragma once

#include "store/kept/keeping.h"
#include "store/session.h"
#include "tests/support/scripted_dialogs.h"
#include "tests/support/test_folder.h"
#include "tests/support/test_ports.h"

#include <memory>

namespace quillon::testing
{

/// A session without windows: scripted dialogs, a clock that stands still, a temporary current folder and, when
/// asked, an open database in it.
class TestWorld
{
public:
    TestWorld();
    ~TestWorld();
    TestWorld(const TestWorld&) = delete;
    TestWorld& operator=(const TestWorld&) = delete;

    /// Creates an empty database "QUILLON.mdb" with its seven tables in the current folder; returns its full name.
    QString createDatabase(const QString& name = QStringLiteral("QUILLON.mdb"));
    /// Opens a database with its record sets, without status texts and boxes.
    void openDatabase(const QString& path);
    /// Keeps what is overwritten and deleted in databases that are opened from now on, in the folder "kept".
    void keep();
    /// Adds one row to a record set's table.
    static void addRow(const std::shared_ptr<RecordSet>& recordSet, const QStringList& fields);
    /// All rows of a record set, each as its fields joined by "|".
    static QStringList rowsOf(const std::shared_ptr<RecordSet>& recordSet);

    TestFolder folder;
    CallLog calls; // what all of the following are asked to do, in order
    ScriptedDialogs dialogs{calls};
    MemoryEventLog eventLog{calls};
    FixedClock clock;
    RecordingDesktop desktop{calls};
    RealFiles files{calls};
    FakeWindows windows{calls};
    FakeMainWindow mainWindow{calls};
    Session session;
    std::unique_ptr<kept::Keeping> keeping; // null: nothing is kept
};

} // namespace quillon::testing

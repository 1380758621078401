#pragma once

#include <QString>

#include <optional>

namespace quillon
{

class Program;

/// The process's current folder as the operating system reports it: no separator at the end except at a root; empty
/// when the folder no longer exists.
QString currentFolderOfProcess();

/// Start-up: looks for the folder of registered files, shows the splash window, then the main window, and opens
/// `file` in it as if it had been chosen in the File menu.
/// False when a failure was reported and there is no main window.
bool Main(Program& program, const std::optional<QString>& file = std::nullopt);

/// Start-up of a run for taking things back: its window alone, with what is kept of `file`, or with the choice of a
/// database. False as above.
bool Restore(Program& program, const std::optional<QString>& file = std::nullopt);

} // namespace quillon

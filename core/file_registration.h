#pragma once

#include "app/base/ports/data_window.h"
#include "app/base/ports/files.h"

#include <QString>

#include <optional>

namespace quillon
{

class Session;

/// An outside file that is to become a file datum.
struct FileEntry {
    QString path;                        // as it was typed
    QString identifier;                  // of the new datum
    std::optional<CategoryRow> category; // the one it is filed in
};

enum class FileRegistration {
    Registered,
    FileNotFound,     // no ordinary file has this path
    NoFolderForFiles, // the folder of registered files is missing; it is never made here
    Cancelled         // by `progress`; nothing has changed
};

/// Copies a file into the folder of registered files, where it replaces one of the same name, and adds its row, its
/// membership and the link that it is registered for, all or none. A category that is gone gets no membership.
/// `progress` is called first when the copying begins. No identifier and a name that is too long are refused before
/// that. When the identifier has been taken meanwhile, the file gets the next free one; `registeredAs` tells it.
/// A name that is no text is registered as a person can read it.
/// What other programs have left behind in the folder by an abrupt end is settled first.
/// Not trapped: error 5 without an identifier, a failing copy (53, 61, 70, 75, 76) or row (3022, 3163, 3260). Then a
/// file that was to be replaced stands as it was; only a copy whose name was new stays.
FileRegistration RegisterFile(Session& session, const FileEntry& entry, const Files::Progress& progress,
                              QString* registeredAs = nullptr);

} // namespace quillon

#pragma once

#include "app/base/ports/files.h"

#include <QString>

#include <optional>

namespace quillon
{

class Session;

/// An outside file that is to become a file datum.
struct FileEntry {
    QString path;
    QString identifier;              // of the new datum
    std::optional<QString> category; // the one it is filed in
};

enum class FileRegistration {
    Registered,
    FileNotFound,    // no ordinary file has this path
    NoFolderForFiles // the folder of registered files is missing; it is never made here
};

/// Copies a file into the folder of registered files, where it replaces one of the same name, and adds its row and its
/// membership, both or none. `progress` is called first when the copying begins.
/// Not trapped: a failing copy (53, 61, 70, 75, 76) or row (3022, 3163, 3260); in the latter case the copy stays.
FileRegistration RegisterFile(Session& session, const FileEntry& entry, const Files::Progress& progress);

} // namespace quillon

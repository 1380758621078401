#pragma once

#include <QString>

namespace quillon
{

class Session;
struct DatumPlace;

/// What became of opening a file.
enum class FileOpening {
    Opened,
    NoFolderForFiles, // told, as the next two
    FileNotFound,
    NoAssociation,
    NotStarted, // the application; nobody is told
    Failed      // and reported
};

/// Opens the file of a file datum with its associated application. Failures are reported as "ShowRefFile".
FileOpening ShowRefFile(Session& session, const QString& identifier);

/// Lets the user register an outside file in the registration window and links the new file datum to `identifier`.
/// False when the user did not register one, or there was no identifier for it. Not trapped: failures go to the caller.
bool RegisterFileAndLink(Session& session, const QString& identifier);

/// The same for the very datum that a window shows: error 3021 when it is gone after the registration.
bool RegisterFileAndLink(Session& session, const DatumPlace& datum);

} // namespace quillon

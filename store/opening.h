#pragma once

#include <QString>

namespace quillon
{

class Session;

/// What has become of an opening.
enum class Opening {
    Opened,
    Failed,  // and told
    Declined // a window of the present database was to stay open; everything is as it was
};

/// Makes the file at `path` the current database of the program, as a whole or not at all: record sets, older layouts
/// converted, menus enabled, status texts, category tree. Before it takes the place of another file, the windows for
/// data of that one ask their closing questions; afterwards the lists of its rows close. A failure is reported and
/// leaves the present database and its windows as they are, with an empty data list.
Opening openDatabase(Session& session, const QString& path);
/// The same; whether it was opened.
bool OpenDbFile(Session& session, const QString& path);

/// Creates a new database file with its seven empty tables, opens it and tells the user, unless that was declined.
/// Failures are reported as "OpenDbFile"; a file that was begun stays.
Opening CreateDbFile(Session& session, const QString& path);

} // namespace quillon

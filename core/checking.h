#pragma once

#include <QString>

#include <functional>

namespace quillon
{

class Session;

/// What may be wrong in a database or in the folder of registered files.
enum class Trouble {
    Damaged,            // the file itself
    OtherTable,         // one of the seven is missing or not as it is made, or there is something beside them
    OddIdentifier,      // of a datum
    TooWide,            // a text, for its field
    NoText,             // a value that only reads as a text
    DanglingLink,       // one of its ends is not there
    DanglingMembership, // its datum or its category is not there
    OrphanedCategory,   // the category above is not there
    MissingFile,        // of a file datum
    UnregisteredFile    // in the folder of registered files
};

/// One thing that is wrong.
struct Finding {
    Trouble trouble = Trouble::Damaged;
    QString place;      // the table, empty for files
    QString identifier; // of the row, or the name of the file; of a link or a membership both
    QString text;       // one Japanese sentence

    /// Whether it is certain what would be right.
    bool canBeMended() const
    {
        return trouble == Trouble::DanglingLink || trouble == Trouble::DanglingMembership;
    }
};

/// Goes through the whole open database and the folder of registered files and tells what is wrong. `tell` answers
/// whether to go on. A table that cannot be read is told and passed over. Not trapped: 91.
void checkDatabase(Session& session, const std::function<bool(const Finding&)>& tell);

/// What a mending has done.
struct Mended {
    qint64 links = 0;
    qint64 memberships = 0;
    QString copy; // the full name of the copy that was made before; empty when there was nothing to delete
};

/// Deletes the links and memberships that lead to nothing, as one write. Before that a copy of the database is made:
/// among the kept ones, or beside the database where none are kept. Without any, nothing is done. Not trapped: 3343 for a database that is damaged;
/// what stands in the way of the copy; then nothing has changed.
Mended mendDatabase(Session& session);

} // namespace quillon

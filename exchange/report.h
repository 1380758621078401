#pragma once

#include <QString>

#include <vector>

namespace quillon::exchange
{

/// Something that a person ought to know of what came in or went out.
struct Note {
    QString where; // the file, with the number of the line where that says more; may be empty
    QString text;  // one Japanese sentence

    bool operator==(const Note&) const = default;
};

/// What an import has done, or would do.
struct ImportReport {
    qint64 added = 0;      // data, of whichever kind
    qint64 skipped = 0;    // data that were there already, or that were not taken
    qint64 renamed = 0;    // of the data added those that have another identifier than where they come from
    qint64 linked = 0;     // links added
    qint64 filed = 0;      // memberships added
    qint64 categories = 0; // categories added
    qint64 lost = 0;       // places of a damaged source that could not be read; the notes tell them
    std::vector<Note> notes;
};

/// What an export has written.
struct ExportReport {
    qint64 written = 0; // data, of whichever kind
    qint64 files = 0;   // files that the export consists of
    std::vector<Note> notes;
};

/// What every import is told.
struct ImportOptions {
    bool dryRun = false; // only says what would happen
};

} // namespace quillon::exchange

#pragma once

#include "store/sqlite/gathered_writes.h"
#include "store/sqlite/handle.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>

struct sqlite3_backup;

namespace quillon::sqlite
{

class Statement;

/// A copy of a database that others are using, made in steps on connections of its own, between which nobody is kept
/// from writing. Whatever has been written meanwhile is in the copy: then it begins anew by itself.
class Backup
{
public:
    /// `target`: a new file; it is removed with this object unless `keep` has been called.
    /// Errors: 3024 no such source, 3051 and others when one of them cannot be opened.
    Backup(const QString& source, const QString& target);
    ~Backup();
    Backup(const Backup&) = delete;
    Backup& operator=(const Backup&) = delete;

    enum class Progress {
        GoesOn,
        IsLocked, ///< by someone who is writing just now; to be tried again
        Done
    };
    /// Copies some pages, `mostPages` at most: so long others may have to wait for the end of their writes. Errors as
    /// of any reading and writing.
    Progress step(int pages);
    /// So much any disk reads in a moment.
    static constexpr int StepBytes = 512 * 1024;
    int mostPages() const { return m_mostPages; }
    /// How many pages are left of the present try.
    int pagesLeft() const;

    /// Asks the finished copy, which the system has, but not yet the disk. `goesOn`: ends long questions, which then fail.
    std::unique_ptr<Statement> ask(const QString& sql);
    void setGoesOn(std::function<bool()> goesOn);

    /// Closes the copy and lets it stand.
    void keep();

private:
    void writeWhatWasCopied();
    void finish();

    QString m_target;
    Handle m_from;
    Handle m_to;
    sqlite3_backup* m_backup = nullptr;
    std::optional<GatheredWrites> m_gathered;
    int m_mostPages = 1; // in a step
    std::function<bool()> m_goesOn;
    bool m_isKept = false;
};

} // namespace quillon::sqlite

#pragma once

#include <QString>

#include <memory>
#include <optional>

namespace quillon
{

class Database;

namespace kept
{
struct PutBackNote;
}

/// Who keeps what the program overwrites and deletes. Nothing here ever fails: what cannot be kept is told in the log,
/// and the program goes on.
class Keeper
{
public:
    virtual ~Keeper() = default;

    /// A new database stands at `path`: what is kept for a former one of that name is not its own.
    virtual void databaseCreated(const QString& path) = 0;
    /// A database has become the current one, in place of the one before.
    virtual void databaseOpened(Database& database) = 0;

    /// The current database was left in the middle of a write: whether it is whole is looked at in the background.
    virtual void databaseWasBrokenOff() = 0;
    /// A database turned out to be damaged when it was to be opened.
    virtual void databaseIsDamaged(const QString& path) = 0;

    /// The content of a file, kept before another takes its place.
    class ReplacedFile
    {
    public:
        virtual ~ReplacedFile() = default;
        /// Whether its content could be kept. Whoever can do without replacing it does.
        virtual bool isKept() const = 0;
        /// The other has taken its place.
        virtual void isReplaced() = 0;
    };
    /// Keeps a registered file that is about to be replaced. Null when there is nothing to keep.
    virtual std::unique_ptr<ReplacedFile> fileGoes(const QString& path) = 0;

    /// Something that was deleted is there again.
    virtual void isBack(const kept::PutBackNote& note) = 0;

    /// Where everything is kept, for all databases; nothing when nothing is.
    virtual std::optional<QString> keptFolder() const = 0;
};

} // namespace quillon

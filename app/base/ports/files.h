#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace quillon
{

/// A finished copy of a file that does not bear its name yet. It is gone with this object unless it has been placed.
class StagedCopy
{
public:
    virtual ~StagedCopy() = default;

    /// Gives the copy its name. What had the name until then gets it back, as it was, together with the end of this
    /// object, unless `keep` has been called. Errors: 61, 70, 75, 76; then everything is as it was.
    /// `mark`: tells after an abrupt end for whom the file was replaced (see `Files::settleReplacements`); at most 120
    /// letters, digits and signs of ASCII that a name may hold.
    virtual void place(const QString& mark) = 0;
    /// Lets go of what had the name before.
    virtual void keep() = 0;
    /// Leaves both as they are, as an abrupt end would: `Files::settleReplacements` decides what becomes of them.
    virtual void leave() = 0;
};

/// The questions the program asks of the file system.
class Files
{
public:
    virtual ~Files() = default;

    /// Whether a directory entry of any kind, a folder included, has this name.
    virtual bool entryExists(const QString& path) const = 0;
    /// Whether an ordinary visible file has this name; a folder, device or pipe does not count.
    virtual bool fileExists(const QString& path) const = 0;
    /// Whether a folder has this name; a link to a folder counts.
    virtual bool folderExists(const QString& path) const = 0;
    /// The full name of the ordinary file `name` in `folder`; nothing when there is none, when `name` is more than a
    /// bare file name, or when a link leads out of the folder.
    virtual std::optional<QString> storedFile(const QString& folder, const QString& name) const = 0;

    /// Called now and then during long work with files: bytes done, bytes in all. False ends the work.
    using Progress = std::function<bool(qint64 done, qint64 total)>;
    /// Copies the file `source`, with its date, so that it can be placed as `name` in `folder`. Null, and nothing is
    /// left, when `progress` has ended the work. Errors: 53, 61, 70, 75, 76.
    virtual std::unique_ptr<StagedCopy> stageCopy(const QString& source, const QString& folder,
                                                  const QString& name, const Progress& progress) const = 0;
    /// What is known of a copy that was placed by a program that ended before it could keep or take back the copy.
    enum class Replacement {
        Done,      // it was to stay
        BrokenOff, // what had the name is to get it back
        NotKnown   // for others to judge
    };
    /// Judges a replacement by its mark and the name of the file.
    using Judge = std::function<Replacement(const QString& mark, const QString& name)>;
    /// Tidies what programs that have ended abruptly left in a folder of copies: half copies, and what had the name of
    /// a placed one. Never fails.
    virtual void settleReplacements(const QString& folder, const Judge& judge) const = 0;
    /// The bytes of an ordinary file. Errors: 53, 70, 75, and 6 when there are more than `atMost` bytes.
    virtual QByteArray readFile(const QString& path, qint64 atMost) const = 0;
};

} // namespace quillon

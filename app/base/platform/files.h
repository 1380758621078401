#pragma once

#include "app/base/error.h"

#include <QString>
#include <QStringList>

namespace quillon::platform
{

/// Whether an ordinary visible file stands at `path`: no folder, device or pipe (links are followed).
bool isOrdinaryFile(const QString& path);

/// Whether a directory entry of any kind stands at `path`; a link that leads nowhere is one all the same.
bool isEntry(const QString& path);

/// Whether the entry `name` of `folder` is a link that leads out of it. `name`: a bare one. A file that the desktop
/// follows, such as a shortcut, is no link: it stands where it is.
bool leadsOut(const QString& folder, const QString& name);

/// The names of the entries of `folder` but for folders, in no order, hidden ones too; a link to a folder counts as one.
QStringList namesOfFiles(const QString& folder);

/// What is known of a file without reading it.
struct SizeAndTime {
    qint64 size = 0;
    qint64 modified = 0; // milliseconds since 1970
};
/// Zeros where there is no file (links are followed).
SizeAndTime sizeAndTime(const QString& path);

/// Whether a file can be read without its being fetched from a cloud or an archive first. Where nothing is known of that,
/// it is.
bool isAtHand(const QString& path);

/// Whether a name can only be that of an entry of its folder: it holds nothing that this system takes for a separator
/// or a drive, so that a database that has travelled leads nowhere else.
bool isBareName(const QString& name);

/// What tells the names within one folder apart: where two names have the same, they are those of one file. Where large and
/// small letters make a difference it is the name itself.
QString nameKey(const QString& name);

/// Whether this process may create files in `folder`.
bool mayWriteIn(const QString& folder);

/// Whether `name` is short enough for a file in `folder`.
bool fitsAsName(const QString& folder, const QString& name);

/// Whether this process may read the file at `path`.
bool mayRead(const QString& path);

/// Whether this process may read and write the file at `path`.
bool mayReadAndWrite(const QString& path);

/// Makes an empty file; false when anything of this name stands there already. Errors: 61, 70, 75, 76.
bool makeNewFile(const QString& path);

/// Lets what a file holds outlive a power failure. Errors: 53, 61, 70, 75.
void syncFile(const QString& path);

/// Lets the names in `folder` outlive a power failure. Errors: 61, 75, 76.
void syncFolder(const QString& folder);

/// Why nothing is found at `path`. `whenMissing`: the number when the reason is that nothing is there.
Error whyNotFound(const QString& path, qint32 whenMissing);

/// Whether something that is no ordinary file stands at `path` (links are followed).
bool isInTheWay(const QString& path);

} // namespace quillon::platform

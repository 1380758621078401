#pragma once

#include "store/kept/place.h"

namespace quillon::kept
{

/// A database that bears another name, or lies in another folder, goes on with what was kept of it: when nothing is kept
/// for the present name, but the file is the one for which something is kept under a name where it is not any more. It
/// is known again as a file, or, behind the border of a disk, by being as it was for its newest copy. What is not
/// certain is left alone. In any case it is noted by what the database is known from now on. Nothing here fails.
void findAgain(const QString& keptFolder, const Place& place);

/// A new database has come to a name: what is kept for the former one of that name goes on under another, "NAME（以前のもの）"
/// in the same folder, which no file bears. There it is listed like that of any database that is gone, and the former
/// one takes it along when it is found again somewhere. Nothing here fails.
void setAside(const QString& keptFolder, const Place& place);

} // namespace quillon::kept

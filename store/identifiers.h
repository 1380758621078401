#pragma once

#include <QString>

#include <vector>

namespace quillon
{

class RecordSet;
class Session;

/// Characters of every identifier; a text of another length is none.
inline constexpr qsizetype IdentifierLength = 12;

/// A new identifier of a kind ("M", "R", "F"): kind, date and the first free number of the day.
/// Empty when that failed (the failure has been reported). Beyond 999 items per kind and day it grows to 13
/// characters, which no table holds.
QString CreateObject_ID(Session& session, const QString& kind);

/// The identifier itself when no row of `rows` has it, else the first free one of its kind and day. To be asked in the
/// write that uses it, so that no other program can come first. Not trapped: error 6 when there is none.
QString freeIdentifier(RecordSet& rows, const QString& identifier);

/// The six date characters of an identifier. What the short date does not have is left out.
QString GetYYMMDD(Session& session);

/// Whether an identifier is free: no row of its kind's table carries it. False also when the kind is unknown or the
/// look-up failed, which is then reported.
bool ExistCheck(Session& session, const QString& identifier);

/// The numbers that identifiers of this beginning ("M-991231-") have in a table, as an array of flags.
std::vector<bool> takenNumbers(const RecordSet& recordSet, const QString& beginning);

/// Error 5 for an empty identifier: a datum without one could neither be shown nor deleted.
void requireIdentifier(const QString& identifier);

} // namespace quillon

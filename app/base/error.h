#pragma once

#include <QString>

namespace quillon
{

/// A failure that the person at the screen is told about: a number and a Japanese sentence.
/// Thrown where the failure is discovered and caught once per operation (see `guarded`).
struct Error {
    /// An error of this number with its standard description.
    explicit Error(qint32 errorNumber);
    /// An error whose description says more than the standard one of its number.
    Error(qint32 errorNumber, QString errorDescription);

    qint32 number;
    QString description;
};

/// The error numbers in use. The first group is general, the 3000s are the store's, the 35600s the trees' and lists'.
namespace errors
{
inline constexpr qint32 InvalidArgument = 5;
inline constexpr qint32 Overflow = 6;
inline constexpr qint32 OutOfMemory = 7;
inline constexpr qint32 TypeMismatch = 13;
inline constexpr qint32 FileNotFound = 53;
inline constexpr qint32 DiskFull = 61;
inline constexpr qint32 PermissionDenied = 70;
inline constexpr qint32 PathFileAccess = 75;
inline constexpr qint32 PathNotFound = 76;
inline constexpr qint32 ObjectNotSet = 91;
inline constexpr qint32 TableExists = 3010;
inline constexpr qint32 NoCurrentRecord = 3021;
inline constexpr qint32 DuplicateKey = 3022;
inline constexpr qint32 DatabaseNotFound = 3024;
inline constexpr qint32 CannotOpen = 3051;
inline constexpr qint32 UnknownField = 3061;
inline constexpr qint32 CriteriaSyntax = 3075;
inline constexpr qint32 TableNotFound = 3078;
inline constexpr qint32 FieldTooSmall = 3163;
inline constexpr qint32 RecordDeleted = 3167;
inline constexpr qint32 ChangedMeanwhile = 3197;
inline constexpr qint32 DatabaseExists = 3204;
inline constexpr qint32 Locked = 3260;
inline constexpr qint32 NotADatabase = 3343;
inline constexpr qint32 IndexOutOfBounds = 35600;
inline constexpr qint32 ElementNotFound = 35601;
inline constexpr qint32 KeyNotUnique = 35602;
} // namespace errors

/// The sentence that belongs to an error number; an unknown number gets a general one.
QString standardDescription(qint32 errorNumber);

} // namespace quillon

#include "store/sqlite/errors.h"

#include "app/base/platform/system_error.h"
#include "store/sqlite/damage_watch.h"
#include "store/sqlite/troubles.h"

#include <QByteArrayView>
#include <QString>

#include <sqlite3.h>

using namespace Qt::Literals::StringLiterals;

namespace quillon::sqlite
{

namespace
{

/// SQLite has one code for everything that is wrong with a statement; only the message tells what.
qint32 numberOfGenericError(QByteArrayView message)
{
    const auto says = [message](const char* words) { return message.indexOf(words) >= 0; };
    if (says("no such table"))
        return errors::TableNotFound;
    if (says("no such column") || says("has no column named"))
        return errors::UnknownField;
    if (says("already exists") || says("already another table"))
        return errors::TableExists;
    if (says("syntax error") || says("incomplete input") || says("unrecognized token"))
        return errors::CriteriaSyntax;
    if (says("unsupported file format"))
        return errors::NotADatabase;
    // Everything else asks for something that cannot be done: an unknown function, a transaction inside another.
    return errors::InvalidArgument;
}

qint32 numberOf(sqlite3* connection, int code)
{
    if (code == SQLITE_CONSTRAINT_UNIQUE || code == SQLITE_CONSTRAINT_PRIMARYKEY ||
        code == SQLITE_CONSTRAINT_ROWID)
        return errors::DuplicateKey;
    switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
        return errors::Locked;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_FORMAT:
        return errors::NotADatabase;
    case SQLITE_READONLY:
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
    case SQLITE_AUTH:
        return errors::CannotOpen;
    case SQLITE_FULL:
        return errors::DiskFull;
    case SQLITE_NOMEM:
        return errors::OutOfMemory;
    case SQLITE_IOERR:
        return code == SQLITE_IOERR_NOMEM ? errors::OutOfMemory : errors::PathFileAccess;
    case SQLITE_TOOBIG:
        return errors::FieldTooSmall;
    case SQLITE_MISMATCH:
        return errors::TypeMismatch;
    case SQLITE_CONSTRAINT:
        // A foreign table with rules of its own: NOT NULL, CHECK and their like.
        return errors::InvalidArgument;
    case SQLITE_ERROR:
        return numberOfGenericError(connection != nullptr ? sqlite3_errmsg(connection) : "");
    case SQLITE_MISUSE:
    case SQLITE_RANGE:
        return errors::InvalidArgument;
    default:
        // Too large a file for the system, and whatever a later version of the engine cannot do with one.
        return errors::PathFileAccess;
    }
}

} // namespace

QString tooLongName()
{
    return u"データベースのファイル名またはフォルダの名前が長すぎて扱えません。"
           u"短い名前にするか、別のフォルダに移してからやり直してください。"_s;
}

Error errorOf(sqlite3* connection, int code)
{
    if ((code & 0xFF) == SQLITE_CORRUPT || (code & 0xFF) == SQLITE_NOTADB)
        damageMet(connection);
    // The file asks for what only the program that made it has.
    if ((code & 0xFF) == SQLITE_ERROR && connection != nullptr &&
        QByteArrayView(sqlite3_errmsg(connection)).startsWith("no such collation sequence"))
        return {errors::NotADatabase, u"データベースの表が Quillon にない並べ方を使っているため扱えません。"
                                      u"Quillon のデータベースか確認してください。"_s};
    // A disk without room, too many open files: SQLite has one code for all of these.
    if (const auto systemError = systemErrorBehind(code)) {
        if (const auto lack = platform::errorOfLack(*systemError))
            return *lack;
    }
    return Error(numberOf(connection, code));
}

void check(sqlite3* connection, int code)
{
    if (code != SQLITE_OK)
        throw errorOf(connection, code);
}

} // namespace quillon::sqlite

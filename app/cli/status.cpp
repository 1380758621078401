#include "app/cli/status.h"

namespace quillon::cli
{

bool isTroubleOfFile(qint32 errorNumber)
{
    return errorNumber == errors::PermissionDenied || errorNumber == errors::PathFileAccess ||
           errorNumber == errors::PathNotFound;
}

Status statusOf(qint32 errorNumber)
{
    switch (errorNumber) {
    case 0:
        return Status::Done;
    case errors::NoCurrentRecord:
    case errors::RecordDeleted:
    case errors::FileNotFound:
        return Status::NothingFound;
    case errors::PermissionDenied:
    case errors::PathFileAccess:
    case errors::PathNotFound:
    case errors::OutOfMemory:
    case errors::DiskFull:
    case errors::ObjectNotSet:
    case errors::DatabaseNotFound:
    case errors::CannotOpen:
    case errors::TableNotFound:
    case errors::UnknownField:
    case errors::Locked:
    case errors::NotADatabase:
        return Status::NoDatabase;
    default:
        return Status::Refused;
    }
}

} // namespace quillon::cli

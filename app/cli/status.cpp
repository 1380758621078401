#include "app/cli/status.h"

namespace quillon::cli
{

Status statusOf(qint32 errorNumber)
{
    switch (errorNumber) {
    case 0:
        return Status::Done;
    case errors::NoCurrentRecord:
    case errors::RecordDeleted:
    case errors::FileNotFound:
        return Status::NothingFound;
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

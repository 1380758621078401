#pragma once

#include "app/base/error.h"
#include "store/database.h"
#include "store/sqlite/transaction.h"

#include <utility>

namespace quillon
{

/// Runs an operation as one durable write. When it fails, what it had written before stays written, as it would have
/// with one write after the other, unless the failure has undone that already. Inside another such operation it is a
/// part of that one. The file is closed to other writers meanwhile, so nothing in it may wait for the person.
template <class Operation> void inWriteTransaction(Database& database, Operation&& operation)
{
    sqlite::Transaction transaction(database.connection());
    try {
        std::forward<Operation>(operation)();
    } catch (const Error& failure) {
        try {
            transaction.commit();
        } catch (const Error&) {
            throw failure; // the first failure is the one to be told
        }
        throw;
    }
    transaction.commit();
}

} // namespace quillon

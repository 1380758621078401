#pragma once

#include "exchange/coming_files.h"
#include "exchange/report.h"
#include "exchange/stored_row.h"

#include <memory>

namespace quillon
{
class Session;
}

namespace quillon::exchange
{

class Progress;

/// Brings the rows of another database of the seven tables into the open one.
///
/// A datum that the open database holds already, to the last character and under the same identifier, is skipped; one
/// whose identifier another datum has there gets a new one of the same day, and so do categories, with everything below
/// them. Links and memberships follow. File data do not lead to files of others. What only leads to something that did not come along is not let lead to a
/// stranger that happens to have its identifier.
/// Into an empty database everything comes exactly as it is and in its order, texts wider than their fields included.
class Merging
{
public:
    /// All of them outlive this.
    Merging(Session& session, RowSource& rows, ImportReport& report, ComingFiles files);
    ~Merging();
    Merging(const Merging&) = delete;
    Merging& operator=(const Merging&) = delete;

    /// Goes through all rows for the first time.
    void examine();
    /// Writes them. To be called after that, within a transaction.
    void write();

private:
    class Work;
    std::unique_ptr<Work> m_work;
};

} // namespace quillon::exchange

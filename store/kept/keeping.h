#pragma once

#include "store/keeper.h"
#include "store/kept/copy_worker.h"
#include "store/kept/place.h"

#include <memory>
#include <optional>
#include <vector>

namespace quillon
{
struct Reporting;
}

namespace quillon::kept
{

class HistoryFile;

/// What is kept, and where.
struct KeepingOrder {
    QString keptFolder;                   // for all databases
    QString fileFolder;                   // of the registered files
    std::optional<CopyTimes> copies = {}; // nothing: no copies are made
};

/// Keeps the history and copies of the current database.
class Keeping : public Keeper
{
public:
    Keeping(Reporting& reporting, KeepingOrder order);
    ~Keeping() override;
    Keeping(const Keeping&) = delete;
    Keeping& operator=(const Keeping&) = delete;

    /// The current database is closed. Waits for the last copies, for a while at most.
    void finish();

    void databaseOpened(Database& database) override;
    std::unique_ptr<ReplacedFile> fileGoes(const QString& path) override;
    QString keptFolder() const override { return m_order.keptFolder; }

private:
    void tellFailures();

    Reporting& m_reporting;
    KeepingOrder m_order;
    std::optional<Place> m_place;
    std::shared_ptr<HistoryFile> m_history;
    std::unique_ptr<CopyWorker> m_worker;               // of the current database
    std::vector<std::unique_ptr<CopyWorker>> m_closing; // of those before, at their last copies
};

} // namespace quillon::kept

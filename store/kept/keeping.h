#pragma once

#include "store/keeper.h"
#include "store/kept/copy_worker.h"
#include "store/kept/damage.h"
#include "store/kept/place.h"

#include <QObject>
#include <QSet>

#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace quillon
{
struct Reporting;
}

namespace quillon::sqlite
{
class DamageWatch;
}

namespace quillon::kept
{

class HistoryFile;

/// What is kept, and where.
struct KeepingOrder {
    std::optional<QString>
        keptFolder;     // for all databases; nothing: nothing is kept, and damage is told all the same
    QString fileFolder; // of the registered files
    std::optional<CopyTimes> copies = {}; // nothing: no copies are made
    DamageListener onDamage = {};         // is told by the event loop, once for each database
};

/// Keeps the history and copies of the current database, and has it looked at when it may be damaged.
class Keeping : public Keeper
{
public:
    Keeping(Reporting& reporting, KeepingOrder order);
    ~Keeping() override;
    Keeping(const Keeping&) = delete;
    Keeping& operator=(const Keeping&) = delete;

    /// The current database is closed. Waits for the last copies, for a while at most.
    void finish();

    void databaseCreated(const QString& path) override;
    void databaseOpened(Database& database) override;
    void databaseWasBrokenOff() override;
    void databaseIsDamaged(const QString& path) override;
    std::unique_ptr<ReplacedFile> fileGoes(const QString& path) override;
    void isBack(const PutBackNote& note) override;
    std::optional<QString> keptFolder() const override { return m_order.keptFolder; }

private:
    void tellFailures();
    void tellFailureOf(CopyWorker& worker);
    /// In any thread.
    void passOnDamage(const Damage& damage);

    Reporting& m_reporting;
    KeepingOrder m_order;
    std::optional<Place> m_place;
    std::shared_ptr<HistoryFile> m_history;
    std::unique_ptr<CopyWorker> m_worker;               // of the current database
    std::vector<std::unique_ptr<CopyWorker>> m_closing; // of those before, at their last copies
    std::thread m_search;                               // for a good copy of a database that cannot be opened
    QSet<QString> m_toldDamaged;
    QSet<QString> m_toldFailures;
    std::unique_ptr<QObject> m_here = std::make_unique<QObject>(); // of the thread in which damage is told
    std::unique_ptr<sqlite::DamageWatch> m_damageWatch; // of the current database; goes before its worker
};

} // namespace quillon::kept

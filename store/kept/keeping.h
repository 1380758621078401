#pragma once

#include "store/keeper.h"
#include "store/kept/place.h"

#include <memory>
#include <optional>

namespace quillon
{
struct Reporting;
}

namespace quillon::kept
{

class HistoryFile;

/// Keeps the history of the current database.
class Keeping : public Keeper
{
public:
    /// `keptFolder`: where everything is kept, for all databases.
    Keeping(Reporting& reporting, QString keptFolder);
    ~Keeping() override;

    void databaseOpened(Database& database) override;
    std::unique_ptr<ReplacedFile> fileGoes(const QString& path) override;
    QString keptFolder() const override { return m_keptFolder; }

private:
    Reporting& m_reporting;
    QString m_keptFolder;
    std::optional<Place> m_place;
    std::shared_ptr<HistoryFile> m_history;
};

} // namespace quillon::kept

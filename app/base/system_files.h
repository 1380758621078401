#pragma once

#include "app/base/ports/files.h"

namespace quillon
{

/// The computer's file system.
class SystemFiles : public Files
{
public:
    bool entryExists(const QString& path) const override;
    bool fileExists(const QString& path) const override;
    bool folderExists(const QString& path) const override;
    std::optional<QString> storedFile(const QString& folder, const QString& name) const override;
    std::unique_ptr<StagedCopy> stageCopy(const QString& source, const QString& folder, const QString& name,
                                          const Progress& progress) const override;
    void settleReplacements(const QString& folder, const Judge& judge) const override;
    QByteArray readFile(const QString& path, qint64 atMost) const override;
};

} // namespace quillon

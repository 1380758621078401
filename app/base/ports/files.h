#pragma once

#include <QString>

namespace quillon
{

/// The questions the program asks of the file system.
class Files
{
public:
    virtual ~Files() = default;

    /// Whether a directory entry of any kind, a folder included, has this name.
    virtual bool entryExists(const QString& path) const = 0;
    /// Whether an ordinary visible file has this name; a folder, device or pipe does not count.
    virtual bool fileExists(const QString& path) const = 0;
};

} // namespace quillon

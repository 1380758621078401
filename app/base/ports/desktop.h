#pragma once

#include <QString>

namespace quillon
{

enum class OpenOutcome { Opened, NoAssociation, OtherFailure };

/// The desktop the program runs on.
class Desktop
{
public:
    virtual ~Desktop() = default;
    /// Opens a file with the application associated with it. Never waits for it and never passes through a shell.
    virtual OpenOutcome open(const QString& path) = 0;
    /// Offers a database among the documents that the desktop lists as used last. Neither waits nor fails.
    virtual void noteRecent(const QString& path) = 0;
};

} // namespace quillon

#pragma once

#include <QSet>
#include <QString>

namespace quillon::exchange
{

/// Gives out names for files, each once, that every system can hold and that [[links]] can name.
class FileNames
{
public:
    /// `name`: what it is to be called, near enough. `ending`: with its dot; it is no part of the answer.
    QString next(const QString& name, const QString& ending);

private:
    QSet<QString> m_taken; // as a system sees them that takes large and small letters for the same
};

} // namespace quillon::exchange

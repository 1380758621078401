#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

namespace quillon
{
class Session;
}

namespace quillon::exchange
{

/// What lies in the folder of registered files at this moment.
class RegisteredFiles
{
public:
    explicit RegisteredFiles(Session& session);

    /// The names of its entries but for folders and what the program leaves there for the time being, in their order.
    const QStringList& names() const { return m_names; }
    /// Whether a file datum names a file.
    bool isNamed(const QString& name) const { return m_named.contains(name); }

private:
    QStringList m_names;
    QSet<QString> m_named;
};

} // namespace quillon::exchange

#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

#include <vector>

namespace quillon
{
class Session;
}

namespace quillon::exchange
{

/// What lies in the folder of registered files at this moment, and what file data name of it.
class RegisteredFiles
{
public:
    /// Throws `Refused` when there are file data and the folder is not there: their files would all be lost, and most
    /// likely it is somewhere else.
    explicit RegisteredFiles(Session& session);

    /// The names of its entries but for folders and what the program leaves there for the time being, in their order.
    const QStringList& names() const { return m_names; }
    /// Whether a file datum names a file.
    bool isNamed(const QString& name) const;

    struct Lacking {
        QString identifier;
        QString name;
    };
    /// The file data of which there is no file.
    const std::vector<Lacking>& lacking() const { return m_lacking; }

private:
    QStringList m_names;
    QSet<QString> m_named; // by their keys
    std::vector<Lacking> m_lacking;
};

} // namespace quillon::exchange

#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace quillon::kept
{

/// Where everything is kept for all databases: the folder that QUILLON_COPIES names, else one in the user's data;
/// nothing when QUILLON_COPIES is "off".
std::optional<QString> keptFolder();

/// Whether something could be written into a folder of this name, which need not be there yet.
bool mayKeepIn(const QString& keptFolder);

/// Where what belongs to one database is kept: apart from it, under a name that a person can read.
class Place
{
public:
    /// `keptFolder`: that of all databases. `database`: the full name of the file.
    Place(const QString& keptFolder, const QString& database);

    /// The full name of the database, without links.
    const QString& database() const { return m_database; }
    const QString& folder() const { return m_folder; }
    QString history() const;
    QString copies() const;
    QString files() const;

    /// Makes the folder of this place and `inside`, one of the above, for this user alone.
    /// False when it cannot be made.
    bool make(const QString& inside) const;

    /// By what the database is known again when it is found elsewhere, as it was noted last; empty: by nothing.
    QByteArray notedIdentity() const;
    /// Notes in the folder of this place, if there is one, where the database lies and by what it is known again.
    void note() const;

private:
    QString m_keptFolder;
    QString m_database;
    QString m_folder;
};

/// The full names of the databases for which something is kept in a folder.
QStringList databasesIn(const QString& keptFolder);

} // namespace quillon::kept

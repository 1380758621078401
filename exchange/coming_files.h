#pragma once

#include "exchange/stored_row.h"

#include <QHash>
#include <QSet>
#include <QString>

#include <functional>

namespace quillon
{
class Session;
}

namespace quillon::exchange
{

/// What is known of the files to file data that come in.
struct ComingFiles {
    /// What lies in the folder of registered files already under a name that comes in.
    enum class Present {
        Strange,     ///< never theirs
        MayBeTheirs, ///< unless a datum of the open database names it
        Theirs
    };
    Present present = Present::Strange;
    QSet<QString> names = {}; ///< by their keys; those that will lie there because they come along
};

/// Keeps file data that come in from leading to a file that somebody else has put there under the same name.
class OwnFiles
{
public:
    /// To be made before any row is written. `tell`: hears of every name that is changed or taken over.
    using Tell = std::function<void(const QString& where, const QString& text)>;
    OwnFiles(Session& session, ComingFiles coming, Tell tell);

    /// Changes those of the names in a row of file data that would lead to a stranger's file.
    void keepApart(StoredRow& row, const QString& where);
    /// How many of these rows lead to no file at all.
    qint64 lacking() const { return m_lacking; }

private:
    void readRegistered();
    bool isTheirs(const QString& name) const;
    QString freeName(const QString& name);

    Session& m_session;
    ComingFiles m_coming;
    Tell m_tell;
    QString m_folder;
    QSet<QString> m_registered;        // by their keys
    QHash<QString, QString> m_renamed; // by their keys
    qint64 m_lacking = 0;
};

/// A name with a number before its ending, as short as a datum's name may be.
QString numberedName(const QString& name, int number);

} // namespace quillon::exchange

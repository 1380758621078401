#include "store/kept/place.h"

#include "app/base/error.h"
#include "app/base/platform/file_identity.h"
#include "app/base/platform/files.h"
#include "app/base/platform/user_folders.h"
#include "store/kept/whole_file.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::kept
{

namespace
{

constexpr QFileDevice::Permissions ForTheUserAlone =
    QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;

/// The file as its folder names it; also for one that is not there at the moment.
QString withoutLinks(const QString& path)
{
    const QFileInfo info(path);
    QString canonical = platform::canonicalPath(path);
    if (!canonical.isEmpty())
        return canonical;
    const QString folder = platform::canonicalPath(info.absolutePath());
    return folder.isEmpty() ? info.absoluteFilePath() : folder + u'/' + info.fileName();
}

/// What every system accepts as a part of a name, and short enough for what follows.
QString readableName(const QString& database)
{
    constexpr qsizetype Longest = 60; // characters of up to three bytes, of the 255 that a name may have
    QString name = QFileInfo(database).fileName().left(Longest);
    const auto isUnfit = [](QChar character) {
        return character < u' ' || QStringView(u"<>:\"/\\|?*").contains(character);
    };
    std::replace_if(name.begin(), name.end(), isUnfit, u'_');
    return name;
}

/// Its name outlives a power failure: without it nothing would be found that lies in it.
bool makeFolder(const QString& path)
{
    if (QDir(path).exists())
        return true;
    if (!QDir().mkdir(path, ForTheUserAlone))
        return QDir(path).exists();
    try {
        platform::syncFolder(QFileInfo(path).path());
    } catch (const Error&) {
        return false;
    }
    return true;
}

QString notePath(const QString& folder)
{
    return folder + u"/database.json"_s;
}

/// What is noted in a folder of the database to which it belongs.
struct Noted {
    QString path; // empty when it cannot be read
    QByteArray identity;
};

Noted notedIn(const QString& folder)
{
    QFile about(notePath(folder));
    if (!about.open(QIODevice::ReadOnly))
        return {};
    const QJsonObject noted = QJsonDocument::fromJson(about.readAll()).object();
    return {.path = noted.value(u"path"_s).toString(),
            .identity = noted.value(u"identity"_s).toString().toLatin1()};
}

} // namespace

std::optional<QString> keptFolder()
{
    const QString named = qEnvironmentVariable("QUILLON_COPIES");
    if (named == u"off")
        return std::nullopt;
    return named.isEmpty() ? platform::userDataFolder() : QDir::current().absoluteFilePath(named);
}

bool mayKeepIn(const QString& keptFolder)
{
    QString nearest = QDir(keptFolder).absolutePath();
    while (!QFileInfo::exists(nearest)) {
        const QString above = QFileInfo(nearest).path();
        if (above == nearest)
            return false;
        nearest = above;
    }
    return QFileInfo(nearest).isDir() && platform::mayWriteIn(nearest);
}

Place::Place(const QString& keptFolder, const QString& database)
    : m_keptFolder(keptFolder), m_database(withoutLinks(database))
{
    const QByteArray hash =
        QCryptographicHash::hash(platform::pathKey(m_database).toUtf8(), QCryptographicHash::Sha256).toHex();
    constexpr qsizetype Digits = 8;
    m_folder = keptFolder + u'/' + readableName(m_database) + u'-' + QString::fromLatin1(hash.first(Digits));
}

QString Place::history() const
{
    return m_folder + u"/history"_s;
}

QString Place::copies() const
{
    return m_folder + u"/copies"_s;
}

QString Place::files() const
{
    return m_folder + u"/files"_s;
}

bool Place::make(const QString& inside) const
{
    if (!QDir(inside).exists() && (!QDir().mkpath(QFileInfo(m_keptFolder).path()) ||
                                   !makeFolder(m_keptFolder) || !makeFolder(m_folder) || !makeFolder(inside)))
        return false;
    // Where it could not be written, it is the next time.
    if (notedIn(m_folder).path != m_database)
        note();
    return true;
}

QByteArray Place::notedIdentity() const
{
    return notedIn(m_folder).identity;
}

void Place::note() const
{
    if (!QDir(m_folder).exists())
        return;
    const Noted noted = notedIn(m_folder);
    // Of a database that is not there at the moment nothing is forgotten.
    const QByteArray identity = platform::fileIdentity(m_database).value_or(noted.identity);
    if (noted.path == m_database && noted.identity == identity)
        return;
    writeWhole(notePath(m_folder), QJsonDocument(QJsonObject{{u"path"_s, m_database},
                                                             {u"identity"_s, QString::fromLatin1(identity)}})
                                       .toJson());
}

QStringList databasesIn(const QString& keptFolder)
{
    QStringList databases;
    const QFileInfoList folders =
        QDir(keptFolder).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo& folder : folders) {
        const QString path = notedIn(folder.filePath()).path;
        // Elsewhere nothing of it would be found again.
        if (!path.isEmpty() && platform::pathKey(Place(keptFolder, path).folder()) ==
                                   platform::pathKey(keptFolder + u'/' + folder.fileName()))
            databases << path;
    }
    return databases;
}

} // namespace quillon::kept

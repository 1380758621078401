#include "store/kept/file_contents.h"

#include "app/base/error.h"
#include "app/base/platform/cloning.h"
#include "app/base/platform/files.h"
#include "store/kept/whole_file.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::Literals::StringLiterals;

namespace quillon::kept
{

namespace
{

/// A file for the time being; gone with this unless it has been given its name.
class NewFile
{
public:
    explicit NewFile(QString path) : m_path(std::move(path)) {}
    ~NewFile()
    {
        if (!m_path.isEmpty())
            QFile::remove(m_path);
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    const QString& path() const { return m_path; }
    /// What is under the name afterwards outlives a power failure.
    bool giveName(const QString& name)
    {
        try {
            platform::syncFile(m_path);
            if (!QFile::rename(m_path, name) && !QFile::exists(name))
                return false;
            if (!QFile::exists(m_path))
                m_path.clear();
            platform::syncFolder(QFileInfo(name).path());
        } catch (const Error&) {
            return false;
        }
        return true;
    }

private:
    QString m_path;
};

bool copyContent(const QString& source, const QString& target)
{
    if (platform::cloneFile(source, target))
        return true;
    QFile from(source);
    QFile to(target);
    if (!from.open(QIODevice::ReadOnly) ||
        !to.open(QIODevice::WriteOnly | QIODevice::NewOnly, QFileDevice::ReadOwner | QFileDevice::WriteOwner))
        return false;
    constexpr qint64 Part = qint64{1} << 20;
    while (!from.atEnd()) {
        const QByteArray bytes = from.read(Part);
        if (bytes.isEmpty() || to.write(bytes) != bytes.size())
            return false;
    }
    return from.error() == QFileDevice::NoError && to.flush();
}

qint64 sizeOfAll(const QString& folder)
{
    qint64 size = 0;
    for (const QFileInfo& info : QDir(folder).entryInfoList(QDir::Files | QDir::Hidden))
        size += info.size();
    return size;
}

} // namespace

ContentLimits ContentLimits::ofFilesThatStay()
{
    constexpr qint64 Left = qint64{512} * 1024 * 1024;
    ContentLimits limits;
    limits.all -= Left;
    return limits;
}

FileContents::FileContents(Place place, ContentLimits limits) : m_place(std::move(place)), m_limits(limits) {}

QString FileContents::pathOf(const QByteArray& hash) const
{
    return m_place.files() + u'/' + QString::fromLatin1(hash.toHex());
}

std::optional<QByteArray> FileContents::hashOf(const QString& path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!platform::isOrdinaryFile(path) || !file.open(QIODevice::ReadOnly) || !hash.addData(&file) ||
        file.error() != QFileDevice::NoError)
        return std::nullopt;
    return hash.result();
}

std::optional<QByteArray> FileContents::keep(const QString& path) const
{
    const qint64 size = platform::sizeAndTime(path).size;
    if (!platform::isOrdinaryFile(path) || size > m_limits.file || !m_place.make(m_place.files()))
        return std::nullopt;
    if (!m_size)
        m_size = sizeOfAll(m_place.files());
    if (*m_size + size > m_limits.all) {
        std::optional<QByteArray> known = hashOf(path);
        if (!known || !find(*known))
            return std::nullopt;
        makeYoung(*known);
        return known;
    }
    // The copy is hashed and not the file, which may be changing.
    NewFile copy(nameForTheTimeBeing(m_place.files()));
    if (!copyContent(path, copy.path()))
        return std::nullopt;
    std::optional<QByteArray> hash = hashOf(copy.path());
    if (!hash)
        return std::nullopt;
    if (find(*hash)) {
        makeYoung(*hash);
        return hash;
    }
    QFile::remove(pathOf(*hash)); // damaged
    if (!copy.giveName(pathOf(*hash)))
        return std::nullopt;
    *m_size += size;
    return hash;
}

std::optional<QString> FileContents::find(const QByteArray& hash) const
{
    const QString path = pathOf(hash);
    return !hash.isEmpty() && hashOf(path) == hash ? std::optional(path) : std::nullopt;
}

bool FileContents::contains(const QByteArray& hash, qint64 size) const
{
    constexpr qint64 QuicklyRead = qint64{64} * 1024;
    if (size <= QuicklyRead)
        return find(hash).has_value();
    return !hash.isEmpty() && QFileInfo(pathOf(hash)).size() == size;
}

/// As young as if it had been kept now.
void FileContents::makeYoung(const QByteArray& hash) const
{
    QFile known(pathOf(hash));
    if (known.open(QIODevice::ReadWrite))
        known.setFileTime(QDateTime::currentDateTimeUtc(), QFileDevice::FileModificationTime);
}

void FileContents::removeAllBut(const QSet<QByteArray>& hashes, qint64 now) const
{
    constexpr qint64 Hour = qint64{60} * 60 * 1000;
    for (const QFileInfo& info : QDir(m_place.files()).entryInfoList(QDir::Files | QDir::Hidden)) {
        const QByteArray hash = QByteArray::fromHex(info.fileName().toLatin1());
        if (!hashes.contains(hash) && now - info.lastModified().toMSecsSinceEpoch() > Hour)
            QFile::remove(info.filePath());
    }
}

} // namespace quillon::kept

#include "store/kept/copies.h"

#include "app/base/error.h"
#include "app/base/platform/background.h"
#include "app/base/platform/files.h"
#include "store/kept/background_work.h"
#include "store/kept/file_contents.h"
#include "store/kept/history_format.h"
#include "store/kept/retention.h"
#include "store/kept/whole_file.h"
#include "store/quoted.h"
#include "store/schema.h"
#include "store/sqlite/backup.h"
#include "store/sqlite/statement.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QTemporaryDir>

#include <algorithm>
#include <atomic>
#include <future>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::kept
{

namespace
{

const QString CopyEnding = u".mdb"_s;

QString aboutPath(const QString& copyPath)
{
    return copyPath.chopped(CopyEnding.size()) + u".json"_s;
}

/// Nothing when the file cannot be read, or when it does not go on.
template <class GoesOn> std::optional<QByteArray> sumOfCopy(const QString& path, GoesOn&& goesOn)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return std::nullopt;
    quint64 sum = 0;
    std::vector<char> part(std::size_t{1} << 18);
    for (;;) {
        const qint64 count = file.read(part.data(), static_cast<qint64>(part.size()));
        if (count < 0 || !goesOn())
            return std::nullopt;
        if (count == 0)
            return QByteArray::number(sum, 16);
        sum = checksum(QByteArrayView(part.data(), count), sum);
    }
}

QJsonObject aboutCopy(const Copy& copy, const QString& database)
{
    QJsonObject counts;
    for (auto count = copy.counts.begin(); count != copy.counts.end(); ++count)
        counts.insert(count.key(), count.value());
    QJsonArray files;
    for (const CopiedFile& file : copy.files)
        files.append(QJsonObject{{u"name"_s, file.name},
                                 {u"size"_s, file.size},
                                 {u"modified"_s, file.modified},
                                 {u"hash"_s, QString::fromLatin1(file.hash.toHex())},
                                 {u"missing"_s, file.isMissing}});
    return {{u"database"_s, database},
            {u"time"_s, copy.time.toString(Qt::ISODateWithMs)},
            {u"size"_s, copy.size},
            {u"rows"_s, copy.rows},
            {u"counts"_s, counts},
            {u"doubtful"_s, copy.isDoubtful},
            {u"sum"_s, QString::fromLatin1(copy.sum)},
            {u"databaseSize"_s, copy.databaseSize},
            {u"databaseModified"_s, copy.databaseModified},
            {u"files"_s, files}};
}

qint64 numberIn(const QJsonObject& about, const QString& key)
{
    return about.value(key).toInteger();
}

/// What is said of a copy; empty when nothing is, or when it cannot be read.
QJsonObject readAbout(const QString& copyPath)
{
    QFile file(aboutPath(copyPath));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
}

QByteArray hashIn(const QJsonObject& file)
{
    return QByteArray::fromHex(file.value(u"hash"_s).toString().toLatin1());
}

/// Nothing for a file beside which nothing says what it is.
std::optional<Copy> copyAt(const QString& path)
{
    const QJsonObject about = readAbout(path);
    Copy copy;
    copy.path = path;
    copy.database = about.value(u"database"_s).toString();
    copy.time = QDateTime::fromString(about.value(u"time"_s).toString(), Qt::ISODateWithMs);
    if (!copy.time.isValid())
        return std::nullopt;
    copy.size = numberIn(about, u"size"_s);
    copy.rows = numberIn(about, u"rows"_s);
    const QJsonObject counts = about.value(u"counts"_s).toObject();
    for (auto count = counts.begin(); count != counts.end(); ++count)
        copy.counts.insert(count.key(), count.value().toInteger());
    copy.isDoubtful = about.value(u"doubtful"_s).toBool();
    copy.sum = about.value(u"sum"_s).toString().toLatin1();
    copy.databaseSize = numberIn(about, u"databaseSize"_s);
    copy.databaseModified = numberIn(about, u"databaseModified"_s);
    const QJsonArray files = about.value(u"files"_s).toArray();
    for (const auto& value : files) {
        const QJsonObject entry = value.toObject();
        copy.files.push_back({.name = entry.value(u"name"_s).toString(),
                              .size = numberIn(entry, u"size"_s),
                              .modified = numberIn(entry, u"modified"_s),
                              .hash = hashIn(entry),
                              .isMissing = entry.value(u"missing"_s).toBool()});
    }
    return copy;
}

/// What a thread of its own does for a copy that nobody writes any more, while another one looks whether it is whole: it
/// brings it to the disk and sums it up.
class DiskWork
{
public:
    explicit DiskWork(const QString& path)
        : m_sum(std::async(std::launch::async, [this, path]() -> std::optional<QByteArray> {
              platform::workInBackground();
              platform::syncFile(path);
              return sumOfCopy(path, [this] { return m_goesOn.load(); });
          }))
    {
    }
    ~DiskWork()
    {
        m_goesOn = false;
        if (m_sum.valid())
            m_sum.wait();
    }
    DiskWork(const DiskWork&) = delete;
    DiskWork& operator=(const DiskWork&) = delete;

    /// The sum, when all is done. Errors: what the disk says; 75 when the copy cannot be read.
    QByteArray finish()
    {
        const std::optional<QByteArray> sum = m_sum.get();
        if (!sum)
            throw Error(errors::PathFileAccess);
        return *sum;
    }

private:
    std::atomic<bool> m_goesOn = true;
    std::future<std::optional<QByteArray>> m_sum; // last, for its thread uses the above
};

/// The making of one copy.
class CopyMaker
{
public:
    explicit CopyMaker(const CopyOrder& order)
        : m_order(order), m_known(listCopies(order.place)), m_time(order.now())
    {
        const QFileInfo database(order.place.database());
        m_copy.time = m_time;
        m_copy.databaseSize = database.size();
        m_copy.databaseModified = database.lastModified().toMSecsSinceEpoch();
        // Where the clock of the disk has not gone on since, a later write would leave the same time behind. Then the
        // next copy is made in any case.
        constexpr qint64 CoarsestClock = 2000;
        if (QDateTime::currentMSecsSinceEpoch() - m_copy.databaseModified < CoarsestClock)
            m_isJustWritten = true;
    }

    CopyOutcome make()
    {
        const bool isUnchanged = !m_known.empty() && m_known[0].databaseSize == m_copy.databaseSize &&
                                 m_known[0].databaseModified == m_copy.databaseModified;
        if (isUnchanged && m_order.inspection == Inspection::WhenChanged)
            return CopyOutcome::Unchanged;
        std::optional<QTemporaryDir> whileLooking; // nobody else sees into it
        if (m_order.onlyLooks)
            whileLooking.emplace(QDir::tempPath() + u"/quillon-XXXXXX"_s);
        const QString folder = whileLooking ? whileLooking->path() : m_order.place.copies();
        if (whileLooking ? !whileLooking->isValid() : !m_order.place.make(folder))
            throw Error(errors::PathFileAccess,
                        u"控えのフォルダ「%1」を作成できません。"_s.arg(QDir::toNativeSeparators(folder)));
        const QString beside = nameForTheTimeBeing(folder);
        sqlite::Backup backup(m_order.place.database(), beside);
        if (!copyPages(backup))
            return CopyOutcome::Stopped;
        std::optional<DiskWork> diskWork;
        if (!m_order.onlyLooks)
            diskWork.emplace(beside);
        backup.setGoesOn(m_order.goesOn);
        bool isWhole = false;
        inBackground([&] { isWhole = inspect(backup); }); // nobody waits for this
        if (!isWhole)
            return CopyOutcome::Stopped;
        if (!diskWork)
            return CopyOutcome::Looked;
        if (isUnchanged)
            return CopyOutcome::Unchanged; // and whole
        m_copy.sum = diskWork->finish();
        if (!m_order.goesOn())
            return CopyOutcome::Stopped;
        backup.keep();
        try {
            place(beside);
        } catch (...) {
            QFile::remove(beside);
            throw;
        }
        removeOld();
        return CopyOutcome::Made;
    }

private:
    bool copyPages(sqlite::Backup& backup) const
    {
        // On a slow disk fewer pages than a step can hold: so long a writer may have to wait at its end.
        constexpr int Fewest = 4;
        constexpr qint64 LongStep = 10'000'000; // nanoseconds
        constexpr qint64 LongWork = 10'000'000;
        int beginnings = 0;
        int left = 0;
        int pages = std::min(backup.mostPages(), 4 * Fewest);
        QElapsedTimer work; // since the last pause
        work.start();
        for (;;) {
            if (!m_order.goesOn())
                return false;
            QElapsedTimer timer;
            timer.start();
            const sqlite::Backup::Progress progress = backup.step(pages);
            if (progress == sqlite::Backup::Progress::Done)
                return true;
            if (progress == sqlite::Backup::Progress::GoesOn) {
                beginnings += backup.pagesLeft() > left - pages ? 1 : 0;
                left = backup.pagesLeft();
                pages = timer.nsecsElapsed() > LongStep ? std::max(Fewest, pages / 2) : pages + pages / 4;
                pages = std::min(backup.mostPages(), pages);
            }
            if (beginnings > m_order.mostBeginnings)
                throw Error(errors::Locked);
            const bool isDue =
                progress == sqlite::Backup::Progress::IsLocked || work.nsecsElapsed() > LongWork;
            if (isDue && m_order.pause) {
                m_order.pause();
                work.start();
            }
        }
    }

    /// Whether the copy is whole; false when it is to be ended.
    bool inspect(sqlite::Backup& backup)
    {
        try {
            const bool isThorough = m_order.inspection == Inspection::Thorough;
            const auto verdict =
                backup.ask(isThorough ? u"PRAGMA integrity_check(1)"_s : u"PRAGMA quick_check(1)"_s);
            if (!verdict->step() || verdict->text(0) != u"ok")
                throw Error(errors::NotADatabase);
            for (const TableSchema* table : schema::all()) {
                const auto count = backup.ask(u"SELECT count(*) FROM "_s + quoted(table->name));
                const qint64 rows = count->step() ? count->number(0) : 0;
                m_copy.counts.insert(table->name, rows);
                m_copy.rows += rows;
            }
            if (!m_order.onlyLooks)
                keepFiles(backup);
        } catch (const Error&) {
            if (!m_order.goesOn())
                return false;
            throw;
        }
        if (m_isJustWritten)
            m_copy.databaseModified = 0;
        // Not with another doubtful one: two of them in a row would pass for good.
        const auto good =
            std::find_if(m_known.begin(), m_known.end(), [](const Copy& copy) { return !copy.isDoubtful; });
        m_copy.isDoubtful =
            good != m_known.end() && (2 * m_copy.rows < good->rows || hasLostMostFilesSince(*good));
        return m_order.goesOn();
    }

    /// Whether most of the files that were there are not, although they are still registered.
    bool hasLostMostFilesSince(const Copy& good) const
    {
        QSet<QString> were;
        for (const CopiedFile& file : good.files) {
            if (!file.isMissing)
                were.insert(file.name);
        }
        const auto lost = std::count_if(m_copy.files.begin(), m_copy.files.end(), [&](const auto& file) {
            return file.isMissing && were.contains(file.name);
        });
        return 2 * lost > were.size();
    }

    /// What the newest copies say of each file.
    QHash<QString, const CopiedFile*> knownFiles() const
    {
        QHash<QString, const CopiedFile*> known;
        for (const Copy& copy : m_known) {
            for (const CopiedFile& file : copy.files) {
                const CopiedFile*& newest = known[file.name];
                if (newest == nullptr || newest->hash.isEmpty())
                    newest = &file;
            }
        }
        return known;
    }

    /// Keeps the contents of the registered files that are new or have changed. Of one that is missing the content that
    /// was kept last stays named, so that it does not go with the older copies.
    void keepFiles(sqlite::Backup& backup)
    {
        const QHash<QString, const CopiedFile*> known = knownFiles();
        const FileContents contents(m_order.place, ContentLimits::ofFilesThatStay());
        QSet<QString> seen;
        // As in opening one: either field may name the file.
        const auto names = backup.ask(u"SELECT Explanation, Name FROM RefFile"_s);
        while (names->step()) {
            bool isNamed = false; // by a field that can only be a name
            for (const int column : {0, 1}) {
                const QString name = names->text(column).toString();
                if (name.isEmpty() || name.contains(u'/') || name.contains(u'\\'))
                    continue;
                const CopiedFile* const before = known.value(name);
                const bool isThere = platform::isOrdinaryFile(m_order.fileFolder + u'/' + name);
                // Nearly always the first is an explanation, and the second the name.
                const bool isMissing = !isThere && (before != nullptr || (column == 1 && !isNamed));
                isNamed = isNamed || isThere || isMissing;
                if ((!isThere && !isMissing) || seen.contains(name))
                    continue;
                seen.insert(name);
                if (!m_order.goesOn())
                    return;
                m_copy.files.push_back(isThere ? present(name, before, contents) : missing(name, before));
            }
        }
    }

    CopiedFile present(const QString& name, const CopiedFile* before, const FileContents& contents) const
    {
        const QString path = m_order.fileFolder + u'/' + name;
        const platform::SizeAndTime now = platform::sizeAndTime(path);
        CopiedFile file{
            .name = name, .size = now.size, .modified = now.modified, .hash = {}, .isMissing = false};
        const bool isAsBefore = before != nullptr && before->size == file.size &&
                                before->modified == file.modified &&
                                contents.contains(before->hash, file.size);
        // Reading would fetch what is elsewhere: a whole folder of a cloud, for which the disk may be too small.
        const bool mayBeRead = m_order.isAtHand(path);
        if (isAsBefore)
            file.hash = before->hash;
        else if (mayBeRead)
            file.hash = contents.keep(path).value_or(QByteArray());
        return file;
    }

    static CopiedFile missing(const QString& name, const CopiedFile* before)
    {
        CopiedFile file = before != nullptr ? *before : CopiedFile{.name = name, .hash = {}};
        file.isMissing = true;
        return file;
    }

    /// Gives the copy its name.
    void place(const QString& beside)
    {
        m_copy.size = QFileInfo(beside).size();
        const QString stem = m_order.place.copies() + u'/' + m_time.toString(u"yyyy-MM-dd_HHmmss"_s);
        m_copy.path = stem + CopyEnding;
        for (int number = 2; QFile::exists(m_copy.path); ++number)
            m_copy.path = stem + u'-' + QString::number(number) + CopyEnding;
        // What says what it is comes first: a copy without it counts for nothing.
        const QByteArray about = QJsonDocument(aboutCopy(m_copy, m_order.place.database())).toJson();
        if (!writeWhole(aboutPath(m_copy.path), about) || !QFile::rename(beside, m_copy.path)) {
            QFile::remove(aboutPath(m_copy.path));
            throw Error(errors::PathFileAccess);
        }
        platform::syncFolder(m_order.place.copies());
    }

    void removeOld()
    {
        const std::vector<Copy> all = listCopies(m_order.place);
        std::vector<CopyFacts> facts;
        facts.reserve(all.size());
        for (const Copy& copy : all)
            facts.push_back({.time = copy.time, .size = copy.size, .isDoubtful = copy.isDoubtful});
        for (const std::size_t i : copiesToRemove(facts, m_time)) {
            QFile::remove(all[i].path);
            QFile::remove(aboutPath(all[i].path));
        }
    }

    const CopyOrder& m_order;
    std::vector<Copy> m_known; // newest first
    QDateTime m_time;
    Copy m_copy;
    bool m_isJustWritten = false;
};

} // namespace

std::vector<Copy> listCopies(const Place& place)
{
    std::vector<Copy> copies;
    for (const QFileInfo& info : QDir(place.copies()).entryInfoList({u"*.mdb"_s}, QDir::Files)) {
        if (std::optional<Copy> copy = copyAt(info.filePath())) {
            copy->database = place.database(); // which may have borne another name then
            copies.push_back(std::move(*copy));
        }
    }
    std::sort(copies.begin(), copies.end(), [](const Copy& a, const Copy& b) {
        return a.time != b.time ? a.time > b.time : a.path > b.path;
    });
    return copies;
}

std::optional<QSet<QByteArray>> contentsNamedByCopies(const Place& place)
{
    QSet<QByteArray> named;
    for (const QFileInfo& info : QDir(place.copies()).entryInfoList({u"*.mdb"_s}, QDir::Files)) {
        const QJsonValue files = readAbout(info.filePath()).value(u"files"_s);
        if (!files.isArray())
            return std::nullopt;
        const QJsonArray entries = files.toArray();
        for (const auto& file : entries)
            named.insert(hashIn(file.toObject()));
    }
    return named;
}

CopyOutcome makeCopy(const CopyOrder& order)
{
    return CopyMaker(order).make();
}

bool isUnharmed(const Copy& copy)
{
    return sumOfCopy(copy.path, [] { return true; }) == copy.sum;
}

} // namespace quillon::kept

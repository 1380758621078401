#include "store/kept/keeping.h"

#include "app/base/error.h"
#include "app/base/platform/files.h"
#include "app/base/reporting.h"
#include "store/database.h"
#include "store/kept/file_contents.h"
#include "store/kept/history_file.h"
#include "store/kept/history_writer.h"
#include "store/kept/moved_database.h"
#include "store/sqlite/damage_watch.h"

#include <QDir>
#include <QFileInfo>

#include <exception>
#include <system_error>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::kept
{

namespace
{

/// A file whose content is kept; that it was replaced stands in the history only when it was.
class FileThatGoes : public Keeper::ReplacedFile
{
public:
    FileThatGoes(std::shared_ptr<HistoryFile> history, QString path, std::optional<QByteArray> hash)
        : m_history(std::move(history)), m_path(std::move(path)), m_size(platform::sizeAndTime(m_path).size),
          m_hash(std::move(hash))
    {
        if (!m_hash)
            m_history->tellOnce(errors::PathFileAccess,
                                u"上書きされるファイル「%1」の内容は残せませんでした。"
                                u"大きすぎるか、空き領域またはアクセス権がありません。"_s.arg(
                                    QDir::toNativeSeparators(m_path)));
    }

    bool isKept() const override { return m_hash.has_value(); }
    void isReplaced() override
    {
        // The same file registered once more has replaced nothing.
        const bool isTheSame =
            m_hash && platform::sizeAndTime(m_path).size == m_size && FileContents::hashOf(m_path) == m_hash;
        if (!isTheSame)
            writeFileReplaced(*m_history, QFileInfo(m_path).fileName(), m_hash.value_or(QByteArray()),
                              m_size);
    }

private:
    std::shared_ptr<HistoryFile> m_history;
    QString m_path;
    qint64 m_size; // of the former content
    std::optional<QByteArray> m_hash;
};

} // namespace

Keeping::Keeping(Reporting& reporting, KeepingOrder order) : m_reporting(reporting), m_order(std::move(order))
{
}

Keeping::~Keeping()
{
    finish();
}

void Keeping::finish()
{
    m_damageWatch.reset();
    if (m_search.joinable())
        m_search.join();
    if (m_worker)
        m_closing.push_back(std::move(m_worker));
    for (const auto& worker : m_closing)
        worker->close(); // all at once, so that they do not wait for each other
    for (const auto& worker : m_closing)
        worker->finish();
    tellFailures();
    m_closing.clear();
}

void Keeping::tellFailures()
{
    for (const auto& worker : m_closing)
        tellFailureOf(*worker);
    if (m_worker)
        tellFailureOf(*m_worker);
}

void Keeping::tellFailureOf(CopyWorker& worker)
{
    const std::optional<QString> failure = worker.takeFailure();
    // What goes on failing is told once.
    if (!failure || m_toldFailures.contains(*failure))
        return;
    m_toldFailures.insert(*failure);
    logFailure(m_reporting, Error(errors::PathFileAccess, *failure), u"KeptCopy"_s);
}

void Keeping::databaseCreated(const QString& path)
{
    if (m_order.keptFolder)
        setAside(*m_order.keptFolder, Place(*m_order.keptFolder, path));
}

void Keeping::databaseOpened(Database& database)
{
    const Place place(m_order.keptFolder.value_or(QString()), database.path());
    if (m_order.keptFolder) {
        m_place = place;
        findAgain(*m_order.keptFolder, place);
        m_history = std::make_shared<HistoryFile>(place, m_reporting);
        database.connection().watchRows(std::make_unique<HistoryWriter>(m_history));
    }
    // The same file once more goes on with the same worker.
    if ((!m_order.copies && !m_order.onDamage) || (m_worker && m_worker->place().folder() == place.folder()))
        return;
    m_damageWatch.reset();
    if (m_worker) {
        m_worker->close();
        m_closing.push_back(std::move(m_worker));
    }
    m_worker = std::make_unique<CopyWorker>(
        place, m_order.fileFolder, m_order.keptFolder ? m_order.copies : std::nullopt,
        [this](const Damage& damage) { passOnDamage(damage); },
        [this] {
            QMetaObject::invokeMethod(
                m_here.get(), [this] { tellFailures(); }, Qt::QueuedConnection);
        });
    m_damageWatch =
        std::make_unique<sqlite::DamageWatch>(database.connection().file(), [worker = m_worker.get()] {
            worker->inspectSoon(Inspection::Thorough);
        });
}

void Keeping::databaseWasBrokenOff()
{
    if (m_worker)
        m_worker->inspectSoon(Inspection::Quick);
}

void Keeping::databaseIsDamaged(const QString& path)
{
    if (!m_order.keptFolder)
        return;
    const Place place(*m_order.keptFolder, path);
    if (listCopies(place).empty())
        return; // hardly one of ours
    if (m_search.joinable())
        m_search.join();
    try {
        m_search = std::thread([this, place] {
            try {
                passOnDamage(lookForGoodCopy(place));
            } catch (const std::exception&) {
                // As below.
            }
        });
    } catch (const std::system_error&) {
        // That the database is damaged has been told; without a thread it is not said what can take its place.
    }
}

void Keeping::passOnDamage(const Damage& damage)
{
    const auto tell = [this, damage] {
        if (!m_order.onDamage || m_toldDamaged.contains(damage.database))
            return;
        m_toldDamaged.insert(damage.database);
        m_order.onDamage(damage);
    };
    QMetaObject::invokeMethod(m_here.get(), tell, Qt::QueuedConnection);
}

void Keeping::isBack(const PutBackNote& note)
{
    if (m_history)
        writePutBack(*m_history, note);
}

std::unique_ptr<Keeper::ReplacedFile> Keeping::fileGoes(const QString& path)
{
    if (!m_history || !platform::isOrdinaryFile(path))
        return nullptr;
    return std::make_unique<FileThatGoes>(m_history, path, FileContents(*m_place).keep(path));
}

} // namespace quillon::kept

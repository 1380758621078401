#include "store/sqlite/backup.h"

#include "app/base/error.h"
#include "app/base/platform/file_identity.h"
#include "store/sqlite/errors.h"
#include "store/sqlite/statement.h"

#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::sqlite
{

namespace
{

QString canonical(const QString& path)
{
    QString full = platform::canonicalPath(path);
    if (full.isEmpty())
        throw Error(errors::DatabaseNotFound);
    return full;
}

void createEmpty(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly,
                   QFileDevice::ReadOwner | QFileDevice::WriteOwner))
        throw Error(errors::CannotOpen);
}

/// How many pages a step copies at most. The size of a page stands in the header, which is read without a lock: it
/// hardly ever changes, and nothing goes wrong when it does.
int mostPagesOf(sqlite3* database)
{
    constexpr int LargestPage = 65'536;
    constexpr sqlite3_int64 PlaceInHeader = 16;
    sqlite3_file* file = nullptr;
    std::array<unsigned char, 2> bytes{};
    int size = LargestPage;
    if (sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file) == SQLITE_OK &&
        file != nullptr && file->pMethods != nullptr &&
        file->pMethods->xRead(file, bytes.data(), static_cast<int>(bytes.size()), PlaceInHeader) == SQLITE_OK)
        size = bytes[0] * 256 + bytes[1];
    constexpr int SmallestPage = 512;
    return Backup::StepBytes / (size < SmallestPage ? LargestPage : size);
}

int endsQuestion(void* goesOn)
{
    return (*static_cast<std::function<bool()>*>(goesOn))() ? 0 : 1;
}

} // namespace

Backup::Backup(const QString& source, const QString& target) : m_target(target)
{
    m_from.open(canonical(source), Access::ToUse);
    // The source has to be open for it.
    m_mostPages = mostPagesOf(m_from.get()); // NOLINT(cppcoreguidelines-prefer-member-initializer)
    createEmpty(target);
    try {
        m_to.open(canonical(target), Access::ToUse);
        // Nobody knows the copy yet: when anything goes wrong, it goes as a whole.
        Statement(m_to, u"PRAGMA journal_mode = OFF"_s).run();
        // SQLite would wait for the disk in the last step, while it still keeps others from writing.
        Statement(m_to, u"PRAGMA synchronous = OFF"_s).run();
        // Room for what a step copies, so that it is written behind the step.
        Statement(m_to, u"PRAGMA cache_size = -4096"_s).run();
        m_gathered.emplace(m_to.get());
        m_backup = sqlite3_backup_init(m_to.get(), "main", m_from.get(), "main");
        if (m_backup == nullptr)
            throw errorOf(m_to.get(), sqlite3_extended_errcode(m_to.get()));
    } catch (...) {
        m_gathered.reset();
        m_to.close();
        QFile::remove(m_target);
        throw;
    }
}

Backup::~Backup()
{
    sqlite3_backup_finish(m_backup);
    m_gathered.reset();
    m_to.close();
    if (!m_isKept)
        QFile::remove(m_target);
}

Backup::Progress Backup::step(int pages)
{
    const int code = sqlite3_backup_step(m_backup, std::min(pages, m_mostPages));
    switch (code) {
    case SQLITE_OK:
        writeWhatWasCopied();
        return Progress::GoesOn;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return Progress::IsLocked;
    case SQLITE_DONE:
        finish();
        return Progress::Done;
    default:
        if ((code & 0xFF) == SQLITE_BUSY)
            return Progress::IsLocked;
        throw errorOf(m_to.get(), code);
    }
}

void Backup::writeWhatWasCopied()
{
    const int code = sqlite3_db_cacheflush(m_to.get());
    // Where the page is still at hand it is written later.
    if (code != SQLITE_BUSY)
        check(m_to.get(), code);
}

int Backup::pagesLeft() const
{
    return m_backup != nullptr ? sqlite3_backup_remaining(m_backup) : 0;
}

void Backup::finish()
{
    check(m_to.get(), sqlite3_backup_finish(std::exchange(m_backup, nullptr)));
    m_from.close();
    check(m_to.get(), m_gathered->finish());
    m_gathered.reset();
}

std::unique_ptr<Statement> Backup::ask(const QString& sql)
{
    return std::make_unique<Statement>(m_to, sql);
}

void Backup::setGoesOn(std::function<bool()> goesOn)
{
    m_goesOn = std::move(goesOn);
    constexpr int StepsOfTheEngine = 100'000; // some milliseconds
    sqlite3_progress_handler(m_to.get(), StepsOfTheEngine, m_goesOn ? endsQuestion : nullptr, &m_goesOn);
}

void Backup::keep()
{
    m_to.close();
    m_isKept = true;
}

} // namespace quillon::sqlite

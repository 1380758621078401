#include "store/sqlite/backup.h"

#include "app/base/error.h"
#include "store/sqlite/errors.h"
#include "store/sqlite/statement.h"

#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::sqlite
{

namespace
{

QString canonical(const QString& path)
{
    QString full = QFileInfo(path).canonicalFilePath();
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

int endsQuestion(void* goesOn)
{
    return (*static_cast<std::function<bool()>*>(goesOn))() ? 0 : 1;
}

} // namespace

Backup::Backup(const QString& source, const QString& target) : m_target(target)
{
    m_from.open(canonical(source), Access::ToUse);
    createEmpty(target);
    try {
        m_to.open(canonical(target), Access::ToUse);
        // Nobody knows the copy yet: when anything goes wrong, it goes as a whole.
        Statement(m_to, u"PRAGMA journal_mode = OFF"_s).run();
        Statement(m_to, u"PRAGMA synchronous = FULL"_s).run();
        m_backup = sqlite3_backup_init(m_to.get(), "main", m_from.get(), "main");
        if (m_backup == nullptr)
            throw errorOf(m_to.get(), sqlite3_extended_errcode(m_to.get()));
    } catch (...) {
        m_to.close();
        QFile::remove(m_target);
        throw;
    }
}

Backup::~Backup()
{
    sqlite3_backup_finish(m_backup);
    m_to.close();
    if (!m_isKept)
        QFile::remove(m_target);
}

Backup::Progress Backup::step(int pages)
{
    const int code = sqlite3_backup_step(m_backup, pages);
    switch (code) {
    case SQLITE_OK:
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

int Backup::pagesLeft() const
{
    return m_backup != nullptr ? sqlite3_backup_remaining(m_backup) : 0;
}

void Backup::finish()
{
    check(m_to.get(), sqlite3_backup_finish(std::exchange(m_backup, nullptr)));
    m_from.close();
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

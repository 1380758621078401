#include "store/kept/history_file.h"

#include "app/base/error.h"
#include "app/base/ports/clock.h"
#include "app/base/reporting.h"
#include "store/kept/history_format.h"

#include <QCoreApplication>
#include <QRandomGenerator>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::kept
{

HistoryFile::HistoryFile(Place place, Reporting& reporting, HistoryLimits limits)
    : m_place(std::move(place)), m_reporting(reporting), m_limits(limits)
{
}

bool HistoryFile::append(QByteArrayView payload, Where where)
{
    const QDateTime now = m_reporting.clock.now();
    const bool isDone =
        m_file && (m_size >= m_limits.fileSize || m_began.secsTo(now) >= m_limits.fileSeconds);
    if (isDone && where == Where::Anywhere)
        m_file.reset();
    if ((m_file || begin(now)) && write(record(payload)))
        return true;
    tellOnce(errors::PathFileAccess,
             u"上書きまたは削除された内容を「%1」に残せませんでした。空き領域とアクセス権を確認してください。"
             u"操作そのものは行われました。"_s.arg(m_place.history()));
    return false;
}

bool HistoryFile::begin(const QDateTime& now)
{
    if (!m_place.make(m_place.history()))
        return false;
    const QString beginning =
        u"%1/%2-%3-"_s.arg(m_place.history(), now.toUTC().toString(u"yyyyMMdd'T'HHmmsszzz"),
                           QString::number(QCoreApplication::applicationPid()));
    auto file = std::make_unique<QFile>();
    // Processes that were made of one another draw the same numbers, and a process may bear the number of a former one.
    constexpr int MostNames = 16;
    for (int i = 0; i < MostNames && !file->isOpen(); ++i) {
        const QString name =
            beginning + QString::number(QRandomGenerator::global()->generate(), 16) + u".log"_s;
        file->setFileName(name);
        if (!file->open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered,
                        QFileDevice::ReadOwner | QFileDevice::WriteOwner) &&
            !QFile::exists(name))
            return false;
    }
    if (!file->isOpen())
        return false;
    m_file = std::move(file);
    m_began = now;
    m_size = 0;
    return write(HistoryLetters);
}

bool HistoryFile::write(QByteArrayView bytes)
{
    if (m_file->write(bytes.data(), bytes.size()) == bytes.size()) {
        m_size += bytes.size();
        return true;
    }
    // Behind half a record nothing could be read. What is written later has a file of its own.
    m_file.reset();
    return false;
}

void HistoryFile::tellOnce(qint32 errorNumber, const QString& reason)
{
    if (std::exchange(m_hasTold, true))
        return;
    logFailure(m_reporting, Error(errorNumber, reason), u"History"_s);
}

} // namespace quillon::kept

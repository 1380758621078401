#pragma once

#include "store/kept/place.h"

#include <QByteArrayView>
#include <QDateTime>
#include <QFile>
#include <QString>

#include <memory>

namespace quillon
{
struct Reporting;
}

namespace quillon::kept
{

/// How a history goes on from file to file.
struct HistoryLimits {
    qint64 fileSize = qint64{16} * 1024 * 1024; // with this a file is full
    qint64 fileSeconds = qint64{24} * 60 * 60;  // as old as this it is done with
};

/// The end of a database's history, to which this process writes. Programs do not share files, so that none waits for
/// another. The disk is not waited for either: what was written outlives this process, not a power failure.
class HistoryFile
{
public:
    HistoryFile(Place place, Reporting& reporting, HistoryLimits limits = {});

    /// Whether the next record may be the first one of a file.
    enum class Where { Anywhere, SameFile };
    /// Appends a record with this payload; false when it could not be written, which the log is told once.
    bool append(QByteArrayView payload, Where where = Where::Anywhere);
    /// The log line for what could not be kept, once for this object. `reason`: why, as a sentence.
    void tellOnce(qint32 errorNumber, const QString& reason);

    Reporting& reporting() { return m_reporting; }

private:
    bool begin(const QDateTime& now);
    bool write(QByteArrayView bytes);

    Place m_place;
    Reporting& m_reporting;
    HistoryLimits m_limits;
    std::unique_ptr<QFile> m_file;
    QDateTime m_began;
    qint64 m_size = 0;
    bool m_hasTold = false;
};

} // namespace quillon::kept

#include "app/base/platform/event_log.h"

#include "app/base/platform/files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace quillon::platform
{

namespace
{

QString stateFolder()
{
    const QString home = qEnvironmentVariable("XDG_STATE_HOME");
    // A relative value is to be ignored.
    if (QDir::isAbsolutePath(home))
        return home + u"/quillon"_s;
    return QDir::homePath() + u"/.local/state/quillon"_s;
}

bool appendLine(const QString& path, const QString& line)
{
    // A log that is a pipe or a device would block or swallow the line.
    if (QFileInfo::exists(path) && !isOrdinaryFile(path))
        return false;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return false;
    const QByteArray bytes = line.toUtf8() + '\n';
    return file.write(bytes) == bytes.size() && file.flush();
}

} // namespace

void writeEventLog(const QString& line, const QString& programFolder)
{
    // There is no application log here that a user can read.
    const QString name = u"/Quillon.log"_s;
    if (mayWriteIn(programFolder) && appendLine(programFolder + name, line))
        return;
    const QString folder = stateFolder();
    if (QDir().mkpath(folder) && appendLine(folder + name, line))
        return;
    // What nobody can read afterwards somebody may read now.
    const QByteArray bytes = line.toUtf8() + '\n';
    static_cast<void>(std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr));
    static_cast<void>(std::fflush(stderr));
}

} // namespace quillon::platform

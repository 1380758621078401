#include "app/base/platform/short_path.h"

#include <QFile>
#include <QFileInfo>

#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillon::platform
{

namespace
{

/// Where the system shows the files that this process holds open.
constexpr const char* OpenFiles = "/proc/self/fd/";

} // namespace

ShortPath::ShortPath(const QString& path)
    : m_fileName(QFileInfo(path).fileName()),
      m_folder(open(QFile::encodeName(QFileInfo(path).path()).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC))
{
}

ShortPath::~ShortPath()
{
    if (m_folder >= 0)
        close(m_folder);
}

bool ShortPath::isNeeded(const QString& path, qsizetype ending, qsizetype most)
{
    return path.toUtf8().size() + ending >= most;
}

std::optional<QByteArray> ShortPath::name() const
{
    if (m_folder < 0)
        return std::nullopt;
    const QByteArray folder = OpenFiles + QByteArray::number(m_folder) + '/';
    struct stat status = {};
    if (stat(folder.constData(), &status) != 0)
        return std::nullopt; // the system shows no such files
    return folder + QFile::encodeName(m_fileName);
}

bool ShortPath::isOne(const char* name)
{
    return std::strncmp(name, OpenFiles, std::strlen(OpenFiles)) == 0;
}

} // namespace quillon::platform

#include "app/base/platform/cloning.h"

#include <QFile>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillon::platform
{

bool cloneFile(const QString& source, const QString& target)
{
    const int from = open(QFile::encodeName(source).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (from < 0)
        return false;
    const QByteArray name = QFile::encodeName(target);
    const int to = open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    const bool isCloned = to >= 0 && ioctl(to, FICLONE, from) == 0;
    close(from);
    if (to >= 0) {
        close(to);
        if (!isCloned)
            unlink(name.constData());
    }
    return isCloned;
}

} // namespace quillon::platform

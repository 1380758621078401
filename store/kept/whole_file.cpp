#include "store/kept/whole_file.h"

#include "app/base/error.h"
#include "app/base/platform/files.h"
#include "app/base/platform/renaming.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

using namespace Qt::Literals::StringLiterals;

namespace quillon::kept
{

namespace
{

bool writeNew(const QString& path, QByteArrayView bytes)
{
    // Without a buffer, for what fails in emptying it at the end is told by nobody.
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered,
                   QFileDevice::ReadOwner | QFileDevice::WriteOwner))
        return false;
    return file.write(bytes.data(), bytes.size()) == bytes.size();
}

} // namespace

QString nameForTheTimeBeing(const QString& folder)
{
    return u"%1/.new-%2-%3"_s.arg(folder, QString::number(QCoreApplication::applicationPid()),
                                  QString::number(QRandomGenerator::global()->generate64(), 16));
}

bool writeWhole(const QString& path, QByteArrayView bytes)
{
    const QString folder = QFileInfo(path).path();
    const QString beside = nameForTheTimeBeing(folder);
    try {
        if (writeNew(beside, bytes)) {
            platform::syncFile(beside);
            if (platform::renameOver(beside, path)) {
                platform::syncFolder(folder);
                return true;
            }
        }
    } catch (const Error&) {
        // As below.
    }
    QFile::remove(beside);
    return false;
}

} // namespace quillon::kept

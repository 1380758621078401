#include "app/shell/home_folder.h"

#include "app/base/absolute_path.h"
#include "app/base/platform/files.h"
#include "app/base/titles.h"
#include "app/shell/missing_parts.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

using namespace Qt::Literals::StringLiterals;

// The resource lies in a library, from which nothing else would draw it in. The macro wants to stand outside any
// namespace.
static void drawInTexts()
{
    Q_INIT_RESOURCE(texts);
}

namespace quillon
{

namespace
{

// A half text must not keep the whole one away the next time.
void writeText(const QString& name, const QString& target)
{
    QFile text(u":/texts/"_s + name);
    QSaveFile file(target);
    if (text.open(QIODevice::ReadOnly) && file.open(QIODevice::WriteOnly)) {
        file.write(text.readAll());
        file.commit();
    }
}

} // namespace

QString homeFolder(const QString& currentFolder)
{
    const QString named = qEnvironmentVariable("QUILLON_HOME");
    if (!named.isEmpty())
        return absolutePath(QDir::fromNativeSeparators(currentFolder), QDir::fromNativeSeparators(named));
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + u'/' + titles::Application;
}

bool makeHome(const QString& folder)
{
    drawInTexts();
    QDir home(folder);
    if (!home.mkpath(u"."_s))
        return false;
    // One that cannot be made is told of at the start.
    home.mkdir(titles::FileFolder);
    for (const QString& name : {u"Readme.txt"_s, u"Quillon 機能仕様.txt"_s}) {
        if (!QFile::exists(home.filePath(name)))
            writeText(name, home.filePath(name));
    }
    return true;
}

void goHome(Dialogs& dialogs, std::optional<QString>& file)
{
    const QString left = QDir::currentPath();
    const QString home = homeFolder(left);
    if (!makeHome(home) || !QDir::setCurrent(home)) {
        tellAtStart(&dialogs, {u"作業フォルダ「%1」を用意できませんでした。\r\n「%2」で起動します。"_s.arg(
                                  QDir::toNativeSeparators(home), QDir::toNativeSeparators(left))});
        return;
    }
    if (!platform::mayWriteIn(home))
        tellAtStart(&dialogs, {u"作業フォルダ「%1」に書き込めません。アクセス権を確認してください。"_s.arg(
                                  QDir::toNativeSeparators(home))});
    if (file)
        file = absolutePath(left, QDir::fromNativeSeparators(*file));
}

} // namespace quillon

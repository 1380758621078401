#include "app/base/platform/recent_documents.h"

#include "app/base/platform/user_folders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSaveFile>

#include <memory>

#include <glib.h>

using namespace Qt::Literals::StringLiterals;

namespace quillon::platform
{

namespace
{

using Bookmarks = std::unique_ptr<GBookmarkFile, decltype(&g_bookmark_file_free)>;
using Text = std::unique_ptr<char, decltype(&g_free)>;

QString failure(const QString& list, const QString& reason)
{
    return u"最近使ったファイルの一覧「%1」に追加できませんでした。%2"_s.arg(list, reason);
}

QString takeMessage(GError* error)
{
    QString message = error != nullptr ? QString::fromUtf8(error->message) : QString();
    g_clear_error(&error);
    return message;
}

/// Replaces the list as a whole or leaves it as it is.
QString replaceList(const QString& list, const char* content, gsize length)
{
    const bool isNew = !QFile::exists(list);
    QSaveFile file(list);
    if (!file.open(QIODevice::WriteOnly))
        return failure(list, file.errorString());
    // What somebody reads and when is nobody else's business.
    if (isNew)
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    if (file.write(content, static_cast<qint64>(length)) != static_cast<qint64>(length) || !file.commit())
        return failure(list, file.errorString());
    return {};
}

} // namespace

QString noteRecentDocument(const QString& path)
{
    // The list lies in the folder of all programs, in which ours has its own.
    const QString folder = QFileInfo(userDataFolder()).path();
    const QString list = folder + u"/recently-used.xbel"_s;
    if (!QDir().mkpath(folder))
        return failure(list, u"フォルダを作成できません。"_s);
    // Desktops that lock the list do it by this name; for a moment only.
    QLockFile lock(list + u".lock"_s);
    constexpr int Patience = 500; // milliseconds
    if (!lock.tryLock(Patience))
        return failure(list, u"ほかのプログラムが使用しています。"_s);

    const Bookmarks bookmarks(g_bookmark_file_new(), g_bookmark_file_free);
    GError* error = nullptr;
    // A list that cannot be understood is another program's, and stays as it is.
    if (QFile::exists(list) &&
        g_bookmark_file_load_from_file(bookmarks.get(), QFile::encodeName(list).constData(), &error) == 0)
        return failure(list, takeMessage(error));

    const QByteArray name = QFile::encodeName(QFileInfo(path).absoluteFilePath());
    const Text uri(g_filename_to_uri(name.constData(), nullptr, &error), g_free);
    if (!uri)
        return failure(list, takeMessage(error));
    g_bookmark_file_set_mime_type(bookmarks.get(), uri.get(), "application/x-quillon");
    // As the entry in the desktop's menu starts it.
    g_bookmark_file_add_application(bookmarks.get(), uri.get(), "quillon", "quillon --home -- %f");

    gsize length = 0;
    const Text content(g_bookmark_file_to_data(bookmarks.get(), &length, &error), g_free);
    if (!content)
        return failure(list, takeMessage(error));
    return replaceList(list, content.get(), length);
}

} // namespace quillon::platform

#include "app/base/platform/any_names.h"

#include "app/base/platform/code_page.h"
#include "app/base/platform/files.h"

#include <QFile>
#include <QUtf8StringView>

#include <dirent.h>

#include <algorithm>
#include <array>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace quillon::platform
{

namespace
{

constexpr char16_t FirstByte = 0xDC00; // half a character, which never stands alone in a text

bool isUtf8(QByteArrayView bytes)
{
    return QUtf8StringView(bytes.data(), bytes.size()).isValidUtf8();
}

/// How many bytes from a place on are one character of UTF-8; 0 when they are none.
qsizetype characterAt(QByteArrayView bytes, qsizetype place)
{
    for (qsizetype size = 1; size <= 4 && place + size <= bytes.size(); ++size) {
        if (isUtf8(bytes.sliced(place, size)))
            return size;
    }
    return 0;
}

bool isLoneByte(const QString& path, qsizetype place)
{
    const char16_t unit = path[place].unicode();
    const bool second = place > 0 && path[place - 1].isHighSurrogate();
    return unit >= FirstByte + 0x80 && unit <= FirstByte + 0xFF && !second;
}

} // namespace

QString pathOfSystem(const QByteArray& bytes)
{
    if (isUtf8(bytes))
        return QString::fromUtf8(bytes);
    QString path;
    for (qsizetype i = 0; i < bytes.size();) {
        const qsizetype size = characterAt(bytes, i);
        if (size > 0)
            path += QString::fromUtf8(bytes.sliced(i, size));
        else
            path += QChar(static_cast<char16_t>(FirstByte + static_cast<unsigned char>(bytes[i])));
        i += std::max(size, qsizetype(1));
    }
    return path;
}

QByteArray bytesForSystem(const QString& path)
{
    QByteArray bytes;
    qsizetype text = 0; // where what has not been taken yet begins
    for (qsizetype i = 0; i < path.size(); ++i) {
        if (!isLoneByte(path, i))
            continue;
        bytes += QFile::encodeName(path.sliced(text, i - text));
        bytes += static_cast<char>(path[i].unicode() - FirstByte);
        text = i + 1;
    }
    return bytes + QFile::encodeName(path.sliced(text));
}

QString readableName(const QString& name)
{
    const QByteArray bytes = bytesForSystem(name);
    if (isUtf8(bytes))
        return name;
    QString readable = decode932Forgivingly(bytes);
    const auto isUnfit = [](QChar character) {
        return character < u' ' || character == u'/' || character == u'\\' || character == u':';
    };
    std::replace_if(readable.begin(), readable.end(), isUnfit, u'_');
    return readable;
}

QString addressOfPath(const QString& path)
{
    return u"file://"_s + QString::fromLatin1(bytesForSystem(path).toPercentEncoding("/"));
}

QStringList filesWithUnreadableNames(const QString& folder)
{
    const auto closeFolder = [](DIR* open) { closedir(open); };
    const QByteArray path = bytesForSystem(folder);
    const std::unique_ptr<DIR, decltype(closeFolder)> entries(opendir(path.constData()), closeFolder);
    QStringList files;
    if (!entries)
        return files;
    while (const dirent* const entry = readdir(entries.get())) {
        const QByteArray name(std::data(entry->d_name));
        const QString file = pathOfSystem(path + '/' + name);
        if (!isUtf8(name) && isOrdinaryFile(file))
            files << file;
    }
    files.sort();
    return files;
}

} // namespace quillon::platform

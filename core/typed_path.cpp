#include "core/typed_path.h"

#include "app/base/platform/any_names.h"
#include "app/base/platform/files.h"
#include "app/base/ports/files.h"

#include <QDir>
#include <QStringView>

#include <array>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

QStringView withoutBlanksAtEnd(QStringView path)
{
    while (!path.isEmpty() && path.back().isSpace())
        path.chop(1);
    return path;
}

QStringView withoutQuotes(QStringView path)
{
    constexpr std::array<QStringView, 3> Pairs = {u"\"\"", u"''", u"“”"};
    for (const QStringView pair : Pairs) {
        if (path.size() > 2 && path.front() == pair.front() && path.back() == pair.back())
            return path.sliced(1, path.size() - 2);
    }
    return path;
}

/// The path of an address, percent-encoded; any other text as it stands.
QString withoutScheme(QStringView path)
{
    constexpr QStringView Scheme = u"file://";
    if (!path.startsWith(Scheme, Qt::CaseInsensitive))
        return path.toString();
    QString address =
        platform::pathOfSystem(QByteArray::fromPercentEncoding(path.sliced(Scheme.size()).toUtf8()));
    constexpr QStringView ThisComputer = u"localhost/";
    if (address.startsWith(ThisComputer, Qt::CaseInsensitive))
        address.remove(0, ThisComputer.size() - 1);
#ifdef Q_OS_WIN
    const bool drive = address.size() > 2 && address[0] == u'/' && address[2] == u':';
    if (drive)
        address.remove(0, 1);
    else if (!address.startsWith(u'/'))
        address.prepend(u"//"_s); // the name of another computer
#endif
    return QDir::toNativeSeparators(address);
}

/// Whether a file can be named so. What ends in a separator names a folder, also where the system would take a file for
/// it; and some systems pass over blanks behind a name.
bool endsInAName(const QString& path)
{
    const QString native = QDir::toNativeSeparators(path);
    return platform::isBareName(native.sliced(native.lastIndexOf(QDir::separator()) + 1));
}

} // namespace

std::optional<QString> fileMeantBy(const Files& files, const QString& typed)
{
    const QStringView trimmed = withoutBlanksAtEnd(typed);
    const QStringView bare = withoutQuotes(trimmed);
    for (const QString& path : {typed, trimmed.toString(), bare.toString(), withoutScheme(bare)}) {
        if (endsInAName(path) && files.fileExists(path))
            return path;
    }
    return std::nullopt;
}

} // namespace quillon

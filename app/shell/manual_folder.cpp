#include "app/shell/manual_folder.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

QString manualFolder(const QString& programFolder)
{
    // Beside the program, as on Windows and where it has been built; else where it is installed for everybody.
    for (const QString& place : {u"manual"_s, u"../share/quillon/manual"_s}) {
        QString folder = QDir::cleanPath(programFolder + u'/' + place);
        if (QFileInfo::exists(folder + u"/manual.html"_s))
            return folder;
    }
#ifdef Q_OS_WIN
    return QDir::cleanPath(programFolder + u"/manual"_s);
#else
    return QDir::cleanPath(programFolder + u"/../share/quillon/manual"_s);
#endif
}

} // namespace quillon

#include "app/shell/program_icon.h"

#include <QSize>
#include <QString>

using namespace Qt::Literals::StringLiterals;

// The resource lies in a library, from which nothing else would draw it in. The macro wants to stand outside any
// namespace.
static void drawInIcons()
{
    Q_INIT_RESOURCE(icons);
}

namespace quillon
{

QIcon programIcon()
{
    drawInIcons();
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128, 256})
        icon.addFile(u":/icons/quillon-%1.png"_s.arg(size), QSize(size, size));
    return icon;
}

} // namespace quillon

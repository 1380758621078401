#include "app/shell/japanese_interface.h"

#include "app/shell/japanese_fonts.h"

#include <QApplication>
#include <QLocale>
#include <QTranslator>

using namespace Qt::Literals::StringLiterals;

// The resource lies in a library, from which nothing else would draw it in. The macro wants to stand outside any
// namespace.
static void drawInTranslation()
{
    Q_INIT_RESOURCE(interface);
}

namespace quillon
{

void setUpJapaneseInterface(QApplication& application)
{
    drawInTranslation();
    QLocale::setDefault(QLocale(QLocale::Japanese, QLocale::Japan));
    auto* translator = new QTranslator(&application);
    if (translator->load(u":/interface/qtbase_ja.qm"_s))
        QCoreApplication::installTranslator(translator);
    new JapaneseFonts(&application);
}

} // namespace quillon

#include "app/shell/japanese_interface.h"

#include <QApplication>
#include <QFont>
#include <QLocale>
#include <QTranslator>

using namespace Qt::Literals::StringLiterals;

// The resource lies in a library, from which nothing else would draw it in. The macro wants to stand outside any
// namespace.
static void drawInResource()
{
    Q_INIT_RESOURCE(interface);
}

namespace quillon
{

namespace
{

QFont japanese(QFont font)
{
    // The first family that is installed wins; the system's own one stays for characters that it lacks.
    font.setFamilies(QStringList{u"Noto Sans CJK JP"_s, u"Noto Sans JP"_s, u"Yu Gothic UI"_s, u"Meiryo UI"_s,
                                 u"IPAexGothic"_s, u"IPAPGothic"_s, u"IPAGothic"_s, u"Source Han Sans JP"_s,
                                 u"VL PGothic"_s, u"VL Gothic"_s, u"TakaoPGothic"_s, u"TakaoGothic"_s,
                                 u"Hiragino Sans"_s, u"MS UI Gothic"_s, u"MS PGothic"_s} +
                     font.families());
    return font;
}

} // namespace

void setUpJapaneseInterface(QApplication& application)
{
    drawInResource();
    QLocale::setDefault(QLocale(QLocale::Japanese, QLocale::Japan));
    auto* translator = new QTranslator(&application);
    if (translator->load(u":/interface/qtbase_ja.qm"_s))
        QCoreApplication::installTranslator(translator);
    QApplication::setFont(japanese(QApplication::font()));
}

} // namespace quillon

// A window with one text in the program's font: what starting costs any program that shows something.
#include "app/shell/japanese_interface.h"

#include <QApplication>
#include <QLabel>

using namespace Qt::Literals::StringLiterals;

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    quillon::setUpJapaneseInterface(application);
    QLabel window(u"自己教育的データベース管理システム"_s);
    window.show();
    return QApplication::exec();
}

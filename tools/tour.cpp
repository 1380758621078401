// The tour: plays through the program's real windows on a sample database, prints each step and saves a picture of
// every window. Usage: quillon-tour [--dark] [FOLDER FOR THE PICTURES]
// QT_SCALE_FACTOR=2 makes them twice as large, --dark shows the windows in dark colours.
#include "app/shell/frmSplash.h"
#include "app/shell/japanese_interface.h"
#include "store/database.h"
#include "store/kept/copies.h"
#include "tools/sample_database.h"
#include "tools/stage.h"
#include "ui/main/frmMainMenu.h"
#include "ui/restore/frmKeptDatabases.h"
#include "ui/restore/frmRestore.h"
#include "ui/widgets/form_window.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPalette>
#include <QTabWidget>
#include <QTemporaryDir>

using namespace Qt::Literals::StringLiterals;

namespace quillon::tour
{

namespace
{

/// The round through the windows.
class Tour : private Stage
{
public:
    using Stage::Stage;

    void play()
    {
        showSplash();
        createDatabase();
        openSample();
        browse();
        registerDefinition();
        registerUndefined();
        showDefinition();
        playDocumentsAndFiles(*this);
        playRelations(*this);
        playCategories(*this);
        playSearches(*this);
        showStatistics();
        readManual();
        closeAll();
        takeBack();
        end();
    }

private:
    void showSplash()
    {
        guide.say(u"起動画面と、システム情報としての同じ画面"_s);
        {
            // Pictured without its timer running out: the tour does not wait three seconds.
            frmSplash splash(program.session(), program.windows());
            splash.startTiming();
            splash.showModeless();
            for (int tick = 0; tick < 20; ++tick)
                splash.tmrSwitch_Timer();
            guide.picture(splash, u"splash"_s);
        }
        // The size on an ordinary screen; the one of the pictures may be smaller.
        mainWindow().resize(1120, 730);
        mainWindow().show();
        guide.picture(mainWindow(), u"main-empty"_s);
        choose(mainWindow(), u"mnuInfoSystem"_s);
        if (FormWindow* information = lastWindow(u"frmSplash"_s)) {
            guide.picture(*information, u"system-information"_s);
            information->unload();
        }
    }

    void createDatabase()
    {
        guide.say(u"新しいデータベースを作成する"_s);
        dialogs.expectFile(folder + u"/新しい知識.mdb"_s);
        dialogs.expectBox(u"Quillon 用のデータベースを作成しました。"_s, Answer::Ok, u"box-created"_s);
        choose(mainWindow(), u"mnuFileNew"_s);
    }

    void openSample()
    {
        guide.say(u"既存のデータベースを展開し、全データを一覧する"_s);
        const QString path = folder + u"/お茶の知識.mdb"_s;
        createSampleDatabase(path);
        dialogs.expectFile(path);
        choose(mainWindow(), u"mnuFileOpen"_s);
        guide.picture(mainWindow(), u"main"_s);
    }

    void browse()
    {
        guide.say(u"カテゴリツリーで絞り込む: 未定義データ、分類とその下位分類"_s);
        chooseNode(u"M_DIV_NODIF"_s);
        guide.picture(mainWindow(), u"main-undefined"_s);
        chooseNode(u"A"_s);
        guide.picture(mainWindow(), u"main-category"_s);
        guide.say(u"見出しで並べ替える"_s);
        mainWindow().findChild<ReportList*>(u"lsvData"_s)->rows().sortByColumn(0);
        guide.picture(mainWindow(), u"main-sorted"_s);
        guide.say(u"データメニュー"_s);
        auto* menu = mainWindow().findChild<QMenu*>(u"mnuData"_s);
        menu->popup(mainWindow().mapToGlobal(QPoint(60, 40)));
        guide.picture(*menu, u"menu-data"_s);
        menu->close();
    }

    void registerDefinition()
    {
        guide.say(u"定義データを登録する: 選んだ分類に入る"_s);
        choose(mainWindow(), u"mnuEntryMain"_s);
        FormWindow* window = lastWindow(u"frmMainData"_s);
        if (window == nullptr)
            return;
        type(*window, u"txtFields(0)"_s, u"釜炒り茶"_s);
        type(*window, u"txtFields(2)"_s, u"蒸す代わりに釜で炒って酸化を止めた緑茶。独特の香ばしさがある。"_s);
        guide.picture(*window, u"definition-registering"_s);
        dialogs.expectBox(u"本データを登録しました。"_s, Answer::Ok, u"box-registered"_s);
        choose(*window, u"mnuDataEntry"_s);
        window->unload();
    }

    void registerUndefined()
    {
        guide.say(u"まだ定義できない言葉を未定義登録する"_s);
        choose(mainWindow(), u"mnuEntryMain"_s);
        FormWindow* window = lastWindow(u"frmMainData"_s);
        if (window == nullptr)
            return;
        type(*window, u"txtFields(0)"_s, u"水出し茶"_s);
        dialogs.expectBox(u"未定義登録を行いますか。"_s, Answer::Ok, u"box-undefined"_s);
        dialogs.expectBox(u"未定義登録を行いました。"_s, Answer::Ok);
        choose(*window, u"mnuDataNoDef"_s);
        window->unload();
        chooseNode(u"DIV"_s);
    }

    void showDefinition()
    {
        guide.say(u"一覧から定義データを開き、直して閉じる"_s);
        auto* list = mainWindow().findChild<ReportList*>(u"lsvData"_s);
        list->selectRow(2);
        choose(mainWindow(), u"mnuDataView"_s);
        FormWindow* window = lastWindow(u"frmMainData"_s);
        if (window == nullptr)
            return;
        guide.picture(*window, u"definition"_s);
        type(*window, u"txtFields(2)"_s, u"碾茶を石臼で挽いた粉末の茶。茶筅で湯に溶いて飲む。"_s);
        dialogs.expectBox(u"現在のデータを更新しますか。"_s, Answer::Yes, u"box-closing"_s);
        dialogs.expectBox(u"本データを更新しました。"_s, Answer::Ok);
        window->unload();
    }

    void showStatistics()
    {
        guide.say(u"登録状況を見る"_s);
        choose(mainWindow(), u"mnuInfoEntry"_s);
        if (FormWindow* statistics = lastWindow(u"frmEntryInfo"_s))
            guide.picture(*statistics, u"statistics"_s);
    }

    void readManual()
    {
        guide.say(u"F1 で機能仕様書を開く"_s);
        QKeyEvent help(QEvent::KeyPress, Qt::Key_F1, Qt::NoModifier);
        QCoreApplication::sendEvent(&mainWindow(), &help);
        picture(u"frmManual"_s, u"manual"_s);
    }

    void closeAll()
    {
        guide.say(u"全画面を閉じる"_s);
        choose(mainWindow(), u"mnuDataCloseAll"_s);
        if (program.windows().loaded().size() != 1)
            guide.complain(u"閉じていない画面があります。"_s);
    }

    void takeBack()
    {
        guide.say(u"復元画面: 失われたデータと控え"_s);
        const QString database = program.session().OpenDb->path();
        kept::makeCopy({.place = {keptFolder(), database},
                        .fileFolder = program.session().inCurrentFolder(titles::FileFolder),
                        .now = [] { return QDateTime::currentDateTime(); },
                        .goesOn = [] { return true; }});
        Program restoring(ports(), folder);
        frmRestore& window = restoring.restoreWindow();
        window.resize(1080, 640); // as on an ordinary screen
        window.showModeless();
        window.showDatabase(database);
        QApplication::processEvents(); // the list is read in slices
        // The folder of the tour has another name each time.
        window.findChild<QLineEdit*>(u"txtDatabase"_s)->setText(QFileInfo(database).fileName());
        auto* lost = window.findChild<ReportList*>(u"lsvLost"_s);
        for (int row = 0; row < lost->rows().rowCount(); ++row) {
            if (lost->rows().text(row, 1) == u"データの更新") {
                lost->selectRow(row);
                break;
            }
        }
        guide.picture(window, u"restore"_s);
        window.findChild<QTabWidget*>(u"tabPages"_s)->setCurrentIndex(1);
        guide.picture(window, u"restore-copies"_s);
        frmKeptDatabases chooser(restoring.session(), restoring.windows());
        chooser.showModeless();
        guide.picture(chooser, u"restore-databases"_s);
    }

    void end()
    {
        guide.say(u"終了の確認"_s);
        bool ended = false;
        program.setEnd([&ended] { ended = true; });
        dialogs.expectBox(u"Quillonを終了しますか。"_s, Answer::Ok, u"box-end"_s);
        choose(mainWindow(), u"mnuEnd"_s);
        if (!ended)
            guide.complain(u"終了しませんでした。"_s);
    }
};

/// The colours of a dark desktop.
QPalette darkPalette()
{
    const QColor ground(0x2B, 0x2B, 0x2E);
    const QColor paper(0x1E, 0x1E, 0x20);
    const QColor text(0xEE, 0xEE, 0xEE);
    const QColor faint(0x8A, 0x8A, 0x8E);
    QPalette palette(text, ground, ground.lighter(160), paper.darker(130), faint, text, paper);
    palette.setColor(QPalette::AlternateBase, ground);
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::Highlight, QColor(0x2A, 0x6F, 0xB5));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Inactive, QPalette::Highlight, QColor(0x4A, 0x4A, 0x50));
    palette.setColor(QPalette::ToolTipBase, ground);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, faint);
    palette.setColor(QPalette::Link, QColor(0x6F, 0xB1, 0xF2));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, faint);
    return palette;
}

} // namespace

} // namespace quillon::tour

int main(int argc, char** argv)
{
    using namespace quillon;

    // Pictures look alike on every machine, and no display is needed.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setStyle(u"Fusion"_s);
    setUpJapaneseInterface(application);

    QStringList arguments = QApplication::arguments().sliced(1);
    if (arguments.removeAll(u"--dark"_s) > 0)
        QApplication::setPalette(tour::darkPalette());
    tour::Guide guide(arguments.value(0, u"docs/images"_s));
    const QTemporaryDir folder;
    QDir(folder.path()).mkdir(u"RefFile"_s);
    tour::Tour(guide, folder.path()).play();
    return guide.succeeded() ? 0 : 1;
}

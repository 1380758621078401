// The tour: plays through the program's real windows on a sample database, prints each step and saves a picture of
// every window. Usage: quillon-tour [FOLDER FOR THE PICTURES]
#include "app/base/system_files.h"
#include "app/shell/frmSplash.h"
#include "app/shell/japanese_interface.h"
#include "app/shell/program.h"
#include "app/shell/system_ports.h"
#include "tools/guide.h"
#include "tools/sample_database.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/form_window.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QTemporaryDir>

using namespace Qt::Literals::StringLiterals;

namespace quillon::tour
{

namespace
{

/// A desktop that opens nothing: the tour has no business in other programs.
class NoDesktop : public Desktop
{
public:
    OpenOutcome open(const QString&) override { return OpenOutcome::Opened; }
};

/// A log that forgets.
class NoEventLog : public EventLog
{
public:
    void write(const QString&) override {}
};

/// The round through the windows.
class Tour
{
public:
    Tour(Guide& guide, const QString& folder)
        : m_guide(guide), m_folder(folder), m_dialogs(guide),
          m_program({m_dialogs, m_log, m_clock, m_desktop, m_files}, folder)
    {
    }

    void play()
    {
        showSplash();
        createDatabase();
        openSample();
        browse();
        registerDefinition();
        registerUndefined();
        showDefinition();
        showStatistics();
        closeAll();
        end();
    }

private:
    frmMainMenu& mainWindow() { return m_program.mainWindow(); }

    FormWindow* lastWindow(const QString& name)
    {
        FormWindow* found = nullptr;
        for (LoadedWindow* window : m_program.windows().loaded())
            if (window->windowName() == name)
                found = dynamic_cast<FormWindow*>(window);
        if (found == nullptr)
            m_guide.complain(u"画面がありません: "_s + name);
        return found;
    }

    void choose(QWidget& window, const QString& name)
    {
        auto* action = window.findChild<QAction*>(name);
        if (action == nullptr || !action->isEnabled())
            m_guide.complain(u"選べないメニュー: "_s + name);
        else
            action->trigger();
    }

    void chooseNode(const QString& key)
    {
        auto* tree = mainWindow().findChild<KeyedTree*>(u"tvwCategory"_s);
        tree->expandAll();
        tree->select(tree->nodes().position(key));
        mainWindow().tvwCategory_NodeClick();
    }

    static void type(QWidget& window, int field, const QString& text)
    {
        const QString name = u"txtFields(%1)"_s.arg(field);
        if (auto* line = window.findChild<QLineEdit*>(name))
            line->setText(text);
        else if (auto* page = window.findChild<QPlainTextEdit*>(name))
            page->setPlainText(text);
    }

    void showSplash()
    {
        m_guide.say(u"起動画面と、システム情報としての同じ画面"_s);
        {
            // Pictured without its timer running out: the tour does not wait three seconds.
            frmSplash splash(m_program.session(), m_program.windows());
            splash.startTiming();
            splash.show();
            for (int tick = 0; tick < 20; ++tick)
                splash.tmrSwitch_Timer();
            m_guide.picture(splash, u"splash"_s);
        }
        mainWindow().show();
        m_guide.picture(mainWindow(), u"main-empty"_s);
        choose(mainWindow(), u"mnuInfoSystem"_s);
        if (FormWindow* information = lastWindow(u"frmSplash"_s)) {
            m_guide.picture(*information, u"system-information"_s);
            information->unload();
        }
    }

    void createDatabase()
    {
        m_guide.say(u"新しいデータベースを作成する"_s);
        m_dialogs.expectFile(m_folder + u"/新しい知識.mdb"_s);
        m_dialogs.expectBox(u"Quillon 用のデータベースを作成しました。"_s, Answer::Ok, u"box-created"_s);
        choose(mainWindow(), u"mnuFileNew"_s);
    }

    void openSample()
    {
        m_guide.say(u"既存のデータベースを展開し、全データを一覧する"_s);
        const QString path = m_folder + u"/お茶の知識.mdb"_s;
        createSampleDatabase(path);
        m_dialogs.expectFile(path);
        choose(mainWindow(), u"mnuFileOpen"_s);
        m_guide.picture(mainWindow(), u"main"_s);
    }

    void browse()
    {
        m_guide.say(u"カテゴリツリーで絞り込む: 未定義データ、分類とその下位分類"_s);
        chooseNode(u"M_DIV_NODIF"_s);
        m_guide.picture(mainWindow(), u"main-undefined"_s);
        chooseNode(u"A"_s);
        m_guide.picture(mainWindow(), u"main-category"_s);
        m_guide.say(u"見出しで並べ替える"_s);
        mainWindow().findChild<ReportList*>(u"lsvData"_s)->rows().sortByColumn(0);
        m_guide.picture(mainWindow(), u"main-sorted"_s);
        m_guide.say(u"データメニュー"_s);
        auto* menu = mainWindow().findChild<QMenu*>(u"mnuData"_s);
        menu->popup(mainWindow().mapToGlobal(QPoint(60, 40)));
        m_guide.picture(*menu, u"menu-data"_s);
        menu->close();
    }

    void registerDefinition()
    {
        m_guide.say(u"定義データを登録する: 選んだ分類に入る"_s);
        choose(mainWindow(), u"mnuEntryMain"_s);
        FormWindow* window = lastWindow(u"frmMainData"_s);
        if (window == nullptr)
            return;
        type(*window, 0, u"釜炒り茶"_s);
        type(*window, 2, u"蒸す代わりに釜で炒って酸化を止めた緑茶。独特の香ばしさがある。"_s);
        m_guide.picture(*window, u"definition-registering"_s);
        m_dialogs.expectBox(u"本データを登録しました。"_s, Answer::Ok, u"box-registered"_s);
        choose(*window, u"mnuDataEntry"_s);
        window->unload();
    }

    void registerUndefined()
    {
        m_guide.say(u"まだ定義できない言葉を未定義登録する"_s);
        choose(mainWindow(), u"mnuEntryMain"_s);
        FormWindow* window = lastWindow(u"frmMainData"_s);
        if (window == nullptr)
            return;
        type(*window, 0, u"水出し茶"_s);
        m_dialogs.expectBox(u"未定義登録を行いますか。"_s, Answer::Ok, u"box-undefined"_s);
        m_dialogs.expectBox(u"未定義登録を行いました。"_s, Answer::Ok);
        choose(*window, u"mnuDataNoDef"_s);
        window->unload();
        chooseNode(u"DIV"_s);
    }

    void showDefinition()
    {
        m_guide.say(u"一覧から定義データを開き、直して閉じる"_s);
        auto* list = mainWindow().findChild<ReportList*>(u"lsvData"_s);
        list->selectRow(2);
        choose(mainWindow(), u"mnuDataView"_s);
        FormWindow* window = lastWindow(u"frmMainData"_s);
        if (window == nullptr)
            return;
        m_guide.picture(*window, u"definition"_s);
        type(*window, 2, u"碾茶を石臼で挽いた粉末の茶。茶筅で湯に溶いて飲む。"_s);
        m_dialogs.expectBox(u"現在のデータを更新しますか。"_s, Answer::Yes, u"box-closing"_s);
        m_dialogs.expectBox(u"本データを更新しました。"_s, Answer::Ok);
        window->unload();
    }

    void showStatistics()
    {
        m_guide.say(u"登録状況を見る"_s);
        choose(mainWindow(), u"mnuInfoEntry"_s);
        if (FormWindow* statistics = lastWindow(u"frmEntryInfo"_s))
            m_guide.picture(*statistics, u"statistics"_s);
    }

    void closeAll()
    {
        m_guide.say(u"全画面を閉じる"_s);
        choose(mainWindow(), u"mnuDataCloseAll"_s);
        if (m_program.windows().loaded().size() != 1)
            m_guide.complain(u"閉じていない画面があります。"_s);
    }

    void end()
    {
        m_guide.say(u"終了の確認"_s);
        bool ended = false;
        m_program.setEnd([&ended] { ended = true; });
        m_dialogs.expectBox(u"Quillonを終了しますか。"_s, Answer::Ok, u"box-end"_s);
        choose(mainWindow(), u"mnuEnd"_s);
        if (!ended)
            m_guide.complain(u"終了しませんでした。"_s);
    }

    Guide& m_guide;
    QString m_folder;
    GuidedDialogs m_dialogs;
    NoEventLog m_log;
    SystemClock m_clock;
    NoDesktop m_desktop;
    SystemFiles m_files;
    Program m_program;
};

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

    const QStringList arguments = QApplication::arguments();
    tour::Guide guide(arguments.size() > 1 ? arguments[1] : u"docs/images"_s);
    const QTemporaryDir folder;
    QDir(folder.path()).mkdir(u"RefFile"_s);
    tour::Tour(guide, folder.path()).play();
    return guide.succeeded() ? 0 : 1;
}

#include "tools/stage.h"

#include "app/shell/manual_folder.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/form_window.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

namespace quillon::tour
{

Stage::Stage(Guide& tourGuide, const QString& currentFolder)
    : guide(tourGuide), folder(currentFolder), dialogs(tourGuide), program(ports(), currentFolder)
{
}

Program::Ports Stage::ports()
{
    // Copies are made when the tour wants to show one.
    return {.dialogs = dialogs,
            .eventLog = log,
            .clock = clock,
            .desktop = desktop,
            .files = files,
            .keptFolder = keptFolder(),
            .copies = std::nullopt,
            .manualFolder = manualFolder(QCoreApplication::applicationDirPath())};
}

FormWindow* Stage::lastWindow(const QString& name)
{
    FormWindow* found = nullptr;
    for (LoadedWindow* window : program.windows().loaded()) {
        if (window->windowName() == name)
            found = dynamic_cast<FormWindow*>(window);
    }
    if (found == nullptr)
        guide.complain(u"画面がありません: "_s + name);
    return found;
}

void Stage::choose(QWidget& window, const QString& name)
{
    auto* action = window.findChild<QAction*>(name);
    if (action == nullptr || !action->isEnabled())
        guide.complain(u"選べないメニュー: "_s + name);
    else
        action->trigger();
}

void Stage::press(QWidget& window, const QString& name)
{
    if (auto* button = window.findChild<QAbstractButton*>(name))
        button->click();
    else
        guide.complain(u"ボタンがありません: "_s + name);
}

void Stage::chooseNode(const QString& key)
{
    auto* tree = mainWindow().findChild<KeyedTree*>(u"tvwCategory"_s);
    tree->expandAll();
    const int node = tree->nodes().position(key);
    tree->select(node);
    mainWindow().tvwCategory_NodeClick(node);
}

void Stage::selectRow(QWidget& window, const QString& listName, const QString& name)
{
    auto* list = window.findChild<ReportList*>(listName);
    for (int row = 0; list != nullptr && row < list->rows().rowCount(); ++row) {
        if (list->rows().text(row, 0) == name) {
            list->selectRow(row);
            return;
        }
    }
    guide.complain(u"一覧にありません: "_s + name);
}

void Stage::type(QWidget& window, const QString& field, const QString& text)
{
    if (auto* line = window.findChild<QLineEdit*>(field))
        line->setText(text);
    else if (auto* page = window.findChild<QPlainTextEdit*>(field))
        page->setPlainText(text);
    else
        guide.complain(u"入力欄がありません: "_s + field);
}

void Stage::whileModal(const QString& windowName, std::function<void(FormWindow&)> action)
{
    // Acts in the modal window's own event loop; questions may come before the window does.
    auto* waiting = new QTimer(qApp);
    QObject::connect(waiting, &QTimer::timeout, waiting,
                     [this, waiting, windowName, action = std::move(action), left = 200]() mutable {
                         const QPointer<FormWindow> window =
                             qobject_cast<FormWindow*>(QApplication::activeModalWidget());
                         const bool there = !window.isNull() && window->windowName() == windowName;
                         if (!there && --left > 0)
                             return;
                         waiting->stop();
                         waiting->deleteLater();
                         if (!there) {
                             guide.complain(u"画面が開きません: "_s + windowName);
                             return;
                         }
                         action(*window);
                         // The tour must not wait for ever for a window that nobody closes.
                         if (window && window->isVisible()) {
                             guide.complain(u"閉じていない画面があります: "_s + windowName);
                             window->unload();
                         }
                     });
    waiting->start(50);
}

void Stage::picture(const QString& windowName, const QString& pictureName)
{
    if (FormWindow* window = lastWindow(windowName))
        guide.picture(*window, pictureName);
}

} // namespace quillon::tour

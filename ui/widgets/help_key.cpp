#include "ui/widgets/help_key.h"

#include "app/base/error.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/form_window.h"
#include "ui/widgets/manual_window.h"
#include "ui/widgets/window_registry.h"

#include <QApplication>
#include <QHash>
#include <QKeyEvent>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// The chapter for a window: of a box that of its own or of the nearest window that it belongs to.
QString chapterFor(const QWidget& window)
{
    for (const QWidget* widget = &window; widget != nullptr; widget = widget->parentWidget()) {
        if (!widget->isWindow())
            continue;
        const auto* form = dynamic_cast<const FormWindow*>(widget);
        // The title of a box may go on behind what it is known by.
        QString chapter = manualChapterFor(form != nullptr ? form->windowName()
                                                           : widget->windowTitle().section(u' ', 0, 0));
        if (!chapter.isEmpty())
            return chapter;
    }
    return manualChapterFor(u"frmMainMenu"_s);
}

void closeMenus()
{
    // A menu that refused to close would be asked for ever.
    for (QWidget* before = nullptr; QWidget* const menu = QApplication::activePopupWidget(); before = menu) {
        if (menu == before)
            return;
        menu->close();
    }
}

} // namespace

QString manualChapterFor(const QString& windowNameOrTitle)
{
    static const QHash<QString, QString> chapters = {
        {u"frmCategory"_s, u"分類"_s},
        {u"frmDataSelect"_s, u"データ選択画面"_s},
        {u"frmEntryInfo"_s, u"データ登録状況表示画面"_s},
        {u"frmFind"_s, u"全文検索画面"_s},
        {u"frmKeptDatabases"_s, u"控えと復元"_s},
        {u"frmLinkList"_s, u"リンク情報表示画面"_s},
        {u"frmMainData"_s, u"定義データ画面"_s},
        {u"frmMainMenu"_s, u"メイン画面"_s},
        {u"frmManual"_s, u"機能仕様書画面"_s},
        {u"frmRefDoc"_s, u"文献データ画面"_s},
        {u"frmRefFileEntry"_s, u"ファイルデータ登録画面"_s},
        {u"frmRestore"_s, u"控えと復元"_s},
        {u"frmSplash"_s, u"起動と終了"_s},
        {u"システムコマンド入力画面"_s, u"システムコマンド"_s},
    };
    return chapters.value(windowNameOrTitle);
}

HelpKey::HelpKey(Reporting& reporting, WindowRegistry& registry)
    : m_reporting(reporting), m_registry(registry)
{
    QCoreApplication::instance()->installEventFilter(this);
}

void HelpKey::showHelp(QWidget& window)
{
    const QString chapter = chapterFor(window);
    auto* manual = dynamic_cast<ManualWindow*>(&m_registry.sharedWindow(u"frmManual"_s));
    if (manual == nullptr)
        throw Error(errors::ObjectNotSet);
    manual->showChapter(chapter, window);
}

bool HelpKey::eventFilter(QObject* receiver, QEvent* event)
{
    if (event->type() != QEvent::KeyPress || !receiver->isWidgetType())
        return false;
    const auto& key = static_cast<const QKeyEvent&>(*event);
    if (key.key() != Qt::Key_F1 || (key.modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier)
        return false;
    event->accept();
    if (key.isAutoRepeat())
        return true;
    auto& widget = static_cast<QWidget&>(*receiver);
    // A menu belongs to a window, too, which is what the person wants to know about.
    QWidget* window = widget.window();
    while (window->windowType() == Qt::Popup && window->parentWidget() != nullptr)
        window = window->parentWidget()->window();
    closeMenus();
    handleEvent(m_reporting, u"Form_KeyDown"_s, [&] { showHelp(*window); });
    return true;
}

} // namespace quillon

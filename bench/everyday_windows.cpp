#include "app/base/ports/data_window.h"
#include "app/base/titles.h"
#include "bench/everyday.h"
#include "core/data_records.h"
#include "store/record_set.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/report_list.h"
#include "ui/widgets/status_panels.h"

#include <QAction>
#include <QCheckBox>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

// About one datum in a thousand has it.
const QString SearchedText = u"蒸留水"_s;
const QString TypedDefinition =
    u"水を熱して得た蒸気を冷やし、再び液体にしたもの。不純物をほとんど含まない。\n"_s;

void press(QWidget& widget, int key, const QString& text)
{
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&widget, &down);
    QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&widget, &up);
}

} // namespace

void Everyday::prepareSearch()
{
    closeOtherWindows();
    m_program->mainWindow().mnuFindName_Click();
    control<QLineEdit>(u"frmFind"_s, u"txtFind"_s).setText(SearchedText);
    for (const QString& kind : {u"chkMain"_s, u"chkRefDoc"_s, u"chkRefFile"_s})
        control<QCheckBox>(u"frmFind"_s, kind).setChecked(true);
    settle();
}

void Everyday::search()
{
    control<QPushButton>(u"frmFind"_s, u"cmdFind"_s).click();
    awaitPainting(control<ReportList>(u"frmDataSelect"_s, u"lsvData"_s));
}

void Everyday::checkFound()
{
    requireList(control<ReportList>(u"frmDataSelect"_s, u"lsvData"_s), "nothing was found");
}

Task Everyday::firstSearch()
{
    return {.name = u"First search"_s,
            .prepare =
                [this] {
                    m_program->open(m_path); // what earlier searches hold in memory goes with the file
                    prepareSearch();
                },
            .work = [this] { search(); },
            .check = [this] { checkFound(); }};
}

Task Everyday::furtherSearch()
{
    return {.name = u"Search after the first"_s,
            .prepare = [this] { prepareSearch(); },
            .work = [this] { search(); },
            .check = [this] { checkFound(); }};
}

Task Everyday::listingLinks()
{
    return {.name = u"Link list window"_s,
            .prepare = [this] { closeOtherWindows(); },
            .work =
                [this] {
                    m_program->mainWindow().mnuInfoLink_Click();
                    awaitPainting(control<ReportList>(u"frmLinkList"_s, u"lsvLink"_s));
                },
            .check =
                [this] {
                    const auto& links = control<ReportList>(u"frmLinkList"_s, u"lsvLink"_s);
                    requireList(links, "the links were not listed");
                    require(links.rows().rowCount() == session().RsLink->recordCount(), "links are missing");
                }};
}

Task Everyday::openingItem()
{
    return {.name = u"Opening an item"_s,
            .prepare =
                [this] {
                    closeOtherWindows();
                    m_nextItem = (m_nextItem + 1) % m_items.size();
                },
            .work =
                [this] {
                    ShowData(session(), m_items[m_nextItem]);
                    awaitPainting(contentField());
                },
            .check =
                [this] {
                    require(definitionWindow().fieldText(1) == m_items[m_nextItem],
                            "another item was opened");
                    require(m_painted.contains(contentField()), "the item was not painted");
                }};
}

Task Everyday::registeringItem()
{
    // From the menu entry that opens the window to the notice that the item has been registered.
    return {.name = u"Registering an item"_s,
            .prepare =
                [this] {
                    closeOtherWindows();
                    m_program->dialogs().announceBox(u"本データを登録しました。"_s);
                },
            .work =
                [this] {
                    m_program->mainWindow().mnuEntryMain_Click();
                    awaitPainting(contentField());
                    m_painted.forget();
                    DataWindow& datum = definitionWindow();
                    datum.setFieldText(0, u"蒸留水の製法"_s);
                    datum.setFieldText(2, TypedDefinition);
                    control<QAction>(u"frmMainData"_s, u"mnuDataEntry"_s).trigger();
                    awaitPainting(contentField());
                },
            .check =
                [this] {
                    require(control<StatusPanels>(u"frmMainData"_s, u"sbStatus"_s).text(1) ==
                                titles::DisplayMode,
                            "the item was not registered");
                    require(m_painted.contains(contentField()), "the item was not painted");
                }};
}

Task Everyday::typingKey()
{
    return {.name = u"Typing a key into a definition"_s,
            .prepare =
                [this] {
                    closeOtherWindows();
                    m_program->mainWindow().mnuEntryMain_Click();
                    definitionWindow().setFieldText(2, TypedDefinition);
                    contentField().setFocus();
                    settle();
                },
            .work =
                [this] {
                    press(contentField(), Qt::Key_A, u"a"_s);
                    awaitPainting(contentField());
                },
            .check =
                [this] {
                    const auto& field = contentField();
                    require(field.toPlainText().size() == TypedDefinition.size() + 1 &&
                                m_painted.contains(field),
                            "the key was not taken");
                    definitionWindow().setFieldText(2, {}); // an empty window closes without a question
                }};
}

} // namespace quillon::bench

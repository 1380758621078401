#include "bench/everyday.h"

#include "app/base/ports/data_window.h"
#include "app/base/ports/main_window_port.h"
#include "app/base/titles.h"
#include "core/data_records.h"
#include "store/record_set.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"

#include <QAction>
#include <QCheckBox>
#include <QCoreApplication>
#include <QEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

// About one datum in a thousand has it.
const QString SearchedText = u"蒸留水"_s;
const QString Definition = u"水を熱して得た蒸気を冷やし、再び液体にしたもの。不純物をほとんど含まない。\n"_s;

void require(bool holds, const char* what)
{
    if (!holds)
        throw std::runtime_error(what);
}

void press(QWidget& widget, int key, const QString& text)
{
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&widget, &down);
    QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&widget, &up);
}

} // namespace

Everyday::Everyday(const QString& path) : m_path(path), m_program(std::make_unique<QuietProgram>())
{
    m_program->open(m_path);
    const ReportModel& rows = m_program->list().rows();
    constexpr int Wanted = 50;
    constexpr int IdentifierColumn = 2;
    const int definitions = static_cast<int>(session().RsMain->recordCount());
    for (int i = 0; i < Wanted; ++i)
        m_items << rows.text(definitions / Wanted * i, IdentifierColumn).toString();
}

QWidget& Everyday::window(const QString& name)
{
    for (LoadedWindow* loaded : session().windows.loaded()) {
        if (loaded->windowName() == name)
            return dynamic_cast<QWidget&>(*loaded);
    }
    throw std::runtime_error("a window is missing");
}

DataWindow& Everyday::definitionWindow()
{
    return dynamic_cast<DataWindow&>(window(u"frmMainData"_s));
}

template <class Control> Control& Everyday::control(const QString& windowName, const QString& name)
{
    auto* found = window(windowName).findChild<Control*>(name);
    require(found != nullptr, "a control is missing");
    return *found;
}

void Everyday::requireList(const ReportList& list, const char* what)
{
    require(list.rows().rowCount() > 0 && m_painted.contains(list), what);
}

void Everyday::closeOtherWindows()
{
    m_program->closeOtherWindows();
    m_painted.forget();
}

void Everyday::listEverything()
{
    m_program->clickNode(u"DIV"_s);
    closeOtherWindows();
}

Task Everyday::openingAndListing()
{
    return {.name = u"Opening and listing"_s,
            .prepare =
                [this] {
                    m_program.reset();
                    m_program = std::make_unique<QuietProgram>();
                    m_painted.forget();
                },
            .work = [this] { m_program->open(m_path); },
            .check = [this] { requireList(m_program->list(), "the list was not painted"); }};
}

Task Everyday::sorting()
{
    return {.name = u"Sorting by name"_s,
            .prepare = [this] { listEverything(); },
            .work =
                [this] {
                    Q_EMIT m_program->list().horizontalHeader()->sectionClicked(0);
                    QCoreApplication::processEvents();
                },
            .check = [this] { requireList(m_program->list(), "the sorted list was not painted"); }};
}

Task Everyday::buildingTree()
{
    return {.name = u"Building the category tree"_s,
            .prepare = [this] { listEverything(); },
            .work =
                [this] {
                    m_program->mainWindow().rebuildCategoryTree();
                    QCoreApplication::processEvents();
                },
            .check =
                [this] {
                    const KeyedTree& tree = m_program->tree();
                    require(tree.nodes().nodeCount() == LastFixedNode + session().RsCategoryID->recordCount(),
                            "the tree is not whole");
                    require(m_painted.contains(tree), "the tree was not painted");
                }};
}

Task Everyday::listingUncategorised()
{
    return {.name = u"Listing the uncategorised"_s,
            .prepare = [this] { listEverything(); },
            .work =
                [this] {
                    m_program->clickNode(u"M_DIV_NOCATEGORY"_s);
                    QCoreApplication::processEvents();
                },
            .check = [this] { requireList(m_program->list(), "the uncategorised were not listed"); }};
}

Task Everyday::listingNode()
{
    return {.name = u"Listing a category node"_s,
            .prepare = [this] { listEverything(); },
            .work =
                [this] {
                    m_program->clickNode(u"A"_s);
                    QCoreApplication::processEvents();
                },
            .check = [this] { requireList(m_program->list(), "the members were not listed"); }};
}

void Everyday::prepareSearch()
{
    closeOtherWindows();
    m_program->mainWindow().mnuFindName_Click();
    control<QLineEdit>(u"frmFind"_s, u"txtFind"_s).setText(SearchedText);
    for (const QString& kind : {u"chkMain"_s, u"chkRefDoc"_s, u"chkRefFile"_s})
        control<QCheckBox>(u"frmFind"_s, kind).setChecked(true);
    QCoreApplication::processEvents();
    m_painted.forget();
}

void Everyday::search()
{
    control<QPushButton>(u"frmFind"_s, u"cmdFind"_s).click();
    QCoreApplication::processEvents();
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
                    QCoreApplication::processEvents();
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
                    QCoreApplication::processEvents();
                },
            .check =
                [this] {
                    require(definitionWindow().fieldText(1) == m_items[m_nextItem],
                            "another item was opened");
                    require(m_painted.contains(control<QLineEdit>(u"frmMainData"_s, u"txtFields(0)"_s)),
                            "the item was not painted");
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
                    QCoreApplication::processEvents();
                    DataWindow& datum = definitionWindow();
                    datum.setFieldText(0, u"蒸留水の製法"_s);
                    datum.setFieldText(2, Definition);
                    control<QAction>(u"frmMainData"_s, u"mnuDataEntry"_s).trigger();
                    QCoreApplication::processEvents();
                },
            .check =
                [this] {
                    require(definitionWindow().modeText() == titles::DisplayMode,
                            "the item was not registered");
                    require(m_painted.contains(control<QLineEdit>(u"frmMainData"_s, u"txtFields(0)"_s)),
                            "the item was not painted");
                }};
}

Task Everyday::typingKey()
{
    return {.name = u"Typing a key into a definition"_s,
            .prepare =
                [this] {
                    closeOtherWindows();
                    m_program->mainWindow().mnuEntryMain_Click();
                    definitionWindow().setFieldText(2, Definition);
                    control<QPlainTextEdit>(u"frmMainData"_s, u"txtFields(2)"_s).setFocus();
                    QCoreApplication::processEvents();
                    m_painted.forget();
                },
            .work =
                [this] {
                    press(control<QPlainTextEdit>(u"frmMainData"_s, u"txtFields(2)"_s), Qt::Key_A, u"a"_s);
                    QCoreApplication::processEvents();
                },
            .check =
                [this] {
                    const auto& field = control<QPlainTextEdit>(u"frmMainData"_s, u"txtFields(2)"_s);
                    require(field.toPlainText().size() == Definition.size() + 1 && m_painted.contains(field),
                            "the key was not taken");
                    definitionWindow().setFieldText(2, {}); // an empty window closes without a question
                }};
}

} // namespace quillon::bench

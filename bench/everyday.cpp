#include "bench/everyday.h"

#include "app/base/ports/data_window.h"
#include "app/base/ports/main_window_port.h"
#include "store/record_set.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"

#include <QCoreApplication>
#include <QHeaderView>
#include <QPlainTextEdit>
#include <QProgressBar>

#include <stdexcept>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

Everyday::Everyday(QString path) : m_path(std::move(path)), m_program(std::make_unique<QuietProgram>())
{
    m_program->open(m_path);
    const ReportModel& rows = m_program->list().rows();
    constexpr int Wanted = 50;
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

QPlainTextEdit& Everyday::contentField()
{
    return control<QPlainTextEdit>(u"frmMainData"_s, u"txtFields(2)"_s);
}

void Everyday::require(bool holds, const char* what)
{
    if (!holds)
        throw std::runtime_error(what);
}

void Everyday::requireList(const ReportList& list, const char* what)
{
    require(list.rows().rowCount() > 0 && m_painted.contains(list), what);
}

void Everyday::settle()
{
    // What one event puts off, such as laying out and then painting a list, comes with the next turns.
    constexpr int Turns = 10;
    for (int turn = 0; turn < Turns; ++turn)
        QCoreApplication::processEvents();
    m_painted.forget();
}

void Everyday::awaitPainting(const QWidget& widget)
{
    constexpr int MostTurns = 100;
    for (int turn = 0; turn < MostTurns && !m_painted.contains(widget); ++turn)
        QCoreApplication::processEvents();
}

void Everyday::closeOtherWindows()
{
    m_program->closeOtherWindows();
    settle();
}

void Everyday::listEverything()
{
    m_program->clickNode(u"DIV"_s);
    closeOtherWindows();
}

void Everyday::hideProgress()
{
    if (auto* bar = m_program->mainWindow().findChild<QProgressBar*>(u"pgbMain"_s))
        bar->setParent(&m_hidden);
    settle();
}

Task Everyday::openingAndListing()
{
    return {.name = u"Opening and listing"_s,
            .prepare =
                [this] {
                    m_program.reset();
                    m_program = std::make_unique<QuietProgram>();
                    settle();
                },
            .work =
                [this] {
                    m_program->open(m_path);
                    awaitPainting(m_program->list());
                },
            .check = [this] { requireList(m_program->list(), "the list was not painted"); }};
}

Task Everyday::sorting()
{
    return {.name = u"Sorting by name"_s,
            .prepare = [this] { listEverything(); },
            .work =
                [this] {
                    Q_EMIT m_program->list().horizontalHeader()->sectionClicked(0);
                    awaitPainting(m_program->list());
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
                    awaitPainting(m_program->tree());
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
                    awaitPainting(m_program->list());
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
                    awaitPainting(m_program->list());
                },
            .check = [this] { requireList(m_program->list(), "the members were not listed"); }};
}

} // namespace quillon::bench

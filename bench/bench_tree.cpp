#include "app/base/ports/main_window_port.h"
#include "bench/bare_database.h"
#include "bench/corpora.h"
#include "bench/pair.h"
#include "bench/quiet_program.h"
#include "store/session.h"
#include "ui/main/category_tree.h"
#include "ui/main/fill_progress.h"
#include "ui/widgets/keyed_tree.h"

#include <QCoreApplication>
#include <QProgressBar>

#include <stdexcept>

namespace quillon::bench
{

namespace
{

/// A tree on the screen and the categories of a corpus.
class TreeBuild
{
public:
    TreeBuild(Corpus corpus, int categories)
        : m_categories(categories), m_progress(m_bar, m_program.session().clock)
    {
        m_program.open(corpusPath(corpus), false);
        m_tree.resize(300, 600);
        m_tree.show();
        QCoreApplication::processEvents();
    }

    void run()
    {
        BuildCategoryTree(m_program.session(), m_tree, m_progress);
        if (m_tree.nodes().nodeCount() != LastFixedNode + m_categories)
            throw std::runtime_error("the tree is not whole");
    }

private:
    int m_categories;
    QuietProgram m_program;
    KeyedTree m_tree;
    QProgressBar m_bar;
    FillProgress m_progress;
};

void buildTree(benchmark::State& state, const RowText& text, Corpus corpus, int categories)
{
    TreeBuild build(corpus, categories);
    const QString path = corpusPath(corpus);
    measure(state, text,
            {.prepare = {},
             .operation = [&] { build.run(); },
             .prepareFloor = {},
             .floor =
                 [&] {
                     const BareDatabase database(path);
                     BareStatement statement(database, "SELECT Category_ID, Name FROM Category_ID");
                     readAll(statement, 2);
                 }});
}

void tree2000(benchmark::State& state)
{
    buildTree(state, {"Building the category tree, 2,000 categories", "reading their rows"}, Corpus::Default,
              2'000);
}
BENCHMARK(tree2000)->UseManualTime()->Iterations(31);

void tree5000(benchmark::State& state)
{
    buildTree(state, {"Building the category tree, 5,000 categories", "reading their rows"},
              Corpus::Categories5000, 5'000);
}
BENCHMARK(tree5000)->UseManualTime()->Iterations(31);

void tree50000(benchmark::State& state)
{
    buildTree(state, {"Building the category tree, 50,000 categories", "reading their rows", 10},
              Corpus::Categories50000, 50'000);
}
BENCHMARK(tree50000)->UseManualTime()->Iterations(21);

void treeGrowth(benchmark::State& state)
{
    TreeBuild large(Corpus::Categories50000, 50'000);
    TreeBuild small(Corpus::Categories5000, 5'000);
    measure(state, {"Building the category tree, 50,000 categories", "building it, 5,000 categories", 12},
            {.prepare = {},
             .operation = [&] { large.run(); },
             .prepareFloor = {},
             .floor = [&] { small.run(); }});
}
BENCHMARK(treeGrowth)->UseManualTime()->Iterations(31);

} // namespace

} // namespace quillon::bench

#include "bench/bare_database.h"
#include "bench/corpora.h"
#include "bench/pair.h"
#include "bench/quiet_program.h"
#include "ui/widgets/report_list.h"

#include <QHash>

#include <cstdlib>
#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

constexpr int WantedMembers = 13'000;

// A part per kind, direct members and those of subcategories.
constexpr const char* MembersOfNode =
    "SELECT d.Name, c.Object_ID FROM Category c JOIN Main d ON d.Object_ID = c.Object_ID "
    "WHERE c.Category_ID = ?1 AND c.Object_ID >= 'M-' AND c.Object_ID < 'M.' UNION ALL "
    "SELECT d.Name, c.Object_ID FROM Category c JOIN RefDoc d ON d.Object_ID = c.Object_ID "
    "WHERE c.Category_ID = ?1 AND c.Object_ID >= 'R-' AND c.Object_ID < 'R.' UNION ALL "
    "SELECT d.Name, c.Object_ID FROM Category c JOIN RefFile d ON d.Object_ID = c.Object_ID "
    "WHERE c.Category_ID = ?1 AND c.Object_ID >= 'F-' AND c.Object_ID < 'F.' UNION ALL "
    "SELECT d.Name, c.Object_ID FROM Category c JOIN Main d ON d.Object_ID = c.Object_ID "
    "WHERE c.Category_ID > ?2 AND c.Category_ID < ?3 AND c.Object_ID >= 'M-' AND c.Object_ID < 'M.' UNION ALL "
    "SELECT d.Name, c.Object_ID FROM Category c JOIN RefDoc d ON d.Object_ID = c.Object_ID "
    "WHERE c.Category_ID > ?2 AND c.Category_ID < ?3 AND c.Object_ID >= 'R-' AND c.Object_ID < 'R.' UNION ALL "
    "SELECT d.Name, c.Object_ID FROM Category c JOIN RefFile d ON d.Object_ID = c.Object_ID "
    "WHERE c.Category_ID > ?2 AND c.Category_ID < ?3 AND c.Object_ID >= 'F-' AND c.Object_ID < 'F.'";

/// The category whose node lists about as many members as wanted.
QString categoryWithMembers(const BareDatabase& database)
{
    QHash<QString, int> members; // those of subcategories included
    BareStatement memberships(database, "SELECT Category_ID FROM Category");
    while (memberships.step()) {
        QString category = memberships.text(0).toString();
        for (; !category.isEmpty(); category.chop(2)) {
            ++members[category];
            if (category.size() == 1)
                break;
        }
    }
    QString best;
    for (auto each = members.cbegin(); each != members.cend(); ++each) {
        const int distance = std::abs(each.value() - WantedMembers);
        const int bestDistance = std::abs(members.value(best) - WantedMembers);
        if (distance < bestDistance || (distance == bestDistance && each.key() < best))
            best = each.key();
    }
    return best;
}

void uncategorised(benchmark::State& state)
{
    QuietProgram program;
    program.open(corpusPath(Corpus::Default));
    const BareDatabase database(corpusPath(Corpus::Default));
    BareStatement names(database, "SELECT Name FROM Main");
    measure(state,
            {"Listing the uncategorised of 100,000 items, 120,000 memberships", "SELECT of the names", 3},
            {.prepare = {},
             .operation = [&] { program.clickNode(u"M_DIV_NOCATEGORY"_s); },
             .prepareFloor = {},
             .floor = [&] { readAll(names, 1); }});
}
BENCHMARK(uncategorised)->UseManualTime()->Iterations(21);

void categoryNode(benchmark::State& state)
{
    QuietProgram program;
    program.open(corpusPath(Corpus::Default));
    const BareDatabase database(corpusPath(Corpus::Default));
    const QString category = categoryWithMembers(database);
    BareStatement members(database, MembersOfNode);
    members.bind(1, category);
    members.bind(2, category + u'-');
    members.bind(3, category + u'.'); // the character after the hyphen
    program.clickNode(category);
    const int rows = program.list().rows().rowCount();
    if (rows != readAll(members, 2)) {
        state.SkipWithError("the node and the SELECT differ");
        return;
    }
    const std::string text = "Listing a category node with " + std::to_string(rows) + " members";
    measure(state, {text.c_str(), "SELECT with a join", 2},
            {.prepare = {},
             .operation = [&] { program.clickNode(category); },
             .prepareFloor = {},
             .floor = [&] { readAll(members, 2); }});
}
BENCHMARK(categoryNode)->UseManualTime()->Iterations(31);

} // namespace

} // namespace quillon::bench

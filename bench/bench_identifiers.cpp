#include "bench/bare_database.h"
#include "bench/corpora.h"
#include "bench/pair.h"
#include "bench/quiet_program.h"
#include "store/identifiers.h"
#include "store/record_set.h"
#include "store/session.h"

#include <stdexcept>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

/// Identifiers from all over the table, in no order.
std::vector<QString> someIdentifiers(const BareDatabase& database, std::size_t count)
{
    std::vector<QString> all;
    BareStatement statement(database, "SELECT Object_ID FROM Main");
    while (statement.step())
        all.push_back(statement.text(0).toString());
    std::vector<QString> some;
    constexpr std::size_t Stride = 61'803; // walks through the whole table without coming back soon
    for (std::size_t i = 0; i < count; ++i)
        some.push_back(all[i * Stride % all.size()]);
    return some;
}

void findFirst(benchmark::State& state)
{
    QuietProgram program;
    program.open(corpusPath(Corpus::Default));
    RecordSet& definitions = *program.session().RsMain;
    const BareDatabase database(corpusPath(Corpus::Default));
    constexpr std::size_t Searches = 1'000;
    const std::vector<QString> identifiers = someIdentifiers(database, Searches);
    BareStatement search(database, "SELECT rowid FROM Main WHERE Object_ID = ?");
    measure(state, {"FindFirst by identifier, 1,000 times", "a prepared SELECT of the row number"},
            {.prepare = {},
             .operation =
                 [&] {
                     for (const QString& identifier : identifiers) {
                         definitions.findFirst(u"Object_ID ='"_s + identifier + u"'"_s);
                         if (!definitions.hasCurrentRow())
                             throw std::runtime_error("an identifier was not found");
                     }
                 },
             .prepareFloor = {},
             .floor =
                 [&] {
                     for (const QString& identifier : identifiers) {
                         search.bind(1, identifier);
                         if (!search.step())
                             throw std::runtime_error("an identifier was not found");
                         search.reset();
                     }
                 }});
}
BENCHMARK(findFirst)->UseManualTime()->Iterations(31);

void createIdentifier(benchmark::State& state)
{
    QuietProgram program;
    program.open(corpusPath(Corpus::Default));
    const BareDatabase database(corpusPath(Corpus::Default));
    BareStatement last(database, "SELECT Object_ID FROM Main ORDER BY rowid DESC LIMIT 1");
    last.step();
    const QString day = last.text(0).left(9).toString();
    last.reset();
    program.clock.time = QDateTime(QDate::fromString(u"20"_s + day.mid(2, 6), u"yyyyMMdd"_s), QTime(12, 0));

    constexpr int Calls = 20;
    BareStatement taken(database, "SELECT Object_ID FROM Main WHERE Object_ID >= ?1 AND Object_ID < ?2");
    taken.bind(1, day);
    taken.bind(2, day.chopped(1) + u'.');
    if (readAll(taken, 1) != 998) {
        state.SkipWithError("the corpus lacks the full day");
        return;
    }
    measure(state,
            {"CreateObject_ID on a day with 998 numbers taken, 20 times", "one prepared range query each"},
            {.prepare = {},
             .operation =
                 [&] {
                     for (int i = 0; i < Calls; ++i) {
                         if (CreateObject_ID(program.session(), u"M"_s) != day + u"999"_s)
                             throw std::runtime_error("not the one free identifier");
                     }
                 },
             .prepareFloor = {},
             .floor =
                 [&] {
                     for (int i = 0; i < Calls; ++i)
                         readAll(taken, 1);
                 }});
}
BENCHMARK(createIdentifier)->UseManualTime()->Iterations(31);

} // namespace

} // namespace quillon::bench

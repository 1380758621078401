#include "bench/corpora.h"
#include "bench/pair.h"
#include "bench/quiet_program.h"
#include "ui/widgets/report_list.h"

#include <QHeaderView>
#include <QtEndian>

#include <unicode/ucol.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace quillon::bench
{

namespace
{

void click(QuietProgram& program, int column)
{
    Q_EMIT program.list().horizontalHeader()->sectionClicked(column);
}

std::vector<QString> namesOf(QuietProgram& program)
{
    std::vector<QString> names;
    const ReportModel& rows = program.list().rows();
    for (int row = 0; row < rows.rowCount(); ++row)
        names.push_back(rows.text(row, NameColumn).toString());
    return names;
}

/// Collation keys of all texts, sorted by their first eight bytes and, where these are the same, by the rest.
std::vector<quint32> sortedByKeys(const std::vector<QString>& texts)
{
    UErrorCode status = U_ZERO_ERROR;
    UCollator* collator = ucol_open("ja", &status);
    if (U_FAILURE(status))
        throw std::runtime_error("there is no Japanese collation");
    struct Entry {
        quint64 prefix;
        quint32 start;
        quint32 length;
        quint32 row;
    };
    std::vector<Entry> entries;
    entries.reserve(texts.size());
    std::vector<quint8> keys(texts.size() * 64);
    std::size_t used = 0;
    for (const QString& text : texts) {
        const auto makeKey = [&] {
            return static_cast<std::size_t>(
                ucol_getSortKey(collator, reinterpret_cast<const UChar*>(text.utf16()),
                                static_cast<int32_t>(text.size()), keys.data() + used,
                                static_cast<int32_t>(std::min(keys.size() - used, std::size_t(1) << 20U))));
        };
        std::size_t length = makeKey();
        if (length > keys.size() - used) {
            keys.resize(keys.size() * 2 + length);
            length = makeKey();
        }
        std::array<quint8, sizeof(quint64)> prefix = {};
        std::memcpy(prefix.data(), keys.data() + used, std::min(length, prefix.size()));
        entries.push_back({qFromBigEndian<quint64>(prefix.data()), static_cast<quint32>(used),
                           static_cast<quint32>(length), static_cast<quint32>(entries.size())});
        used += length;
    }
    ucol_close(collator);
    std::sort(entries.begin(), entries.end(), [&keys](const Entry& left, const Entry& right) {
        if (left.prefix != right.prefix)
            return left.prefix < right.prefix;
        const int order = std::memcmp(keys.data() + left.start, keys.data() + right.start,
                                      std::min(left.length, right.length));
        return order != 0 ? order < 0 : left.row < right.row;
    });
    std::vector<quint32> order;
    order.reserve(entries.size());
    for (const Entry& entry : entries)
        order.push_back(entry.row);
    return order;
}

void firstSort(benchmark::State& state)
{
    QuietProgram program;
    const QString path = corpusPath(Corpus::Default);
    program.open(path);
    const std::vector<QString> names = namesOf(program);
    std::vector<quint32> order;
    measure(state,
            {"Sorting 125,000 rows by name, first click",
             "making and sorting the collation keys of the names", 1.3},
            {.prepare = [&] { program.open(path); },
             .operation = [&] { click(program, NameColumn); },
             .prepareFloor = {},
             .floor = [&] { order = sortedByKeys(names); }});
    // Both sides must have come to the same order.
    for (std::size_t row = 0; row < order.size(); ++row) {
        if (program.list().rows().text(static_cast<int>(row), NameColumn) != names[order[row]]) {
            state.SkipWithError("the orders differ");
            return;
        }
    }
}
BENCHMARK(firstSort)->UseManualTime()->Iterations(15);

void laterSort(benchmark::State& state)
{
    QuietProgram program;
    const QString path = corpusPath(Corpus::Default);
    const auto freshList = [&] { program.open(path); };
    measure(state, {"Sorting them by another column and by name again", "the first click on the name", 0.1},
            {.prepare =
                 [&] {
                     freshList();
                     click(program, NameColumn);
                     click(program, IdentifierColumn);
                     click(program, NameColumn);
                 },
             .operation =
                 [&] {
                     click(program, IdentifierColumn);
                     click(program, NameColumn);
                 },
             .prepareFloor = freshList,
             .floor = [&] { click(program, NameColumn); }});
}
BENCHMARK(laterSort)->UseManualTime()->Iterations(15);

} // namespace

} // namespace quillon::bench

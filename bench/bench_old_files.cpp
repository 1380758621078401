#include "bench/pair.h"
#include "store/old_format/old_database.h"
#include "tests/old_files/old_file_writer.h"

#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

constexpr int Rows = 100'000;
constexpr double LeastRowsPerSecond = 50'000;

QByteArray fileOfRows(int format)
{
    auto tables = testing::oldTables();
    for (int i = 0; i < Rows; ++i)
        tables[0].rows.push_back({u"項目その%1"_s.arg(i),
                                  u"M-%1-%2"_s.arg(100'000 + i / 999).arg(i % 999 + 1, 3, 10, QChar(u'0')),
                                  u"これは定義の文です。知識を集めて整理するための短い説明を書きます。"_s});
    return testing::writeOldFile(tables, {.format = format}).bytes;
}

/// The same file with a byte changed in every page behind the definitions.
QByteArray damagedFile(int format)
{
    QByteArray file = fileOfRows(format);
    const qsizetype pageSize = format == 3 ? 2048 : 4096;
    for (qsizetype page = 30 * pageSize; page + pageSize <= file.size(); page += pageSize) {
        const qsizetype at = page + page * 7 / 11 % pageSize;
        file[at] = static_cast<char>(file[at] ^ 0x55);
    }
    return file;
}

void readRows(const QByteArray& file)
{
    old_format::OldDatabase database(file);
    int rows = 0;
    for (const QString& name : database.tableNames()) {
        const auto definition = database.table(name);
        database.forEachRow(name, definition.value(),
                            [&rows](const old_format::OldDatabase::Row&, bool) { ++rows; });
    }
    if (rows != Rows || database.losses().count() != 0)
        throw std::runtime_error("the rows are not those of the file");
}

void readOldFile(benchmark::State& state, const RowText& text, int format)
{
    const QByteArray file = fileOfRows(format);
    reportFailures(state, [&] {
        std::vector<double> times;
        for ([[maybe_unused]] auto round : state) {
            times.push_back(secondsFor([&] { readRows(file); }));
            state.SetIterationTime(times.back());
        }
        reportTimes(state, text, fastest(times), Rows / LeastRowsPerSecond);
    });
}

void oldFileOfFormat3(benchmark::State& state)
{
    readOldFile(state,
                {"Reading a file of the older engine, format 3, 100,000 rows",
                 "the time that 50,000 rows a second take", 1},
                3);
}
BENCHMARK(oldFileOfFormat3)->UseManualTime()->Iterations(7);

void oldFileOfFormat4(benchmark::State& state)
{
    readOldFile(state, {"The same, format 4", "the same time", 1}, 4);
}
BENCHMARK(oldFileOfFormat4)->UseManualTime()->Iterations(7);

void damagedOldFile(benchmark::State& state)
{
    const QByteArray file = damagedFile(4);
    reportFailures(state, [&] {
        std::vector<double> times;
        for ([[maybe_unused]] auto round : state) {
            times.push_back(secondsFor([&] {
                old_format::OldDatabase database(file);
                for (const QString& name : database.tableNames()) {
                    if (const auto definition = database.table(name))
                        database.forEachRow(name, *definition,
                                            [](const old_format::OldDatabase::Row&, bool) {});
                }
                if (database.losses().count() == 0)
                    throw std::runtime_error("no damage is told");
            }));
            state.SetIterationTime(times.back());
        }
        reportTimes(state, {"The same file with a byte changed in every page", "a second", 1}, fastest(times),
                    1);
    });
}
BENCHMARK(damagedOldFile)->UseManualTime()->Iterations(7);

} // namespace

} // namespace quillon::bench

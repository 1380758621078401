#include "bench/pair.h"

#include "app/base/error.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <string>

namespace quillon::bench
{

namespace
{

double preparedSecondsFor(const std::function<void()>& prepare, const std::function<void()>& work)
{
    if (prepare)
        prepare();
    return secondsFor(work);
}

} // namespace

double secondsFor(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

double fastest(const std::vector<double>& times)
{
    return *std::min_element(times.begin(), times.end());
}

void reportFailures(benchmark::State& state, const std::function<void()>& benchmark)
{
    try {
        benchmark();
    } catch (const Error& error) {
        state.SkipWithError(qPrintable(error.description));
    } catch (const std::exception& error) {
        state.SkipWithError(error.what());
    }
}

void measure(benchmark::State& state, const RowText& text, const Pair& pair)
{
    reportFailures(state, [&] {
        std::vector<double> operations;
        std::vector<double> floors;
        // The first round fills the caches of both sides and does not count.
        preparedSecondsFor(pair.prepareFloor, pair.floor);
        preparedSecondsFor(pair.prepare, pair.operation);
        for ([[maybe_unused]] auto round : state) {
            const bool floorFirst = operations.size() % 2 == 1;
            if (floorFirst)
                floors.push_back(preparedSecondsFor(pair.prepareFloor, pair.floor));
            operations.push_back(preparedSecondsFor(pair.prepare, pair.operation));
            if (!floorFirst)
                floors.push_back(preparedSecondsFor(pair.prepareFloor, pair.floor));
            state.SetIterationTime(operations.back());
        }
        reportTimes(state, text, fastest(operations), fastest(floors));
        state.counters["medians"] = median(operations) / median(floors);
    });
}

void reportTimes(benchmark::State& state, const RowText& text, double operation, double floor)
{
    state.SetLabel(std::string(text.operation) + '|' + text.floor);
    state.counters["operation"] = operation;
    state.counters["floor"] = floor;
    state.counters["ratio"] = operation / floor;
    state.counters["figure"] = text.figure;
}

void reportBytes(benchmark::State& state, const RowText& text, double operation, double floor)
{
    for ([[maybe_unused]] auto round : state)
        state.SetIterationTime(0);
    reportTimes(state, text, operation, floor);
    state.counters["bytes"] = 1;
}

} // namespace quillon::bench

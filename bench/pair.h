#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <vector>

namespace quillon::bench
{

/// An operation of the program and its floor: the least work with which the same could be done.
struct Pair {
    std::function<void()> prepare; // before each operation, not measured
    std::function<void()> operation;
    std::function<void()> prepareFloor; // before each floor, not measured
    std::function<void()> floor;
};

/// One row of the table of results.
struct RowText {
    const char* operation = nullptr;
    const char* floor = nullptr;
    double figure = 0; // what the ratio has to stay at or below; 0: nothing is asked
};

/// Measures both sides in turn, each going first every other time, and reports the fastest round of each and their
/// ratio, as well as the ratio of the medians. An exception ends the benchmark as a failed one.
void measure(benchmark::State& state, const RowText& text, const Pair& pair);

/// Seconds that `work` takes.
double secondsFor(const std::function<void()>& work);
double median(std::vector<double> values);
/// The least of several times of the same work: what else goes on in the computer can only add to a time.
double fastest(const std::vector<double>& times);
/// Reports two times that were measured otherwise, such as medians over several searches.
void reportTimes(benchmark::State& state, const RowText& text, double operation, double floor);
/// Runs a benchmark that measures by itself; an exception ends it as a failed one.
void reportFailures(benchmark::State& state, const std::function<void()>& benchmark);

/// Reports a ratio that needs no repetition, such as that of two sizes in bytes.
void reportBytes(benchmark::State& state, const RowText& text, double operation, double floor);

} // namespace quillon::bench

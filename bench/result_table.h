#pragma once

#include <benchmark/benchmark.h>

#include <QString>

#include <vector>

namespace quillon::bench
{

/// Prints one line per benchmark as it ends, and keeps the rows for the table in the documentation.
class ResultTable : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;

    /// Writes the rows as a Markdown table; false when the file cannot be written.
    bool write(const QString& path) const;
    /// How many benchmarks could not be measured.
    int failures() const { return m_failures; }

private:
    std::vector<QString> m_rows;
    int m_failures = 0;
};

} // namespace quillon::bench

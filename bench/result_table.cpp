#include "bench/result_table.h"

#include <QFile>

#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

QString ratioText(double ratio)
{
    return QString::number(ratio, 'f', ratio < 0.1 ? 3 : 2);
}

QString amount(double value, bool bytes)
{
    if (bytes)
        return u"%1 MB"_s.arg(value / 1e6, 0, 'f', 1);
    const double milliseconds = value * 1e3;
    if (milliseconds < 0.1)
        return u"%1 µs"_s.arg(milliseconds * 1e3, 0, 'f', 1);
    return u"%1 ms"_s.arg(milliseconds, 0, 'f', milliseconds < 10 ? 2 : 0);
}

} // namespace

bool ResultTable::ReportContext(const Context&)
{
    return true;
}

void ResultTable::ReportRuns(const std::vector<Run>& runs)
{
    for (const Run& run : runs) {
        if (run.run_type == Run::RT_Aggregate)
            continue;
        if (run.error_occurred) {
            ++m_failures;
            std::printf("FAIL  %s: %s\n", run.run_name.function_name.c_str(), run.error_message.c_str());
            std::fflush(stdout);
            continue;
        }
        const auto counter = [&run](const char* name) {
            const auto found = run.counters.find(name);
            return found == run.counters.end() ? 0.0 : found->second.value;
        };
        const QString label = QString::fromStdString(run.report_label);
        const double ratio = counter("ratio");
        const double figure = counter("figure");
        const bool bytes = counter("bytes") > 0;
        const QString verdict = figure > 0 ? (ratio <= figure ? u"met"_s : u"miss"_s) : u"–"_s;
        const QString goal = figure > 0 ? QString::number(figure) : u"–"_s;
        const QString operation = label.section(u'|', 0, 0);
        const QString floor = label.section(u'|', 1, 1);
        const QString measured = ratioText(ratio);
        const QString medians = counter("medians") > 0 ? ratioText(counter("medians")) : u"–"_s;
        std::printf("%-4s  ratio %7s (medians %7s)  to reach %-4s  %s: %s, against %s: %s\n",
                    qPrintable(verdict), qPrintable(measured), qPrintable(medians), qPrintable(goal),
                    qPrintable(operation), qPrintable(amount(counter("operation"), bytes)), qPrintable(floor),
                    qPrintable(amount(counter("floor"), bytes)));
        std::fflush(stdout);
        m_rows.push_back(u"| %1 | %2 | %3 | %4 | %5 | %6 | %7 | %8 |"_s.arg(
            operation, amount(counter("operation"), bytes), floor, amount(counter("floor"), bytes), measured,
            medians, goal, verdict));
    }
}

bool ResultTable::write(const QString& path) const
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    QString text = u"| Operation | Measured | Floor | Measured | Ratio | Of medians | To reach | |\n"
                   u"|---|---:|---|---:|---:|---:|---:|---|\n"_s;
    for (const QString& row : m_rows)
        text += row + u'\n';
    return file.write(text.toUtf8()) >= 0;
}

} // namespace quillon::bench

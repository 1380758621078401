#include "ui/widgets/column_widths.h"

#include "ui/widgets/one_line_delegate.h"
#include "ui/widgets/report_model.h"

#include <QFontMetrics>
#include <QLocale>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

namespace quillon
{

namespace
{

/// About how wide a text is, in half-width characters.
int halfWidths(QStringView text)
{
    constexpr char16_t FirstWide = 0x1100; // from here on most are full-width ones
    const auto wide = std::count_if(text.begin(), text.end(), [](QChar unit) {
        const char16_t code = unit.unicode();
        return code >= FirstWide && !(code >= 0xFF61 && code <= 0xFF9F);
    });
    return static_cast<int>(text.size() + wide);
}

} // namespace

int widthOfTexts(const ReportModel& rows, int column, const QFontMetrics& metrics)
{
    // Measuring costs a hundred times what counting does: only those that can be the widest are measured.
    constexpr std::size_t Measured = 300;
    std::vector<std::pair<int, int>> candidates; // width in characters, row
    const auto keepTheWidest = [&] {
        if (candidates.size() <= Measured)
            return;
        std::nth_element(candidates.begin(), candidates.begin() + Measured, candidates.end(),
                         std::greater<>());
        candidates.resize(Measured);
    };
    for (int row = 0; row < rows.rowCount(); ++row) {
        candidates.emplace_back(halfWidths(rows.text(row, column)), row);
        if (candidates.size() == 2 * Measured)
            keepTheWidest();
    }
    keepTheWidest();
    const OneLineDelegate delegate;
    int widest = 0;
    for (const auto& [length, row] : candidates) {
        const QString shown = delegate.displayText(rows.text(row, column).toString(), QLocale());
        widest = std::max(widest, metrics.horizontalAdvance(shown));
    }
    return widest;
}

} // namespace quillon

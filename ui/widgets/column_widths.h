#pragma once

class QFontMetrics;

namespace quillon
{

class ReportModel;

/// The width in pixels of the widest text in a column, of all rows however many there are.
int widthOfTexts(const ReportModel& rows, int column, const QFontMetrics& metrics);

} // namespace quillon

#pragma once

#include "exchange/report.h"

#include <QStringList>

namespace quillon::testing
{

/// The notes of a report, a line each.
template <class Report> QString textsOf(const Report& report)
{
    QStringList lines;
    for (const exchange::Note& note : report.notes)
        lines << note.where + QStringLiteral(": ") + note.text;
    return lines.join(u'\n');
}

} // namespace quillon::testing

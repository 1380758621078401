#pragma once

#include "app/base/error.h"
#include "app/base/ports/dialogs.h"
#include "tests/support/call_log.h"

namespace quillon::testing
{

/// The box in which the reporter tells about a failure of `location`.
inline MessageBox failureBox(const QString& location, const QString& description)
{
    return {.text = QStringLiteral("対処不能なエラーが発生しました。\r\nLOCATION : ") + location +
                    QStringLiteral("\r\nEXPLANATION : ") + description,
            .title = QStringLiteral("Quillon 障害対策部")};
}
inline MessageBox failureBox(const QString& location, qint32 number)
{
    return failureBox(location, standardDescription(number));
}

/// The box of the last resort: what an untrapped failure shows.
inline MessageBox untrapped(const QString& description)
{
    return {.text = QStringLiteral("対処不能なエラーが発生しました。\r\n説明：") + description,
            .title = QStringLiteral("Quillon 障害対策部")};
}
inline MessageBox untrapped(qint32 number)
{
    return untrapped(standardDescription(number));
}

/// What the reporter does about a failure of `location`, as a call log shows it while the clock of the tests stands still.
inline QStringList failureCalls(const QString& location, qint32 number)
{
    return {messageBoxCall(failureBox(location, number).text),
            QStringLiteral("log 1999/12/31, 23:45, LOCATION : %1, ErrorNumber : %2, DESCRIPTION : ")
                    .arg(location)
                    .arg(number) +
                standardDescription(number)};
}

} // namespace quillon::testing

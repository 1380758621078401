#pragma once

#include "app/base/error.h"
#include "app/base/ports/dialogs.h"

namespace quillon::testing
{

/// The box in which the reporter tells about a failure of `location`.
inline MessageBox failureBox(const QString& location, qint32 number)
{
    return {.text = QStringLiteral("対処不能なエラーが発生しました。\r\nLOCATION : ") + location +
                    QStringLiteral("\r\nEXPLANATION : ") + standardDescription(number),
            .title = QStringLiteral("Quillon 障害対策部")};
}

} // namespace quillon::testing

#pragma once

#include <QString>
#include <QStringView>

namespace quillon::testing
{

/// Compares two texts to the last character; a failure prints both and the first character that differs.
/// Use it as QVERIFY(compareText(actual, expected)).
bool compareText(QStringView actual, QStringView expected);

} // namespace quillon::testing

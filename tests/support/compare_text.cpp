#include "tests/support/compare_text.h"

#include <QDebug>

#include <algorithm>

namespace quillon::testing
{

bool compareText(QStringView actual, QStringView expected)
{
    if (actual == expected)
        return true;
    const auto shorter = std::min(actual.size(), expected.size());
    qsizetype at = 0;
    while (at < shorter && actual[at] == expected[at])
        ++at;
    const auto code = [at](QStringView text) {
        return at < text.size() ? QString::number(text[at].unicode(), 16) : QStringLiteral("end");
    };
    qWarning().noquote() << "actual:  " << actual.toString() << "\nexpected:" << expected.toString()
                         << "\nthey differ at character" << at << ":" << code(actual) << "against"
                         << code(expected);
    return false;
}

} // namespace quillon::testing

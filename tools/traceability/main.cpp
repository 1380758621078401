// Writes docs/traceability.md; with `--check` tells instead what is wrong with it.
#include "tools/traceability/traceability.h"

#include <QFile>
#include <QSet>

#include <cstdio>

using namespace Qt::Literals::StringLiterals;
using namespace quillon::traceability;

namespace
{

/// Tells the first lines of one document that another one lacks.
void tellLines(const QString& document, const QString& other, QChar sign)
{
    const QStringList present = other.split(u'\n');
    const QSet<QString> known(present.begin(), present.end());
    QStringList lines = document.split(u'\n');
    lines.removeIf([&](const QString& line) { return known.contains(line); });
    for (const QString& line : lines.first(std::min<qsizetype>(lines.size(), 20)))
        std::fprintf(stderr, "%s\n", qUtf8Printable(sign + line));
}

} // namespace

int main(int argc, char** argv)
{
    const bool check = argc == 2 && qstrcmp(argv[1], "--check") == 0;
    if (argc > 1 && !check) {
        std::fputs("usage: quillon-traceability [--check]\n", stderr);
        return 2;
    }
    const QString root = QString::fromUtf8(QUILLON_SOURCES);
    const Findings findings = findingsIn(root);
    const QString document = documentOf(findings);
    QFile file(root + u"/docs/traceability.md"_s);
    bool right = true;
    if (check) {
        file.open(QIODevice::ReadOnly);
        const QString present = QString::fromUtf8(file.readAll()).remove(u'\r');
        if (present != document) {
            right = false;
            std::fputs("docs/traceability.md is out of date, run quillon-traceability:\n", stderr);
            tellLines(present, document, u'-');
            tellLines(document, present, u'+');
        }
    } else {
        right = file.open(QIODevice::WriteOnly) && file.write(document.toUtf8()) > 0 && file.flush();
        if (!right)
            std::fprintf(stderr, "docs/traceability.md: %s\n", qUtf8Printable(file.errorString()));
    }
    const QString untested = untestedMessages(findings);
    if (!untested.isEmpty())
        std::fprintf(stderr, "no test asserts these texts:\n%s", qUtf8Printable(untested));
    return right && (!check || untested.isEmpty()) ? 0 : 1;
}

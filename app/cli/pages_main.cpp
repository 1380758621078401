// Writes the manual pages and the completions into the folder that it is given, as they are to be installed.
#include "app/base/platform/command_line.h"
#include "app/cli/completions.h"
#include "app/cli/man_page.h"

#include <QDir>
#include <QFile>

#include <cstdio>

using namespace Qt::Literals::StringLiterals;
using namespace quillon::cli;

namespace
{

bool writeFile(const QString& path, const QString& text)
{
    QFile file(path);
    const QByteArray bytes = text.toUtf8();
    if (QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
        file.write(bytes) == bytes.size() && file.flush())
        return true;
    std::fprintf(stderr, "%s: %s\n", qUtf8Printable(path), qUtf8Printable(file.errorString()));
    return false;
}

} // namespace

int main(int argc, char** argv)
{
    const QStringList words = quillon::platform::arguments(argc, argv);
    if (words.size() != 2) {
        std::fputs("usage: quillon-cli-pages FOLDER\n", stderr);
        return 2;
    }
    const QString& folder = words[1];
    const bool written =
        writeFile(folder + u"/man/man1/quillon-cli.1"_s, manPage(Language::English)) &&
        writeFile(folder + u"/man/ja/man1/quillon-cli.1"_s, manPage(Language::Japanese)) &&
        writeFile(folder + u"/bash-completion/completions/quillon-cli"_s, completionFor(u"bash"_s)) &&
        writeFile(folder + u"/zsh/site-functions/_quillon-cli"_s, completionFor(u"zsh"_s)) &&
        writeFile(folder + u"/fish/vendor_completions.d/quillon-cli.fish"_s, completionFor(u"fish"_s));
    return written ? 0 : 1;
}

#include "app/cli/given_text.h"

#include "app/base/absolute_path.h"
#include "app/base/ports/files.h"
#include "app/cli/run.h"
#include "core/text_loading.h"

#include <QDir>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

QByteArray standardInput(const Run& run)
{
    constexpr qsizetype Piece = qsizetype{64} * 1024;
    QByteArray bytes;
    // One byte more than a document can hold tells that there are too many.
    while (bytes.size() <= mostBytesOfText()) {
        const auto piece = platform::readInput(Piece);
        run.goOn();
        if (!piece)
            throw Refusal{Status::Refused, u"標準入力を読み込めませんでした。"_s};
        if (piece->isEmpty())
            break;
        bytes += *piece;
    }
    return bytes;
}

} // namespace

std::optional<QString> givenText(Run& run, const DataKind& kind)
{
    const Arguments& arguments = run.arguments;
    const QString word = u"--text"_s;
    const QString file = u"--file"_s;
    const QString input = u"-"_s;
    const QStringList ways = {word, file, input};
    const auto sources =
        std::count_if(ways.begin(), ways.end(), [&](const QString& way) { return arguments.has(way); });
    if (sources > 1)
        throw WrongUsage{u"内容は --text、--file、- のうち一つだけで指定してください。"_s, arguments.verb};
    if (arguments.has(word))
        return arguments.value(word);
    if (arguments.has(file)) {
        const QString path =
            QDir::toNativeSeparators(absolutePath(QDir::currentPath(), arguments.value(file)));
        return withNamedFile([&] { return loadText(run.session.files, path, kind); });
    }
    if (arguments.has(input))
        return textOfBytes(standardInput(run), kind);
    return std::nullopt;
}

} // namespace quillon::cli

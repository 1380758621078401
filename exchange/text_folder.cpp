#include "exchange/text_folder.h"

#include "exchange/new_data.h"
#include "exchange/progress.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

/// The name of a file without its ending, if it has one.
QString nameOf(const QFileInfo& file)
{
    const QString ending = file.suffix();
    constexpr qsizetype Longest = 8;
    const bool isEnding = !ending.isEmpty() && ending.size() <= Longest &&
                          std::all_of(ending.begin(), ending.end(), [](QChar character) {
                              return character.isLetterOrNumber() && character.unicode() < 0x80;
                          });
    return isEnding && !file.completeBaseName().isEmpty() ? file.completeBaseName() : file.fileName();
}

} // namespace

ImportReport importTexts(Session& session, const QString& folder, const TextImportOptions& options,
                         Progress* progress)
{
    const QStringList paths = filesBelow(folder, {});
    std::vector<Note> notes;
    qint64 passedOver = 0;
    ImportReport report = bringIn(session, options, [&](NewData& data) {
        qint64 done = 0;
        for (const QString& path : paths) {
            advance(progress, done++, paths.size());
            const QFileInfo file(QDir(folder).filePath(path));
            const auto [text, whyNot] = textOf(file.filePath());
            if (!text || text->isEmpty()) {
                notes.push_back(
                    {.where = path, .text = text ? u"空のファイルのため、取り込みませんでした。"_s : whyNot});
                ++passedOver;
                continue;
            }
            NewDatum datum{.kind = &data_kinds::document(),
                           .name = nameOf(file),
                           .text = *text,
                           .day = file.lastModified().date(),
                           .where = path};
            QStringList way = path.split(u'/');
            way.removeLast();
            if (!way.isEmpty())
                datum.categories = {way};
            addText(data, datum, options.longTexts, notes);
        }
        advance(progress, done, paths.size());
    });
    report.skipped += passedOver;
    report.notes.insert(report.notes.begin(), notes.begin(), notes.end());
    return report;
}

} // namespace quillon::exchange

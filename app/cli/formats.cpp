#include "app/cli/formats.h"

#include "exchange/archive.h"
#include "exchange/delimited.h"
#include "exchange/markdown.h"
#include "exchange/old_file.h"
#include "exchange/text_folder.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

const std::vector<ImportFormat>& importFormats()
{
    using exchange::Progress;
    using Options = exchange::TextImportOptions;
    static const std::vector<ImportFormat> all = {
        {u"archive"_s,
         [](Session& session, const QString& source, const Options& options, Progress* progress) {
             return exchange::importArchive(session, source, options, progress);
         }},
        {u"csv"_s,
         [](Session& session, const QString& source, const Options& options, Progress* progress) {
             return exchange::importDelimited(session, source, options, progress);
         }},
        {u"text"_s,
         [](Session& session, const QString& source, const Options& options, Progress* progress) {
             return exchange::importTexts(session, source, options, progress);
         }},
        {u"markdown"_s,
         [](Session& session, const QString& source, const Options& options, Progress* progress) {
             return exchange::importMarkdown(session, source, options, progress);
         }},
        {u"old"_s,
         [](Session& session, const QString& source, const Options& options, Progress* progress) {
             return exchange::importOldFile(session, source, options, progress);
         }},
    };
    return all;
}

const std::vector<ExportFormat>& exportFormats()
{
    static const std::vector<ExportFormat> all = {
        {u"archive"_s, exchange::exportArchive},
        {u"csv"_s, exchange::exportDelimited},
        {u"markdown"_s, exchange::exportMarkdown},
    };
    return all;
}

} // namespace quillon::cli

#include "app/cli/formats.h"

#include "exchange/archive.h"
#include "exchange/delimited.h"
#include "exchange/html_book.h"
#include "exchange/markdown.h"
#include "exchange/old_file.h"
#include "exchange/picture.h"
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

namespace
{

/// A form that holds everything.
template <exchange::ExportReport (*Run)(Session&, const QString&, exchange::Progress*)>
ExportFormat ofEverything(const QString& name)
{
    return {.name = name,
            .run = [](Session& session, const QString& target, const QString&, exchange::Progress* progress) {
                return Run(session, target, progress);
            }};
}

} // namespace

const std::vector<ExportFormat>& exportFormats()
{
    static const std::vector<ExportFormat> all = {
        ofEverything<exchange::exportArchive>(u"archive"_s),
        ofEverything<exchange::exportDelimited>(u"csv"_s),
        ofEverything<exchange::exportMarkdown>(u"markdown"_s),
        ofEverything<exchange::exportHtmlBook>(u"html"_s),
        {.name = u"picture"_s,
         .run =
             [](Session& session, const QString& target, const QString& item, exchange::Progress* progress) {
                 return item.isEmpty() ? exchange::exportPictures(session, target, progress)
                                       : exchange::exportPicture(session, target, item);
             },
         .takesItem = true},
    };
    return all;
}

} // namespace quillon::cli

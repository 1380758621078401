#include "exchange/picture.h"

#include "exchange/all_data.h"
#include "exchange/file_names.h"
#include "exchange/neighbourhood.h"
#include "exchange/output.h"
#include "exchange/progress.h"
#include "exchange/refused.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

void noteWhatIsLeftOut(ExportReport& report, const QString& identifier, const Neighbourhood& neighbourhood)
{
    if (neighbourhood.leftOut > 0)
        report.notes.push_back(
            {.where = identifier,
             .text = u"多すぎるため、%1 件を図に描きませんでした。"_s.arg(neighbourhood.leftOut)});
}

} // namespace

ExportReport exportPicture(Session& session, const QString& path, const QString& identifier)
{
    ExportReport report;
    StagedOutput output(path);
    const AllData all(session, AllData::Texts::StayAway);
    const std::size_t position = all.find(identifier);
    if (position == all.data().size())
        throw Refused(u"識別符号 %1 のデータはありません。"_s.arg(identifier));
    const Neighbourhood neighbourhood = neighbourhoodOf(all, position);
    noteWhatIsLeftOut(report, identifier, neighbourhood);
    writeFile(output.path(), pictureOf(all, neighbourhood).toUtf8());
    output.place();
    report.written = static_cast<qint64>(neighbourhood.members.size());
    report.files = 1;
    return report;
}

ExportReport exportPictures(Session& session, const QString& folder, Progress* progress)
{
    ExportReport report;
    StagedOutput output(folder);
    output.makeFolder();
    const AllData all(session, AllData::Texts::StayAway);
    const QString ending = u".svg"_s;
    FileNames names;
    for (std::size_t i = 0; i < all.data().size(); ++i) {
        advance(progress, static_cast<qint64>(i), static_cast<qint64>(all.data().size()));
        const AllData::Datum& datum = all.data()[i];
        if (datum.linksTo.empty() && datum.linkedFrom.empty())
            continue;
        const Neighbourhood neighbourhood = neighbourhoodOf(all, i);
        noteWhatIsLeftOut(report, datum.identifier, neighbourhood);
        writeFile(output.inside(names.next(datum.identifier + u' ' + datum.name, ending) + ending),
                  pictureOf(all, neighbourhood).toUtf8(), OutputFile::Care::Quick);
        ++report.written;
        ++report.files;
    }
    output.place();
    return report;
}

} // namespace quillon::exchange

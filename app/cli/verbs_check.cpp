#include "app/cli/columns.h"
#include "app/cli/run.h"
#include "app/cli/verb_functions.h"
#include "core/checking.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

QByteArrayView wordOfTrouble(Trouble trouble)
{
    switch (trouble) {
    case Trouble::Damaged:
        return "damaged";
    case Trouble::OtherTable:
        return "other-table";
    case Trouble::OddIdentifier:
        return "odd-identifier";
    case Trouble::TooWide:
        return "too-wide";
    case Trouble::NoText:
        return "no-text";
    case Trouble::DanglingLink:
        return "dangling-link";
    case Trouble::DanglingMembership:
        return "dangling-membership";
    case Trouble::OrphanedCategory:
        return "orphaned-category";
    case Trouble::MissingFile:
        return "missing-file";
    case Trouble::UnregisteredFile:
        return "unregistered-file";
    }
    return {};
}

void write(Run& run, const Finding& finding)
{
    Output& output = run.output;
    if (!run.isJson()) {
        output.write(onePrintedLine(finding.text) + u'\n');
        return;
    }
    output.write("{\"trouble\":\"");
    output.write(wordOfTrouble(finding.trouble));
    output.write("\",\"place\":");
    output.writeJson(finding.place);
    output.write(",\"identifier\":");
    output.writeJson(finding.identifier);
    output.write(",\"text\":");
    output.writeJson(finding.text);
    output.write(finding.canBeMended() ? ",\"mendable\":true}\n" : ",\"mendable\":false}\n");
}

} // namespace

Status check(Run& run)
{
    if (run.arguments.has(u"--repair"_s)) {
        const Mended mended = mendDatabase(run.session);
        if (!mended.copy.isEmpty())
            tell(u"修復の前の控え: "_s + onePrintedLine(mended.copy));
        tell(u"相手のないリンク %1 件と分類 %2 件を削除しました。"_s.arg(mended.links)
                 .arg(mended.memberships));
    }
    qint64 found = 0;
    qint64 mendable = 0;
    // All of it is in memory until the end: the database stands locked for others only as long as it is read.
    checkDatabase(run.session, [&](const Finding& finding) {
        ++found;
        mendable += finding.canBeMended() ? 1 : 0;
        write(run, finding);
        return run.output.goesOn();
    });
    run.output.flush();
    run.goOn();
    if (found == 0) {
        tell(u"問題は見つかりませんでした。"_s);
        return Status::Done;
    }
    tell(u"%1 件の問題があります。"_s.arg(found));
    if (mendable > 0)
        tell(u"そのうち %1 件は check --repair で直せます。"_s.arg(mendable));
    return Status::Refused;
}

} // namespace quillon::cli

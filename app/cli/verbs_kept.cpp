#include "app/base/absolute_path.h"
#include "app/cli/columns.h"
#include "app/cli/run.h"
#include "app/cli/verb_functions.h"
#include "core/kept_copies.h"
#include "core/lost_things.h"
#include "core/restoring.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

/// What names an event in commands. It stays the same whatever is lost later.
QString nameOf(const kept::Event& event)
{
    constexpr int Base = 36;
    return QString::number(event.time, Base) + u'-' + QString::number(event.place, Base);
}

QByteArrayView wordOfEvent(EventKind kind)
{
    switch (kind) {
    case EventKind::ItemDeleted:
        return "item-deleted";
    case EventKind::ItemChanged:
        return "item-changed";
    case EventKind::LinkRemoved:
        return "link-removed";
    case EventKind::TakenOutOfCategory:
        return "unclassified";
    case EventKind::CategoryDeleted:
        return "category-deleted";
    case EventKind::CategoryRenamed:
        return "category-renamed";
    case EventKind::FileReplaced:
        return "file-replaced";
    case EventKind::Other:
        return "other";
    }
    return {};
}

void requireKeeping(const Session& session)
{
    if (session.keeper == nullptr)
        throw Refusal{Status::Refused,
                      u"環境変数 QUILLON_COPIES が off のため、履歴と控えは残されていません。"_s};
}

void writeEvent(Run& run, const LostThings& things, std::size_t number)
{
    Output& output = run.output;
    const LostEntry entry = things.entry(number);
    const QString name = nameOf(things.event(number));
    const QString time = entry.time.toString(u"yyyy-MM-dd HH:mm:ss");
    if (run.isJson()) {
        const auto field = [&](QByteArrayView label, QStringView text) {
            output.write(label);
            output.writeJson(text);
        };
        field("{\"event\":", name);
        field(",\"time\":", entry.time.toString(Qt::ISODate));
        output.write(",\"kind\":\"");
        output.write(wordOfEvent(entry.kind));
        field("\",\"operation\":", entry.operation);
        field(",\"name\":", entry.name);
        field(",\"identifier\":", entry.identifier);
        output.write("}\n");
        return;
    }
    constexpr int NameColumns = 16;
    constexpr int KindColumns = 18;
    output.write(
        padded(name, NameColumns) + time + u"  "_s + padded(lostKindName(entry.kind), KindColumns) +
        onePrintedLine(entry.name) +
        (entry.identifier.isEmpty() ? QString() : u" ("_s + onePrintedLine(entry.identifier) + u')') + u'\n');
}

} // namespace

Status history(Run& run)
{
    requireKeeping(run.session);
    LostThings things(run.session);
    things.ask({.text = run.arguments.words.value(0)});
    std::size_t written = 0;
    while (run.output.goesOn() && things.readOn()) {
        for (; written < things.count() && run.output.goesOn(); ++written) {
            writeEvent(run, things, written);
            if (run.output.isFull())
                run.output.flush();
        }
        run.goOn();
    }
    if (written > 0)
        return run.log.takeStatus(Status::Done);
    complain(u"上書きまたは削除されたものはありません。"_s);
    return Status::NothingFound;
}

Status restore(Run& run)
{
    requireKeeping(run.session);
    const QString& name = run.arguments.words.first();
    LostThings things(run.session);
    things.ask({});
    std::size_t number = 0;
    do {
        while (number < things.count() && nameOf(things.event(number)) != name)
            ++number;
        run.goOn();
    } while (number == things.count() && things.readOn());
    if (number == things.count())
        throw Refusal{Status::NothingFound, u"履歴に %1 は見つかりませんでした。"_s.arg(name)};
    const std::optional<PutBackResult> result = PutBack(run.session, things, number);
    if (!result)
        return run.log.takeStatus(Status::Refused);
    tell(result->text);
    if (!result->identifier.isEmpty())
        run.output.write(result->identifier + u'\n');
    return Status::Done;
}

Status copies(Run& run)
{
    requireKeeping(run.session);
    const std::vector<kept::Copy> all = ListCopies(run.session, run.database);
    const auto fileName = [](const kept::Copy& copy) { return QFileInfo(copy.path).fileName(); };
    const bool takes = run.arguments.has(u"--take"_s);
    if (takes != run.arguments.has(u"--to"_s))
        throw WrongUsage{u"--take と --to は一緒に指定します。"_s, run.arguments.verb};
    if (takes) {
        const QString wanted = run.arguments.value(u"--take"_s);
        const auto copy = std::find_if(all.begin(), all.end(),
                                       [&](const kept::Copy& known) { return fileName(known) == wanted; });
        if (copy == all.end())
            throw Refusal{Status::NothingFound, u"控え %1 は見つかりませんでした。"_s.arg(wanted)};
        const QString target =
            QDir::toNativeSeparators(absolutePath(QDir::currentPath(), run.arguments.value(u"--to"_s)));
        return TakeOutCopy(run.session, *copy, target) ? Status::Done : Status::Refused;
    }
    Output& output = run.output;
    for (const kept::Copy& copy : all) {
        if (run.isJson()) {
            output.write("{\"copy\":");
            output.writeJson(fileName(copy));
            output.write(",\"time\":");
            output.writeJson(copy.time.toString(Qt::ISODate));
            output.write(",\"size\":");
            output.writeNumber(copy.size);
            output.write(",\"rows\":");
            output.writeNumber(copy.rows);
            output.write(copy.isDoubtful ? ",\"doubtful\":true}\n" : ",\"doubtful\":false}\n");
        } else {
            constexpr int NumberColumns = 14;
            output.write(fileName(copy) + u"  "_s + copy.time.toString(u"yyyy-MM-dd HH:mm:ss") +
                         QString::number(copy.size).rightJustified(NumberColumns) + u" バイト"_s +
                         QString::number(copy.rows).rightJustified(NumberColumns) + u" 行"_s +
                         (copy.isDoubtful ? u"  内容が大きく減っています"_s : QString()) + u'\n');
        }
    }
    if (!all.empty())
        return Status::Done;
    complain(u"控えはありません。"_s);
    return Status::NothingFound;
}

} // namespace quillon::cli

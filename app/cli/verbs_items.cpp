#include "app/base/absolute_path.h"
#include "app/base/one_line.h"
#include "app/base/titles.h"
#include "app/cli/columns.h"
#include "app/cli/found.h"
#include "app/cli/given_text.h"
#include "app/cli/item_writer.h"
#include "app/cli/run.h"
#include "app/cli/verb_functions.h"
#include "core/categories.h"
#include "core/data_entry.h"
#include "core/data_records.h"
#include "core/file_data.h"
#include "core/file_registration.h"
#include "core/links.h"
#include "store/data_kinds.h"
#include "store/identifiers.h"
#include "store/lookup/data_names.h"
#include "store/record_set.h"

#include <QDir>

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

/// Prints the identifier of what has been made.
void printIdentifier(Run& run, const QString& identifier)
{
    Output& output = run.output;
    if (run.isJson()) {
        output.write("{\"identifier\":");
        output.writeJson(identifier);
        output.write('}');
    } else {
        output.write(identifier);
    }
    output.write('\n');
}

/// The new identifier for a datum of a kind; why there is none has been told.
QString newIdentifier(Run& run, const DataKind& kind)
{
    QString identifier = CreateObject_ID(run.session, QString(kind.letter));
    if (!identifier.isEmpty() && identifier.size() > IdentifierLength)
        throw Refusal{Status::Refused,
                      u"今日の識別符号は使い切られています。登録できるのは一日に999件までです。"_s};
    return identifier;
}

} // namespace

Status add(Run& run)
{
    const DataKind& kind = kindOfWord(run.arguments.words[0]);
    const std::optional<QString> text = givenText(run, kind);
    if (!text)
        throw WrongUsage{u"内容を --text、--file、- のいずれかで指定してください。"_s, run.arguments.verb};
    const std::vector<CategoryRow> categories = foundCategories(run);
    const QString identifier = newIdentifier(run, kind);
    if (identifier.isEmpty())
        return run.log.takeStatus(Status::Refused);
    const auto saved =
        RegisterDatum(run.session, kind, identifier,
                      {.name = onOneLine(run.arguments.words[1]), .content = *text}, categories);
    if (!saved)
        return Status::Refused;
    printIdentifier(run, saved->place.identifier);
    saved->messages.show(run.session);
    for (const QString& category : saved->vanishedCategories)
        complain(u"カテゴリ %1 は見つかりませんでした。"_s.arg(category));
    const Status status = run.log.takeStatus(Status::Done);
    return status == Status::Done && saved->vanishedCategories.isEmpty() ? Status::Done : Status::HalfWay;
}

Status attach(Run& run)
{
    const auto categories = foundCategories(run);
    if (categories.size() > 1)
        throw WrongUsage{u"ファイルを登録するカテゴリは一つだけ指定できます。"_s, run.arguments.verb};
    const QString path =
        QDir::toNativeSeparators(absolutePath(QDir::currentPath(), run.arguments.words.first()));
    const QString identifier = newIdentifier(run, data_kinds::file());
    if (identifier.isEmpty())
        return run.log.takeStatus(Status::Refused);
    FileEntry entry{.path = path, .identifier = identifier, .category = {}};
    if (!categories.empty())
        entry.category = categories.front();
    QString registered = identifier;
    const auto progress = [](qint64, qint64) { return !platform::wasInterrupted(); };
    switch (withNamedFile([&] { return RegisterFile(run.session, entry, progress, &registered); })) {
    case FileRegistration::Registered:
        printIdentifier(run, registered);
        return Status::Done;
    case FileRegistration::FileNotFound:
        throw Refusal{Status::NothingFound, u"指定されたファイルが見つかりません。"_s};
    case FileRegistration::NoFolderForFiles:
        throw Refusal{Status::Refused, titles::FileFolderMissing};
    case FileRegistration::Cancelled:
        break;
    }
    run.goOn();
    return Status::HalfWay;
}

Status show(Run& run)
{
    Session& session = run.session;
    const QString identifier = run.arguments.words.first();
    const DatumPlace place = foundItem(session, identifier);
    const RecordSet& rows = required(session.*place.kind->recordSet);
    const auto storedName = rows.fieldOrNull(data_field::Name);
    const auto storedText = rows.fieldOrNull(data_field::Explanation);
    const std::vector<CategoryRow> categories = categoriesOf(session, identifier);
    DataNameLookup names(session);
    const std::vector<LinkRow> links = linksOf(session, identifier, names);
    names.tellFailures();
    Output& output = run.output;
    if (run.isJson()) {
        writeItemFields(
            output, {.kind = *place.kind, .identifier = identifier, .name = storedName, .text = storedText});
        const auto writeList = [&](QByteArrayView label, const auto& all) {
            output.write(label);
            for (const auto& entry : all) {
                if (&entry != all.data())
                    output.write(',');
                output.writeJson(entry.identifier);
            }
            output.write(']');
        };
        writeList(",\"categories\":[", categories);
        writeList(",\"links\":[", links);
        output.write("}\n");
        return Status::Done;
    }
    const QString name = storedName.value_or(QString());
    const QString text = storedText.value_or(QString());
    constexpr int LabelColumns = 10;
    const auto writeLine = [&](const QString& label, const QString& line) {
        output.write(padded(label, LabelColumns) + onePrintedLine(line) + u'\n');
    };
    writeLine(u"識別符号"_s, identifier);
    writeLine(u"種別"_s, place.kind->shortName);
    writeLine(u"名称"_s, name);
    for (const CategoryRow& category : categories)
        writeLine(&category == categories.data() ? u"分類"_s : QString(),
                  category.identifier + u"  "_s + category.name);
    for (const LinkRow& link : links)
        writeLine(&link == links.data() ? u"リンク"_s : QString(), link.identifier + u"  "_s + link.name);
    output.write('\n');
    output.write(output.isTerminal() ? printedLines(text) : text);
    if (!text.endsWith(u'\n'))
        output.write('\n');
    return run.log.takeStatus(Status::Done);
}

Status set(Run& run)
{
    Session& session = run.session;
    const DatumPlace place = foundItem(session, run.arguments.words.first());
    if (!place.kind->isShownInWindow)
        throw Refusal{Status::Refused, u"ファイルデータの名称と内容は変更できません。"_s};
    const std::optional<QString> text = givenText(run, *place.kind);
    if (!text && !run.arguments.has(u"--name"_s))
        throw WrongUsage{u"--name、--text、--file、- のいずれかを指定してください。"_s, run.arguments.verb};
    const std::optional<DatumTexts> stored = StoredTexts(session, place);
    if (!stored)
        throw Error(errors::NoCurrentRecord);
    DatumTexts texts = *stored;
    if (run.arguments.has(u"--name"_s))
        texts.name = onOneLine(run.arguments.value(u"--name"_s));
    if (text)
        texts.content = *text;
    if (texts == *stored) {
        complain(u"変更するところはありません。"_s);
        return Status::NothingFound;
    }
    const auto saved = UpdateDatum(session, {.place = place, .texts = *stored}, texts, {});
    if (!saved)
        return Status::Refused;
    saved->messages.show(session);
    return run.log.takeStatus(Status::Done);
}

namespace
{

/// Deletes one of several. What stands in the way has been told.
Status deleteItem(Run& run, const QString& identifier)
{
    Status status = Status::Done;
    const auto onFailure = [&](const Error& error) {
        complain(error.description);
        status = statusOf(error.number);
    };
    try {
        guardedBy(onFailure, [&] {
            const DatumPlace place = foundItem(run.session, identifier);
            constexpr qint16 AsksAndTells = 3;
            if (DeleteDatum(run.session, place, AsksAndTells) == Deletion::Kept)
                status = run.log.takeStatus(run.dialogs.statusOfNo());
        });
    } catch (const Refusal& refusal) {
        complain(refusal.text);
        status = refusal.status;
    }
    return status;
}

} // namespace

Status deleteItems(Run& run)
{
    const QStringList& identifiers = run.arguments.words;
    qsizetype deleted = 0;
    Status failure = Status::Done;
    for (const QString& identifier : identifiers) {
        if (platform::wasInterrupted()) {
            failure = Status::HalfWay;
            break;
        }
        const Status status = deleteItem(run, identifier);
        if (status == Status::Done)
            ++deleted;
        else if (failure == Status::Done)
            failure = status;
        // One that is gone keeps no other from going; whatever else it is will meet the next one, too.
        if (status != Status::Done && status != Status::NothingFound)
            break;
    }
    if (deleted == 0)
        run.goOn();
    if (failure == Status::Done || (deleted == 0 && failure != Status::HalfWay))
        return failure;
    complain(u"%1 件中 %2 件を削除しました。"_s.arg(identifiers.size()).arg(deleted));
    return Status::HalfWay;
}

Status openFile(Run& run)
{
    const DatumPlace place = foundItem(run.session, run.arguments.words.first());
    if (place.kind->isShownInWindow)
        throw Refusal{Status::Refused, u"ファイルデータではありません。show で表示できます。"_s};
    switch (ShowRefFile(run.session, place.identifier)) {
    case FileOpening::Opened:
        return Status::Done;
    case FileOpening::NoFolderForFiles:
    case FileOpening::FileNotFound:
        return Status::NothingFound;
    case FileOpening::NotStarted:
        throw Refusal{Status::Refused, Error(errors::PathFileAccess).description};
    case FileOpening::NoAssociation:
        return Status::Refused;
    case FileOpening::Failed:
        break;
    }
    return run.log.takeStatus(Status::Refused);
}

} // namespace quillon::cli

#include "tests/faults/fault_world.h"

#include "app/base/error.h"
#include "app/base/titles.h"
#include "core/categories.h"
#include "core/category_entry.h"
#include "core/data_entry.h"
#include "core/data_records.h"
#include "core/file_registration.h"
#include "core/links.h"
#include "core/listed_datum.h"
#include "store/data_kinds.h"
#include "store/database.h"
#include "store/record_set.h"
#include "store/schema.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>

#include <algorithm>
#include <array>
#include <cstdio>
#include <new>

using namespace Qt::Literals::StringLiterals;

namespace quillon::testing
{

namespace
{

QByteArray contentOf(const QString& name)
{
    return (name + u"の内容。"_s).toUtf8().repeated(50);
}

CategoryRow categoryRow(Session& session, const QString& identifier)
{
    return presentCategory(session, identifier);
}

std::vector<ListedDatum> listed(Session& session, const QStringList& identifiers)
{
    std::vector<ListedDatum> data;
    for (const QString& identifier : identifiers) {
        RecordSet& rows = dataTableOf(session, identifier);
        if (!rows.goTo(data_field::Object_ID, identifier))
            throw Error(errors::NoCurrentRecord);
        data.push_back({.identifier = identifier, .name = rows.field(data_field::Name)});
    }
    return data;
}

} // namespace

Answer PatientDialogs::messageBox(const MessageBox& box)
{
    texts << box.text;
    return box.buttons == Buttons::Ok || box.buttons == Buttons::OkCancel ? Answer::Ok : Answer::Yes;
}

std::optional<QString> PatientDialogs::inputBox(const InputBox& box)
{
    texts << box.prompt;
    return std::nullopt;
}

std::optional<QString> PatientDialogs::fileDialog(const FileDialog& dialog)
{
    texts << dialog.filter;
    return std::nullopt;
}

FaultWorld::FaultWorld(const QString& theFolder)
    : folder(theFolder), session({dialogs, eventLog, clock, desktop, files, windows}, theFolder)
{
    windows.list.push_back(&mainWindow);
    session.setMainWindow(&mainWindow);
}

FaultWorld::~FaultWorld() = default;

template <class Operation> FaultWorld::Outcome FaultWorld::outcomeOf(Operation&& operation)
{
    dialogs.texts.clear();
    bool done = false;
    try {
        done = std::forward<Operation>(operation)();
    } catch (const Error& error) {
        dialogs.texts << u"EXPLANATION : "_s + error.description; // as the window would tell it
    } catch (const std::bad_alloc&) {
        dialogs.texts << u"EXPLANATION : "_s + standardDescription(errors::OutOfMemory); // and so this
    }
    const auto tells = [this](const QString& words) {
        return std::any_of(dialogs.texts.begin(), dialogs.texts.end(),
                           [&](const QString& text) { return text.contains(words); });
    };
    if (tells(standardDescription(errors::Locked)))
        return Outcome::Refused;
    if (tells(u"EXPLANATION : "_s))
        return Outcome::Failed;
    return done ? Outcome::Done : Outcome::Silent;
}

FaultWorld::Outcome FaultWorld::open(const QString& name)
{
    return outcomeOf([&] { return OpenDbFile(session, path(name)); });
}

FaultWorld::Outcome FaultWorld::create(const QString& name)
{
    return outcomeOf([&] { return CreateDbFile(session, path(name)) == Opening::Opened; });
}

void FaultWorld::close()
{
    session.closeDatabase();
}

FaultWorld::Outcome FaultWorld::perform(const Step& step)
{
    return outcomeOf([&] { return run(step); });
}

FaultWorld::Outcome FaultWorld::perform(const std::function<bool()>& operation)
{
    return outcomeOf(operation);
}

void FaultWorld::keep()
{
    keeping = std::make_unique<kept::Keeping>(
        session.reporting, kept::KeepingOrder{.keptFolder = path(u"kept"_s),
                                              .fileFolder = session.inCurrentFolder(titles::FileFolder)});
    session.keeper = keeping.get();
}

kept::Place FaultWorld::place() const
{
    return {path(u"kept"_s), path(u"QUILLON.mdb"_s)};
}

bool FaultWorld::registerFile(const Step& step, const QString& category)
{
    FileEntry entry{.path = path(step.name), .identifier = step.identifier, .category = {}};
    if (!category.isEmpty())
        entry.category = categoryRow(session, category);
    return RegisterFile(session, entry, {}) == FileRegistration::Registered;
}

bool FaultWorld::run(const Step& step)
{
    switch (step.kind) {
    case Step::Kind::Register: {
        std::vector<CategoryRow> rows;
        for (const QString& category : step.many)
            rows.push_back(categoryRow(session, category));
        const DataKind* const kind = kindOf(step.identifier);
        const auto saved = RegisterDatum(session, *kind, step.identifier,
                                         {.name = step.name, .content = step.content}, rows);
        if (saved)
            saved->messages.show(session);
        return saved.has_value();
    }
    case Step::Kind::RegisterFile:
        return registerFile(step, step.other);
    case Step::Kind::RegisterToLink: {
        session.RegisteringToLink = Session::FileToLink{.with = step.other};
        const auto ends = qScopeGuard([&] { session.RegisteringToLink.reset(); });
        const bool registered = registerFile(step, step.many.value(0));
        if (session.RegisteringToLink->failure)
            throw Error(*session.RegisteringToLink->failure);
        return registered && session.RegisteringToLink->registered == step.identifier;
    }
    case Step::Kind::Update: {
        RecordSet& rows = dataTableOf(session, step.identifier);
        if (!rows.goTo(data_field::Object_ID, step.identifier))
            throw Error(errors::NoCurrentRecord);
        const SeenDatum before{
            .place = {.kind = kindOf(step.identifier),
                      .databaseFile = openDatabaseFile(session),
                      .identifier = step.identifier,
                      .row = rows.rowNumber()},
            .texts = {.name = rows.field(data_field::Name), .content = rows.field(data_field::Explanation)}};
        const auto saved = UpdateDatum(session, before, {.name = step.name, .content = step.content}, {});
        if (saved)
            saved->messages.show(session);
        return saved.has_value();
    }
    case Step::Kind::Delete:
        return DeleteDatum(session, step.identifier, 0) == Deletion::Deleted;
    case Step::Kind::DeleteMany: {
        const auto outcome = DeleteManyData(session, listed(session, step.many), [] {});
        return std::all_of(outcome.begin(), outcome.end(),
                           [](Deletion one) { return one == Deletion::Deleted; });
    }
    case Step::Kind::Link:
        return LinkData(session, step.identifier, step.other, 0);
    case Step::Kind::Unlink:
        return DeleteLink(session, step.identifier, step.other);
    case Step::Kind::File:
    case Step::Kind::MoveDown:
        ClassifyCategory(session, step.other, step.identifier);
        return true;
    case Step::Kind::FileMany:
        return ClassifyManyData(session, categoryRow(session, step.other), listed(session, step.many), [] {})
            .empty();
    case Step::Kind::Unfile:
        TakeOutOfCategory(session, categoryRow(session, step.other), listed(session, {step.identifier}));
        return true;
    case Step::Kind::AddCategory: {
        std::optional<CategoryRow> parent;
        if (!step.other.isEmpty())
            parent = categoryRow(session, step.other);
        RegisterCategory(session, step.identifier, step.name, parent ? &*parent : nullptr);
        return true;
    }
    case Step::Kind::RenameCategory:
        RenameCategory(session, categoryRow(session, step.identifier), step.name);
        return true;
    case Step::Kind::DeleteCategory:
        return DeleteCategory(session, step.identifier, 0);
    case Step::Kind::Count:
        break;
    }
    return false;
}

Model FaultWorld::seen()
{
    Model model;
    for (const auto set : {&Session::RsMain, &Session::RsRefDoc, &Session::RsRefFile}) {
        required(session.*set).forEachRow({0, 1, 2}, [&](const RecordSet::Row& row) {
            model.data[row.text(1).toString()] = {.name = row.text(0).toString(),
                                                  .content = row.text(2).toString()};
        });
    }
    required(session.RsLink).forEachRow({0, 1}, [&](const RecordSet::Row& row) {
        const QString a = row.text(0).toString();
        const QString b = row.text(1).toString();
        model.links.insert(a < b ? Model::Pair(a, b) : Model::Pair(b, a));
    });
    required(session.RsCategoryID).forEachRow({0, 1}, [&](const RecordSet::Row& row) {
        model.categories[row.text(0).toString()] = row.text(1).toString();
    });
    required(session.RsCategory).forEachRow({0, 1}, [&](const RecordSet::Row& row) {
        model.memberships.insert({row.text(0).toString(), row.text(1).toString()});
    });
    return model;
}

bool FaultWorld::isOfOnePiece() const
{
    const auto& sets = Session::recordSets();
    return std::all_of(sets.begin(), sets.end(), [this](const Session::Set set) {
        return session.OpenDb ? session.*set && &(session.*set)->database() == session.OpenDb.get()
                              : !(session.*set);
    });
}

QString FaultWorld::path(const QString& name) const
{
    return folder + u'/' + name;
}

Model prepareFolder(const QString& folder, int actors)
{
    QDir(folder).mkpath(titles::FileFolder);
    for (int i = 0; i < actors * SourceFiles; ++i) {
        QFile source(folder + u'/' + sourceFile(i));
        if (!source.open(QIODevice::WriteOnly) || source.write(contentOf(sourceFile(i))) < 0)
            qFatal("no file to be registered could be made");
    }
    FaultWorld world(folder);
    if (world.create(u"QUILLON.mdb"_s) != FaultWorld::Outcome::Done)
        qFatal("no database could be made");
    Model model;
    for (int actor = 0; actor < actors; ++actor) {
        for (const Step& step : beginning({actor})) {
            if (world.perform(step) != FaultWorld::Outcome::Done)
                qFatal("the beginning fails: %s %s", qPrintable(step.described()),
                       qPrintable(world.told().join(u'\n')));
            model = after(step, model);
        }
    }
    return model;
}

QString filesProblem(const QString& folder, const Model& model)
{
    for (const auto& [identifier, datum] : model.data) {
        if (!identifier.startsWith(u'F'))
            continue;
        QFile file(folder + u'/' + titles::FileFolder + u'/' + datum.name);
        if (!file.open(QIODevice::ReadOnly))
            return u"missing in RefFile: "_s + datum.name;
        if (file.readAll() != contentOf(datum.name))
            return u"torn in RefFile: "_s + datum.name;
    }
    return {};
}

std::mt19937::result_type seedOfRun()
{
    static const std::mt19937::result_type seed = [] {
        const bool given = qEnvironmentVariableIsSet("QUILLON_SEED");
        const auto number = given ? static_cast<std::mt19937::result_type>(qgetenv("QUILLON_SEED").toUInt())
                                  : std::random_device()();
        std::fprintf(stdout, "seed %u; QUILLON_SEED=%u repeats this run\n", static_cast<unsigned>(number),
                     static_cast<unsigned>(number));
        std::fflush(stdout);
        return number;
    }();
    return seed;
}

int numberFromEnvironment(const char* name, int otherwise)
{
    bool isNumber = false;
    const int number = qEnvironmentVariableIntValue(name, &isNumber);
    return isNumber ? number : otherwise;
}

} // namespace quillon::testing

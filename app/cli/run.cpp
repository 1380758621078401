#include "app/cli/run.h"

#include "app/base/absolute_path.h"
#include "app/base/system_files.h"
#include "app/base/system_ports.h"
#include "app/base/titles.h"
#include "app/cli/help.h"
#include "store/creation.h"
#include "store/database.h"
#include "store/kept/copies.h"
#include "store/kept/keeping.h"
#include "store/kept/moved_database.h"
#include "store/opened_file.h"
#include "store/record_set.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QTemporaryDir>

#include <algorithm>
#include <memory>
#include <new>

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

/// The last failure of a command, as it is told and answered.
Refusal refusalOf(const Error& error)
{
    return {statusOf(error.number), error.description};
}

/// Each command would make a copy of the whole database when it ends; one an hour is enough, as in the windows.
std::optional<kept::CopyTimes> copiesWhenDue(const QString& keptFolder, const QString& database,
                                             const QDateTime& now)
{
    kept::CopyTimes times;
    const auto copies = kept::listCopies(kept::Place(keptFolder, database));
    if (!copies.empty() && copies.front().time.msecsTo(now) < times.between.count())
        return std::nullopt;
    times.afterOpening = times.between; // what is written now is to be in it
    return times;
}

/// A command with everything it works with.
class Command
{
public:
    explicit Command(const Arguments& arguments)
        : m_arguments(arguments), m_dialogs(arguments.has(u"--yes"_s)),
          m_session({m_dialogs, m_log, m_clock, m_desktop, m_files, m_windows}, folder(arguments))
    {
    }

    Status run()
    {
        Run run{.arguments = m_arguments,
                .output = m_output,
                .dialogs = m_dialogs,
                .log = m_log,
                .session = m_session,
                .database = {}};
        const Needs needs = m_arguments.verb->needs;
        if (needs == Needs::Nothing)
            return done(run);
        run.database = database();
        if (needs == Needs::Filling && !m_files.entryExists(run.database))
            return fillNew(run);
        if (needs != Needs::Reading)
            keep(run.database, needs);
        if (needs != Needs::Place)
            open(run.database);
        return done(run);
    }

private:
    Status done(Run& run)
    {
        // The history tells by what something was lost.
        const OperationAtWork atWork(m_session.reporting, u"quillon-cli "_s + m_arguments.verb->name);
        const Status status = m_arguments.verb->run(run);
        m_output.flush();
        return status;
    }

    /// Makes the database that is not there. It does not stay when nothing comes into it.
    Status fillNew(Run& run)
    {
        const QTemporaryDir elsewhere;
        const bool stays = !m_arguments.has(u"--dry-run"_s);
        if (!stays)
            run.database = elsewhere.filePath(u"empty.mdb"_s);
        const auto refuse = [](const Error& error) { throw Refusal{Status::NoDatabase, error.description}; };
        guardedBy(refuse, [&] { createDatabaseFile(run.database); });
        bool isFilled = false;
        const auto remove = qScopeGuard([&] {
            m_session.closeDatabase();
            if (!isFilled)
                QFile::remove(run.database);
        });
        open(run.database);
        const Status status = done(run);
        isFilled = stays && holdsRows();
        const std::optional<QString> keptFolder = kept::keptFolder();
        if (isFilled && keptFolder)
            kept::setAside(*keptFolder, {*keptFolder, run.database});
        return status;
    }

    /// Whether anything has come into the open database.
    bool holdsRows() const
    {
        const auto& all = Session::recordSets();
        return std::any_of(all.begin(), all.end(),
                           [this](Session::Set set) { return required(m_session.*set).hasRows(); });
    }

    static QString folder(const Arguments& arguments)
    {
        const QString current = QDir::currentPath();
        QString home = QDir::toNativeSeparators(
            arguments.has(u"--home"_s) ? QDir::cleanPath(absolutePath(current, arguments.value(u"--home"_s)))
                                       : current);
        return home;
    }

    QString database() const
    {
        const QString name = m_arguments.has(u"--database"_s) ? m_arguments.value(u"--database"_s)
                                                              : qEnvironmentVariable("QUILLON_DATABASE");
        if (name.isEmpty())
            throw WrongUsage{
                u"データベースを --database または環境変数 QUILLON_DATABASE で指定してください。"_s,
                m_arguments.verb};
        return QDir::toNativeSeparators(absolutePath(QDir::currentPath(), name));
    }

    void keep(const QString& database, Needs needs)
    {
        const std::optional<QString> keptFolder = kept::keptFolder();
        if (!keptFolder)
            return;
        kept::KeepingOrder order{.keptFolder = *keptFolder,
                                 .fileFolder = m_session.inCurrentFolder(titles::FileFolder)};
        if (needs == Needs::Writing || needs == Needs::Filling)
            order.copies = copiesWhenDue(*keptFolder, database, m_clock.now());
        m_keeping = std::make_unique<kept::Keeping>(m_session.reporting, order);
        m_session.keeper = m_keeping.get();
    }

    void open(const QString& database)
    {
        const auto refuse = [](const Error& error) { throw Refusal{Status::NoDatabase, error.description}; };
        guardedBy(refuse, [&] {
            const OpenedFile file(m_session, database, [](const QString&) {});
            file.makeCurrent(m_session);
        });
    }

    const Arguments& m_arguments;
    Output m_output;
    LineDialogs m_dialogs;
    LineLog m_log;
    SystemClock m_clock;
    SystemDesktop m_desktop{{}}; // that logs nothing, for nothing is put into its list
    SystemFiles m_files;
    NoWindows m_windows;
    Session m_session;
    std::unique_ptr<kept::Keeping> m_keeping; // goes first, with the last copy
};

Status answer(const QStringList& words)
{
    const Arguments arguments = understood(words);
    switch (arguments.request) {
    case Arguments::Request::Help:
        printHelp(arguments.verb);
        return Status::Done;
    case Arguments::Request::Version:
        printVersion();
        return Status::Done;
    case Arguments::Request::Run:
        break;
    }
    return Command(arguments).run();
}

} // namespace

std::optional<char> Run::identifierEnd() const
{
    const QStringList asked = arguments.values(u"--identifiers"_s);
    if (asked.isEmpty())
        return std::nullopt;
    return asked.contains(u"-0"_s) ? '\0' : '\n';
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): it is the run that is interrupted
void Run::goOn() const
{
    if (platform::wasInterrupted())
        throw Refusal{Status::HalfWay, u"中断しました。"_s};
}

int runCommand(const QStringList& words)
{
    Status status = Status::Done;
    const auto onFailure = [&](const Error& error) {
        const Refusal refusal = refusalOf(error);
        complain(refusal.text);
        status = refusal.status;
    };
    try {
        guardedBy(onFailure, [&] { status = answer(words); });
    } catch (const Refusal& refusal) {
        complain(refusal.text);
        status = refusal.status;
    } catch (const WrongUsage& wrong) {
        complain(wrong.complaint);
        tell(usageOf(wrong.verb));
        status = Status::WrongUsage;
    }
    return static_cast<int>(status);
}

} // namespace quillon::cli

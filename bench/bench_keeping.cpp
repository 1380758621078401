#include "app/base/ports/data_window.h"
#include "app/base/ports/files.h"
#include "app/base/system_files.h"
#include "bench/corpora.h"
#include "bench/pair.h"
#include "bench/quiet_program.h"
#include "bench/working_copies.h"
#include "core/data_records.h"
#include "core/lost_things.h"
#include "core/restoring.h"
#include "store/creation.h"
#include "store/database.h"
#include "store/kept/copies.h"
#include "store/kept/keeping.h"
#include "store/opening.h"
#include "store/record_set.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/form_window.h"
#include "ui/widgets/report_list.h"

#include <QAction>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QTemporaryDir>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <limits>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

constexpr int Updates = 51;
constexpr int Selected = 10'000;
constexpr int FirstRow = 10'000; // other rows leave at least 65,000 of them

/// A program over a copy of the corpus of its own, with or without a history.
class Side
{
public:
    enum class History { Kept, Off };
    Side(const QString& path, History history)
    {
        if (history == History::Kept) {
            m_keeping = std::make_unique<kept::Keeping>(
                program.session().reporting,
                kept::KeepingOrder{.keptFolder = QFileInfo(path).path() + u"/kept"_s, .fileFolder = {}});
            program.session().keeper = m_keeping.get();
        }
        program.open(path);
        Q_EMIT program.list().horizontalHeader()->sectionClicked(0);
        QCoreApplication::processEvents();
    }

    void selectMany()
    {
        ReportList& list = program.list();
        const QItemSelection chosen(list.model()->index(FirstRow, 0),
                                    list.model()->index(FirstRow + Selected - 1, 0));
        list.selectionModel()->select(chosen,
                                      QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        QCoreApplication::processEvents();
        program.dialogs().announceBox(u"選択された複数のデータを削除しますか。"_s);
    }
    void deleteMany()
    {
        program.mainWindow().mnuDataDelete_Click();
        QCoreApplication::processEvents();
    }

    void openNext()
    {
        program.closeOtherWindows();
        ++m_row;
        ShowData(program.session(), u"M-"_s + identifier(m_row));
        DataWindow& window = shown();
        window.setFieldText(0, u"蒸留水の製法"_s + QString::number(m_row));
        window.setFieldText(2, u"水を熱して得た蒸気を冷やし、再び液体にしたもの。"_s);
        QCoreApplication::processEvents();
        program.dialogs().announceBox(u"本データを更新しました。"_s);
    }
    void update() { dynamic_cast<FormWindow&>(shown()).findChild<QAction*>(u"mnuDataUpdate"_s)->trigger(); }

    QuietProgram program;

private:
    DataWindow& shown() { return dynamic_cast<DataWindow&>(*program.session().windows.loaded().back()); }
    /// What follows the letter in the identifier of a definition.
    QString identifier(int number)
    {
        const ReportModel& rows = program.list().rows();
        for (int row = number * 40; row < rows.rowCount(); ++row) {
            const QString found = rows.text(row, IdentifierColumn).toString();
            if (found.startsWith(u"M-"))
                return found.sliced(2);
        }
        throw std::runtime_error("there are too few data");
    }

    std::unique_ptr<kept::Keeping> m_keeping;
    int m_row = 0;
};

void deletingKept(benchmark::State& state)
{
    Side with(workingCopies().programs, Side::History::Kept);
    Side without(workingCopies().floors, Side::History::Off);
    measure(state,
            {"Deleting 10,000 selected items, keeping what they were", "the same without keeping it", 1.15},
            {.prepare = [&] { with.selectMany(); },
             .operation = [&] { with.deleteMany(); },
             .prepareFloor = [&] { without.selectMany(); },
             .floor = [&] { without.deleteMany(); }});
}
BENCHMARK(deletingKept)->UseManualTime()->Iterations(3);

void updatingKept(benchmark::State& state)
{
    Side with(workingCopies().programs, Side::History::Kept);
    Side without(workingCopies().floors, Side::History::Off);
    measure(state, {"Updating an item, keeping what it was", "the same without keeping it", 1.15},
            {.prepare = [&] { with.openNext(); },
             .operation = [&] { with.update(); },
             .prepareFloor = [&] { without.openNext(); },
             .floor = [&] { without.update(); }});
}
BENCHMARK(updatingKept)->UseManualTime()->Iterations(Updates);

void keptCopy(benchmark::State& state)
{
    const QString database = corpusPath(Corpus::Default);
    const SystemFiles files;
    std::unique_ptr<QTemporaryDir> folder;
    const auto freshFolder = [&] {
        folder = std::make_unique<QTemporaryDir>(QFileInfo(database).path() + u"/kept-XXXXXX"_s);
    };
    measure(state, {"Making and checking a kept copy of the corpus", "copying the file", 3},
            {.prepare = freshFolder,
             .operation =
                 [&] {
                     const kept::CopyOrder order{.place = {folder->filePath(u"kept"_s), database},
                                                 .fileFolder = {},
                                                 .now = [] { return QDateTime::currentDateTime(); },
                                                 .goesOn = [] { return true; }};
                     if (kept::makeCopy(order) != kept::CopyOutcome::Made)
                         throw std::runtime_error("no copy was made");
                 },
             .prepareFloor = freshFolder,
             .floor =
                 [&] {
                     const auto copy = files.stageCopy(database, folder->path(), u"copy.mdb"_s, {});
                     copy->place({});
                     copy->keep();
                 }});
}
BENCHMARK(keptCopy)->UseManualTime()->Iterations(3);

/// Makes one copy of a database after the other, as the program does in the background, until it is told to end.
class Copying
{
public:
    explicit Copying(const QString& database)
        : m_folder(QFileInfo(database).path() + u"/kept-XXXXXX"_s),
          m_order{.place = {m_folder.filePath(u"kept"_s), database},
                  .fileFolder = {},
                  .now = [] { return QDateTime::currentDateTime(); },
                  .goesOn = [this] { return !m_ends; },
                  // Every write lets it begin anew; here they never end.
                  .mostBeginnings = std::numeric_limits<int>::max(),
                  .pause = [] { std::this_thread::sleep_for(std::chrono::milliseconds(1)); },
                  .inspection = kept::Inspection::Quick},
          m_thread([this] { work(); })
    {
    }
    ~Copying() { end(); }
    Copying(const Copying&) = delete;
    Copying& operator=(const Copying&) = delete;

    /// Throws when a copy has failed.
    void finish()
    {
        end();
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

private:
    void work()
    {
        try {
            while (!m_ends)
                kept::makeCopy(m_order);
        } catch (...) {
            m_failure = std::current_exception();
        }
    }
    void end()
    {
        m_ends = true;
        if (m_thread.joinable())
            m_thread.join();
    }

    QTemporaryDir m_folder;
    std::atomic<bool> m_ends = false;
    std::exception_ptr m_failure;
    kept::CopyOrder m_order;
    std::thread m_thread;
};

/// The seconds that each of many writes of one item takes, with a moment after each as between two of a person's.
std::vector<double> secondsOfWrites(Database& database)
{
    constexpr int Writes = 500;
    std::vector<double> seconds;
    for (int i = 0; i < Writes; ++i) {
        const QString update =
            u"UPDATE Main SET Explanation = '%1' WHERE rowid = %2"_s.arg(i).arg(1 + i * 37);
        seconds.push_back(secondsFor([&] { database.connection().execute(update); }));
        // As long as the copy takes for some of its steps: a write meets it in one of them, or between two.
        std::this_thread::sleep_for(std::chrono::milliseconds(1 + i % 23));
    }
    return seconds;
}

/// A folder in memory, where the system has one: a disk that is busy takes longer for a write than any lock.
QString folderWithoutDisk()
{
    const QString memory = u"/dev/shm"_s;
    return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + u"/quillon-XXXXXX"_s;
}

/// What a person notices of a copy is the longest time for which it kept a write waiting.
void writingWhileCopying(benchmark::State& state)
{
    constexpr double Promised = 0.05;
    reportFailures(state, [&] {
        const QTemporaryDir folder(folderWithoutDisk());
        const QString path = folder.filePath(u"corpus.mdb"_s);
        if (!QFile::copy(corpusPath(Corpus::Default), path))
            throw std::runtime_error("the corpus cannot be copied");
        const auto database = Database::open(path);
        std::vector<double> alone;
        std::vector<double> beside;
        for ([[maybe_unused]] auto round : state) {
            const auto before = secondsOfWrites(*database);
            alone.insert(alone.end(), before.begin(), before.end());
            Copying copying(path);
            const auto meanwhile = secondsOfWrites(*database);
            copying.finish();
            beside.insert(beside.end(), meanwhile.begin(), meanwhile.end());
            state.SetIterationTime(*std::max_element(meanwhile.begin(), meanwhile.end()));
        }
        const auto longest = [](const std::vector<double>& times) {
            return *std::max_element(times.begin(), times.end());
        };
        std::printf(
            "%zu writes of an item: alone %.1f ms in the middle, %.1f ms at most; during a copy %.1f and %.1f ms\n",
            beside.size(), median(alone) * 1e3, longest(alone) * 1e3, median(beside) * 1e3,
            longest(beside) * 1e3);
        reportTimes(
            state,
            {"The longest of 1,500 writes of an item during a kept copy", "the wait that is promised", 1},
            longest(beside), Promised);
    });
}
BENCHMARK(writingWhileCopying)->UseManualTime()->Iterations(3);

constexpr int Lost = 1'000'000;

/// A database in which a million items were deleted, and one of its kind with nothing around it.
class EmptiedDatabase
{
public:
    EmptiedDatabase() : m_folder(QFileInfo(corpusPath(Corpus::Default)).path() + u"/lost-XXXXXX"_s)
    {
        for (const QString& path : {m_folder.filePath(u"lost.mdb"_s), m_folder.filePath(u"floor.mdb"_s)})
            createDatabaseFile(path);
        m_keeping = std::make_unique<kept::Keeping>(
            program.session().reporting,
            kept::KeepingOrder{.keptFolder = m_folder.filePath(u"kept"_s), .fileFolder = {}});
        program.session().keeper = m_keeping.get();
        // There is nothing to paint.
        if (!OpenDbFile(program.session(), m_folder.filePath(u"lost.mdb"_s)))
            throw std::runtime_error("the database cannot be opened");
        floor = Database::open(m_folder.filePath(u"floor.mdb"_s));
        deleteMany();
    }
    ~EmptiedDatabase() { program.session().keeper = nullptr; }
    EmptiedDatabase(const EmptiedDatabase&) = delete;
    EmptiedDatabase& operator=(const EmptiedDatabase&) = delete;

    /// Reads everything that the history holds.
    void readFiles() const
    {
        const kept::Place place(m_folder.filePath(u"kept"_s), m_folder.filePath(u"lost.mdb"_s));
        std::vector<char> part(std::size_t{1} << 18);
        for (const QFileInfo& info : QDir(place.history()).entryInfoList(QDir::Files)) {
            QFile file(info.filePath());
            if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
                throw std::runtime_error("the history cannot be read");
            while (file.read(part.data(), static_cast<qint64>(part.size())) > 0) {
            }
        }
    }

    QuietProgram program;
    std::shared_ptr<Database> floor;

private:
    void deleteMany()
    {
        constexpr int Together = 10'000;
        sqlite::Connection& connection = program.session().OpenDb->connection();
        connection.execute(
            u"INSERT INTO Main WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < "_s +
            QString::number(Lost) +
            u") SELECT '蒸留水の製法' || i, printf('M-%06d-%03d', 100000 + i / 900, 100 + i % 900), "
            u"'水を熱して得た蒸気を冷やし、再び液体にしたもの。' FROM n"_s);
        for (int first = 1; first < Lost; first += Together)
            connection.execute(u"DELETE FROM Main WHERE rowid BETWEEN %1 AND %2"_s.arg(
                QString::number(first), QString::number(first + Together - 1)));
    }

    QTemporaryDir m_folder;
    std::unique_ptr<kept::Keeping> m_keeping;
};

void readAll(LostThings& things, std::size_t expected)
{
    while (things.readOn()) {
    }
    if (things.count() != expected)
        throw std::runtime_error("not all of them are listed");
}

void listingLost(benchmark::State& state)
{
    EmptiedDatabase database;
    measure(state, {"Reading the list of 1,000,000 deleted items", "reading their history's bytes", 0},
            {.prepare = {},
             .operation =
                 [&] {
                     LostThings things(database.program.session());
                     things.ask({});
                     readAll(things, Lost);
                 },
             .prepareFloor = {},
             .floor = [&] { database.readFiles(); }});
}
BENCHMARK(listingLost)->UseManualTime()->Iterations(5);

void searchingLost(benchmark::State& state)
{
    EmptiedDatabase database;
    LostThings things(database.program.session());
    things.ask({});
    readAll(things, Lost);
    measure(state, {"Searching 1,000,000 deleted items for a text", "reading their history's bytes", 0},
            {.prepare = {},
             .operation =
                 [&] {
                     things.ask({.text = u"製法77777"_s});
                     readAll(things, 11);
                 },
             .prepareFloor = {},
             .floor = [&] { database.readFiles(); }});
}
BENCHMARK(searchingLost)->UseManualTime()->Iterations(5);

void puttingBackOfMany(benchmark::State& state)
{
    EmptiedDatabase database;
    Session& session = database.program.session();
    LostThings things(session);
    things.ask({});
    while (things.readOn()) {
    }
    std::size_t oldest = things.count();
    std::size_t ofFloor = oldest;
    measure(state, {"Putting back the oldest of 1,000,000 deleted items", "its INSERT", 0},
            {.prepare = {},
             .operation =
                 [&] {
                     if (!PutBack(session, things, --oldest))
                         throw std::runtime_error("it does not come back");
                 },
             .prepareFloor = {},
             .floor =
                 [&] {
                     database.floor->connection().execute(
                         u"INSERT INTO Main VALUES ('蒸留水の製法', 'M-%1', "
                         u"'水を熱して得た蒸気を冷やし、再び液体にしたもの。')"_s.arg(--ofFloor));
                 }});
}
BENCHMARK(puttingBackOfMany)->UseManualTime()->Iterations(21);

} // namespace

} // namespace quillon::bench

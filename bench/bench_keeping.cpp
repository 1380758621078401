#include "app/base/ports/data_window.h"
#include "app/base/ports/files.h"
#include "app/base/system_files.h"
#include "bench/corpora.h"
#include "bench/pair.h"
#include "bench/quiet_program.h"
#include "bench/working_copies.h"
#include "core/data_records.h"
#include "store/kept/copies.h"
#include "store/kept/keeping.h"
#include "store/record_set.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/form_window.h"
#include "ui/widgets/report_list.h"

#include <QAction>
#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <QHeaderView>
#include <QTemporaryDir>

#include <memory>
#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

constexpr int Updates = 51;
constexpr int Selected = 10'000;
constexpr int FirstRow = 60'000; // behind what other rows have deleted

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

} // namespace

} // namespace quillon::bench

#include "app/base/ports/data_selection.h"
#include "app/base/titles.h"
#include "bench/paint_watch.h"
#include "bench/pair.h"
#include "bench/searched_corpus.h"
#include "core/data_selection.h"
#include "store/record_set.h"
#include "store/session.h"
#include "ui/widgets/report_list.h"

#include <QApplication>

#include <stdexcept>
#include <string>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

struct PlainRow {
    QString name;
    QString kind;
    QString identifier;
};

/// The window that shows what a search has found.
class ResultWindow
{
public:
    explicit ResultWindow(Session& session) : m_session(session)
    {
        window().showModeless();
        QCoreApplication::processEvents();
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->objectName() == u"frmDataSelect")
                m_list = widget->findChild<ReportList*>(u"lsvData"_s);
        }
        if (m_list == nullptr)
            throw std::runtime_error("the result window lacks its list");
    }

    DataSelection& window() { return m_session.windows.dataSelection(); }
    const ReportModel& rows() const { return m_list->rows(); }

    void clear()
    {
        window().clearRows();
        QCoreApplication::processEvents();
    }
    /// Runs `fill` and waits until the list has been painted.
    template <class Fill> void showing(Fill&& fill)
    {
        const PaintWatch watch(*m_list->viewport());
        fill();
        window().setCaption(u"検索結果"_s);
        // The list lays itself out in one round of events and is painted in a later one.
        for (int rounds = 0; !watch.painted(); ++rounds) {
            if (rounds == 10)
                throw std::runtime_error("the list was not painted");
            QCoreApplication::processEvents();
        }
    }

private:
    Session& m_session;
    ReportList* m_list = nullptr;
};

void listHits(benchmark::State& state)
{
    reportFailures(state, [&] {
        SearchedCorpus corpus;
        Session& session = corpus.session();
        std::vector<std::shared_ptr<RecordSet>> hits;
        for (const auto& kind : {session.RsMain, session.RsRefDoc, session.RsRefFile})
            hits.push_back(corpus.hits(kind, u"が"_s));
        ResultWindow result(session);
        const auto list = [&] {
            for (const auto& ofOneKind : hits)
                CreateDataList(session, ofOneKind, SelectionUse::Show, ListFill::Append);
        };
        result.showing(list);
        std::vector<PlainRow> plain;
        for (int row = 0; row < result.rows().rowCount(); ++row)
            plain.push_back({result.rows().text(row, 0).toString(), result.rows().text(row, 1).toString(),
                             result.rows().text(row, 2).toString()});
        const auto listPlain = [&] {
            {
                const auto rows = result.window().fillRows({});
                for (const PlainRow& row : plain)
                    rows->append(row.name, row.kind, row.identifier);
                rows->finish();
            }
            result.window().showModeless();
            result.window().setStatus(1, titles::DisplayMode);
            result.window().setStatus(3, u"表示データ数："_s + QString::number(plain.size()));
        };
        const std::string text = "Showing " + std::to_string(plain.size()) + " hits, until painted";
        measure(state, {text.c_str(), "the same list filled from a plain array", 2},
                {.prepare = [&] { result.clear(); },
                 .operation = [&] { result.showing(list); },
                 .prepareFloor = [&] { result.clear(); },
                 .floor = [&] { result.showing(listPlain); }});
    });
}
BENCHMARK(listHits)->UseManualTime()->Iterations(15);

} // namespace

} // namespace quillon::bench

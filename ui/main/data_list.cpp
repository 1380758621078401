#include "ui/main/data_list.h"

#include "app/base/reporting.h"
#include "core/item_lists.h"
#include "store/data_kinds.h"
#include "store/filter_result.h"
#include "store/lookup/data_names.h"
#include "store/record_set.h"
#include "store/session.h"
#include "ui/main/fill_progress.h"
#include "ui/widgets/report_model.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

const QString Location = u"CreateDataListMain"_s;

} // namespace

DataListFiller::DataListFiller(Session& session, ReportModel& rows, FillProgress& progress)
    : m_session(session), m_rows(rows), m_progress(progress)
{
}

void DataListFiller::ShowFixedNode(FixedNode node)
{
    Session& s = m_session;
    switch (node) {
    case FixedNode::AllData:
        CreateDataListMain(s.RsMain, false, {});
        CreateDataListMain(s.RsRefDoc, true, {});
        CreateDataListMain(s.RsRefFile, true, {});
        break;
    case FixedNode::Definitions:
        CreateDataListMain(s.RsMain, false, {});
        break;
    case FixedNode::Documents:
        CreateDataListMain(s.RsRefDoc, false, {});
        break;
    case FixedNode::Files:
        CreateDataListMain(s.RsRefFile, false, {});
        break;
    case FixedNode::UncategorisedDefinitions:
        ShowUncategorisedList(s.RsMain);
        break;
    case FixedNode::UncategorisedDocuments:
        ShowUncategorisedList(s.RsRefDoc);
        break;
    case FixedNode::UncategorisedFiles:
        ShowUncategorisedList(s.RsRefFile);
        break;
    case FixedNode::UndefinedDefinitions: {
        const auto rows = GetFilterResult(s.reporting, s.RsMain, u"Explanation = '未定義'"_s);
        m_rows.clear();
        FillListFromRows(rows, {});
        break;
    }
    case FixedNode::Categories:
    case FixedNode::None:
        m_rows.clear();
        break;
    }
}

void DataListFiller::ShowCategory(const QString& key)
{
    m_rows.clear();
    FillListFromRows(membersOf(m_session, key), u"NO"_s);
    FillListFromRows(membersBelow(m_session, key), u"YES"_s);
}

bool DataListFiller::CreateDataListMain(const std::shared_ptr<RecordSet>& table, bool append,
                                        const QString& mark)
{
    bool filled = false;
    guarded(m_session.reporting, Location, [&] {
        if (!append)
            m_rows.clear();
        RecordSet& recordSet = required(table);
        if (!recordSet.hasRows())
            return;
        m_progress.start(recordSet.recordCount());
        ReportModel::Fill fill(m_rows);
        recordSet.forEachRow({0, 1}, [&](const RecordSet::Row& row) {
            m_progress.advance();
            const QStringView identifier = row.text(1);
            fill.append({row.text(0), shortKindName(identifier), identifier, mark});
        });
        m_progress.finish();
        fill.finish();
        filled = true;
    });
    return filled;
}

void DataListFiller::FillListFromRows(const std::shared_ptr<RecordSet>& recordSet, const QString& mark)
{
    guarded(m_session.reporting, Location, [&] {
        RecordSet& members = required(recordSet);
        if (!members.hasRows())
            return;
        m_progress.start(members.recordCount());
        DataNameLookup names(m_session);
        ReportModel::Fill fill(m_rows);
        members.forEachRow({1}, [&](const RecordSet::Row& row) {
            m_progress.advance();
            const QStringView identifier = row.text(0);
            fill.append({names.name(identifier), shortKindName(identifier), identifier, mark});
        });
        m_progress.finish();
        fill.finish();
        names.tellFailures();
    });
}

void DataListFiller::ShowUncategorisedList(const std::shared_ptr<RecordSet>& table)
{
    guarded(m_session.reporting, Location, [&] {
        m_rows.clear();
        RecordSet& data = required(table);
        if (!data.hasRows())
            return;
        // Without memberships nothing is searched, and there is no progress to speak of.
        const bool searches = required(m_session.RsCategory).hasRows();
        const IdentifierSet categorised = categorisedIdentifiers(m_session);
        if (searches)
            m_progress.prepare(data.recordCount());
        QString kind; // of the first row, for all of them
        bool first = true;
        ReportModel::Fill fill(m_rows);
        data.forEachRow({0, 1}, [&](const RecordSet::Row& row) {
            if (searches)
                m_progress.advance();
            const QStringView identifier = row.text(1);
            if (first)
                kind = shortKindName(identifier);
            first = false;
            if (!categorised.contains(identifier))
                fill.append({row.text(0), kind, identifier});
        });
        fill.finish();
    });
}

} // namespace quillon

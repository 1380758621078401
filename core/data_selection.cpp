#include "core/data_selection.h"

#include "app/base/ports/data_selection.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "store/data_kinds.h"
#include "store/lookup/data_names.h"
#include "store/record_set.h"
#include "store/session.h"

#include <array>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// Knows for which identifiers `GetDataName` answers the name of the very row that is listed, so that it need not be
/// asked: those of the row's own table, where no two rows have the same one.
class OwnNames
{
public:
    OwnNames(const Session& session, const RecordSet& data)
        : m_unique(data.database().isAsDeclared(data.table()))
    {
        for (const DataKind& kind : data_kinds::all())
            m_own[data_kinds::positionOf(kind)] = isOf(session.*kind.recordSet, data);
    }

    bool isFor(QStringView identifier) const
    {
        // Nothing is equal to a field that holds nothing, and no criteria text can hold a quote.
        if (!m_unique || identifier.isEmpty() || identifier.contains(u'\''))
            return false;
        return m_own[data_kinds::positionOf(kindForNames(identifier))];
    }

private:
    static bool isOf(const std::shared_ptr<RecordSet>& table, const RecordSet& data)
    {
        return table && &table->table() == &data.table() && &table->database() == &data.database();
    }

    bool m_unique;
    std::array<bool, data_kinds::Count> m_own = {}; // whether the data are of this kind's table
};

} // namespace

qint16 CreateDataList(Session& session, const std::shared_ptr<RecordSet>& recordSet, SelectionUse use,
                      ListFill fill, const QString& searched)
{
    guarded(session.reporting, u"CreateDataList"_s, [&] {
        // Otherwise choosing a datum that was only to be shown would link it.
        if (use == SelectionUse::Show)
            session.LinkSourceMode = false;
        DataSelection& window = session.windows.dataSelection();
        if (fill == ListFill::Replace)
            window.clearRows();
        RecordSet& data = required(recordSet);
        if (data.recordCount() > 0) {
            const auto rows = window.fillRows(searched);
            const OwnNames ownNames(session, data);
            DataNameLookup names(session);
            data.forEachName([&](QStringView name, QStringView identifier) {
                if (ownNames.isFor(identifier))
                    rows->append(name, shortKindName(identifier), identifier);
                else
                    rows->append(names.name(identifier), shortKindName(identifier), identifier);
            });
            rows->finish();
            names.tellFailures();
        }
        if (use == SelectionUse::Show) {
            window.showModeless();
            window.setStatus(1, titles::DisplayMode);
        } else {
            window.setCaption(window.caption() + u" - リンク先を選択してください。"_s);
            window.showModal();
            // The window is gone by now: these texts go to a new one, which stays hidden until the next use.
            session.windows.dataSelection().setStatus(1, u"リンクモード"_s);
        }
        session.windows.dataSelection().setStatus(3,
                                                  u"表示データ数："_s + QString::number(data.recordCount()));
    });
    return 0;
}

} // namespace quillon

#include "core/data_selection.h"

#include "app/base/ports/data_selection.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "core/name_lookup.h"
#include "store/identifiers.h"
#include "store/record_set.h"
#include "store/session.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

qint16 CreateDataList(Session& session, const std::shared_ptr<RecordSet>& recordSet, SelectionUse use,
                      ListFill fill)
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
            const auto rows = window.fillRows();
            DataNameLookup names(session);
            data.forEachRow({1}, [&](const RecordSet::Row& row) {
                const QString identifier = row.text(0).toString();
                const QString name = names.name(identifier);
                const QString kind = GetDivName(session, identifier, DivName::ShortName);
                rows->append(name, kind, identifier);
            });
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

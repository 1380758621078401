#include "core/listed_datum.h"

#include "app/base/ports/dialogs.h"
#include "app/base/titles.h"
#include "store/data_kinds.h"
#include "store/lookup/data_names.h"
#include "store/record_set.h"
#include "store/session.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

std::optional<ListedDatum> presentDatum(Session& session, const QString& identifier)
{
    const std::optional<QString> name = readDataName(session, identifier);
    if (!name)
        return std::nullopt;
    return ListedDatum{.identifier = identifier, .name = *name};
}

bool isStillThere(Session& session, const ListedDatum& datum)
{
    RecordSet& rows = required(session.*kindForNames(datum.identifier).recordSet);
    return rows.goTo(data_field::Object_ID, datum.identifier) && rows.field(data_field::Name) == datum.name;
}

void tellNotFound(Session& session, qsizetype count)
{
    if (count == 0)
        return;
    QString text = u"指定されたデータが見つかりませんでした。"_s;
    if (count > 1)
        text += u"\r\n("_s + QString::number(count) + u" 件)"_s;
    session.dialogs.messageBox({.text = text, .title = titles::DataResearch});
}

} // namespace quillon

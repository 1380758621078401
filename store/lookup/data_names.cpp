#include "store/lookup/data_names.h"

#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "store/data_kinds.h"
#include "store/record_set.h"
#include "store/session.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

QString GetDataName(Session& session, const QString& identifier)
{
    QString name;
    guarded(session.reporting, u"GetDataName"_s, [&] {
        RecordSet& rows = required(session.*kindForNames(identifier).recordSet);
        name = rows.goTo(data_field::Object_ID, identifier) ? rows.field(0) : titles::Unknown;
    });
    return name;
}

DataNameLookup::DataNameLookup(Session& session, qint64 lookUps) : m_session(session)
{
    // Finding one row anywhere in the file takes as long as reading so many one after the other.
    constexpr qint64 RowsPerLookUp = 4;
    for (const DataKind& kind : data_kinds::all()) {
        const std::shared_ptr<RecordSet>& recordSet = session.*kind.recordSet;
        Table& table = m_tables[data_kinds::positionOf(kind)];
        table.single = NameLookup(recordSet, 0, 1);
        if (lookUps > 0 && recordSet && recordSet->roughCount() < lookUps * RowsPerLookUp)
            table.all.emplace(*recordSet);
    }
}

QString DataNameLookup::name(QStringView identifier)
{
    return name(m_tables[data_kinds::positionOf(kindForNames(identifier))], identifier);
}

QString DataNameLookup::name(Table& table, QStringView identifier)
{
    if (const std::optional<QStringView> known = table.all ? table.all->find(identifier) : std::nullopt)
        return QString::fromRawData(known->data(), known->size());
    if (!table.single.canLookUp(identifier))
        return GetDataName(m_session, identifier.toString());
    return table.all ? titles::Unknown : table.single.name(identifier);
}

} // namespace quillon

#include "store/lookup/data_names.h"

#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "store/record_set.h"
#include "store/session.h"
#include "store/sqlite/transaction.h"

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

const QString GettingDataName = u"GetDataName"_s;

QString nameOfDatum(Session& session, const QString& identifier)
{
    RecordSet& rows = required(session.*kindForNames(identifier).recordSet);
    // Finding the row and reading it lock the file once.
    const sqlite::Transaction reading(rows.database().connection(), sqlite::Transaction::Purpose::Reading);
    return rows.goTo(data_field::Object_ID, identifier) ? rows.field(0) : titles::Unknown;
}

} // namespace

QString GetDataName(Session& session, const QString& identifier)
{
    return readDataName(session, identifier).value_or(QString());
}

std::optional<QString> readDataName(Session& session, const QString& identifier)
{
    std::optional<QString> name;
    guarded(session.reporting, GettingDataName, [&] { name = nameOfDatum(session, identifier); });
    return name;
}

DataNameLookup::DataNameLookup(Session& session, qint64 lookUps) : m_session(session)
{
    // Finding one row anywhere in the file takes as long as reading so many one after the other.
    constexpr qint64 RowsPerLookUp = 4;
    for (const DataKind& kind : data_kinds::all()) {
        Table& table = m_tables[data_kinds::positionOf(kind)];
        table.rows = session.*kind.recordSet;
        table.single = NameLookup(table.rows, data_field::Name, data_field::Object_ID);
        if (lookUps > 0 && table.rows && table.rows->roughCount() < lookUps * RowsPerLookUp)
            table.all.emplace(*table.rows);
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
        return searchedName(identifier.toString());
    if (!table.all && shouldReadAll(table)) {
        table.all.emplace(*table.rows);
        return name(table, identifier);
    }
    return table.all && table.all->isComplete() ? titles::Unknown : table.single.name(identifier);
}

QString DataNameLookup::searchedName(const QString& identifier)
{
    QString name;
    guardedBy([this](const Error& failure) { m_failures.push_back(failure); },
              [&] { name = nameOfDatum(m_session, identifier); });
    return name;
}

void DataNameLookup::tellFailures()
{
    for (const Error& failure : std::exchange(m_failures, {}))
        ReportError(m_session.reporting, failure, GettingDataName);
}

bool DataNameLookup::shouldReadAll(Table& table)
{
    constexpr int Few = 16;
    return ++table.lookUps == Few && !table.rows->database().isAsDeclared(table.rows->table());
}

} // namespace quillon

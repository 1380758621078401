#pragma once

#include "store/data_kinds.h"
#include "store/lookup/name_lookup.h"

#include <QString>
#include <QStringView>

#include <array>
#include <memory>
#include <optional>

namespace quillon
{

/// The name of a datum, "不明" when there is no such datum. An unknown kind is looked up among the definitions.
QString GetDataName(Session& session, const QString& identifier);

/// `GetDataName` for many identifiers.
class DataNameLookup
{
public:
    /// `lookUps`: about how many there will be, if there may be many of them.
    explicit DataNameLookup(Session& session, qint64 lookUps = 0);
    /// The name, valid as long as this lives.
    QString name(QStringView identifier);

private:
    /// One of the data tables; its names are read all at once where this takes less time than looking them up.
    struct Table {
        std::shared_ptr<RecordSet> rows;
        NameLookup single;
        std::optional<TableNames> all;
        int lookUps = 0;
    };
    QString name(Table& table, QStringView identifier);
    /// Whether it is time to read all names of a table in which look-ups may find no index to go by.
    static bool shouldReadAll(Table& table);

    Session& m_session;
    std::array<Table, data_kinds::Count> m_tables; // in the order of the kinds
};

} // namespace quillon

#pragma once

#include "app/base/error.h"
#include "store/data_kinds.h"
#include "store/lookup/name_lookup.h"

#include <QString>
#include <QStringView>

#include <array>
#include <memory>
#include <optional>
#include <vector>

namespace quillon
{

/// The name of a datum, "不明" when there is no such datum. An unknown kind is looked up among the definitions.
QString GetDataName(Session& session, const QString& identifier);
/// The same; nothing after a failure, which has been reported as "GetDataName". For whoever must not go on then.
std::optional<QString> readDataName(Session& session, const QString& identifier);

/// `GetDataName` for many identifiers, also in the middle of a pass over the file: no box may stand open there, so that
/// failures are told afterwards.
class DataNameLookup
{
public:
    /// `lookUps`: about how many there will be, if there may be many of them.
    explicit DataNameLookup(Session& session, qint64 lookUps = 0);
    /// The name, valid as long as this lives.
    QString name(QStringView identifier);
    /// Reports what has failed so far as `GetDataName` would have. To be called when the pass is over.
    void tellFailures();

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

    QString searchedName(const QString& identifier);

    Session& m_session;
    std::vector<Error> m_failures;
    std::array<Table, data_kinds::Count> m_tables; // in the order of the kinds
};

} // namespace quillon

#include "store/row_pieces.h"

#include "store/database.h"
#include "store/quoted.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

RowPieces::RowPieces(const RecordSet& rows, std::initializer_list<int> fields)
{
    QString selected = u"rowid"_s;
    for (const int field : fields)
        selected += u", "_s + quoted(rows.table().fields[static_cast<std::size_t>(field)].name);
    m_statement = rows.database().connection().prepareOwn(u"SELECT "_s + selected + u" FROM "_s +
                                                          quoted(rows.table().name) +
                                                          u" WHERE rowid > ? ORDER BY rowid"_s);
}

} // namespace quillon

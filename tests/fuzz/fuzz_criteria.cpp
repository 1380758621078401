// Criteria texts: refused with one of the two errors, or compiled to a condition that SQLite can read and run.
#include "app/base/error.h"
#include "store/criteria.h"
#include "store/database.h"
#include "store/record_set.h"
#include "store/schema.h"
#include "tests/fuzz/fuzz.h"

#include <QTemporaryDir>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

std::shared_ptr<RecordSet> someRows()
{
    static const QTemporaryDir folder;
    const auto database = Database::create(folder.filePath(u"QUILLON.mdb"_s));
    database->execute(schema::Main().statement);
    auto rows = RecordSet::openTable(database, schema::Main());
    for (const QString& name : {u"水"_s, u"ﾐｽﾞ*?#[a-z]"_s, u"Water 123"_s}) {
        rows->addNew();
        rows->setField(0, name);
        rows->setField(1, u"M-991231-00%1"_s.arg(rows->recordCount()));
        rows->setField(2, name.repeated(10));
        rows->update();
    }
    return rows;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::shared_ptr<RecordSet> rows = someRows();
    const QString text = textOf(data, size);
    try {
        require(rows->filtered(text)->recordCount() <= 3, "no more rows match than there are");
    } catch (const Error& error) {
        require(error.number == errors::CriteriaSyntax || error.number == errors::UnknownField,
                "a criteria text is refused as such");
    }
    return 0;
}

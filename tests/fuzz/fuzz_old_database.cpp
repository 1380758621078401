// Damaged files of the older engine: read as far as they can be, told, or refused; never more.
// The first byte says what the rest is. 0 to 3: changes of a whole file of that form, four bytes and the new bytes each:
// where (three bytes), how many, and whether the rest is cut off (the highest bit of the fourth). Anything else: a file.
#include "app/base/error.h"
#include "store/old_format/old_database.h"
#include "tests/fuzz/fuzz.h"
#include "tests/old_files/old_file_writer.h"

#include <algorithm>
#include <array>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::old_format;
using namespace quillon::testing;

namespace
{

QByteArray wholeFile(const OldFileForm& form)
{
    auto tables = oldTables(2);
    tables[0].rows = {{u"水"_s, u"M-991231-001"_s, u"液体"_s},
                      {u"火"_s, u"M-991231-002"_s, std::nullopt},
                      {u""_s, u"M-991231-003"_s, u"長い"_s.repeated(60)}};
    tables[1].rows = {{u"文献"_s, u"R-991231-001"_s, u"短い本文"_s},
                      {u"一行"_s, u"R-991231-002"_s, u"本文です。"_s.repeated(40)},
                      {std::nullopt, u"R-991231-003"_s, u"長い本文です。"_s.repeated(300)}};
    return writeOldFile(tables, form).bytes;
}

QByteArray changedFile(std::uint8_t which, const std::uint8_t* data, std::size_t size)
{
    static const std::array<QByteArray, 4> files = {
        wholeFile({.format = 3}), wholeFile({.format = 3, .hasMovedRows = true}),
        wholeFile({.format = 4, .isCompressed = true}), wholeFile({.format = 4, .hasMovedRows = true})};
    QByteArray file = files.at(which);
    while (size >= 4) {
        const auto at = static_cast<qsizetype>(data[0] | data[1] << 8 | data[2] << 16) % (file.size() + 1);
        const auto count = std::min<std::size_t>(data[3] % 16, size - 4);
        const bool isEnd = (data[3] & 0x80) != 0;
        for (std::size_t i = 0; i < count && at + static_cast<qsizetype>(i) < file.size(); ++i)
            file[at + static_cast<qsizetype>(i)] = static_cast<char>(data[4 + i]);
        if (isEnd)
            file.truncate(at);
        data += 4 + count;
        size -= 4 + count;
    }
    return file;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QByteArray file =
        data[0] < 4 ? changedFile(data[0], data + 1, size - 1)
                    : QByteArray(reinterpret_cast<const char*>(data) + 1, static_cast<qsizetype>(size) - 1);
    try {
        OldDatabase database(file);
        QStringList names = database.tableNames();
        require(names.size() <= file.size(), "there are no more tables than bytes");
        names.removeDuplicates();
        constexpr qsizetype Most = 10; // of our tables there are fewer, and nobody asks for others
        for (const QString& name : names.first(std::min(names.size(), Most))) {
            const qint64 before = database.losses().count();
            const auto table = database.table(name);
            require(table || database.losses().count() > before, "a table that cannot be read is a loss");
            if (!table)
                continue;
            qint64 rows = 0;
            qint64 units = 0;
            database.forEachRow(name, *table, [&](const OldDatabase::Row& row, bool) {
                ++rows;
                for (const auto& field : row)
                    units += field ? field->size() : 0;
            });
            require(rows <= file.size(), "there are no more rows than bytes");
            // A damaged definition may name a field twice, and no more often than it has columns.
            require(units <= file.size() * static_cast<qint64>(table->columns.size() + 1),
                    "there is no more text than bytes");
            require(rows == table->rowCount || database.losses().count() > before,
                    "rows that lack are a loss");
        }
    } catch (const Error& error) {
        require(error.number == errors::NotADatabase && !error.description.isEmpty(), "a refusal says why");
    }
    return 0;
}

// Damaged databases: opened, read, written, or refused with a reason; never more.
// The input is a list of changes of a whole database or of its journal, four bytes and the new bytes each: where (two
// bytes; the highest bit takes the journal), how many, and whether the rest is cut off.
#include "app/base/error.h"
#include "tests/faults/fault_world.h"
#include "tests/fuzz/fuzz.h"

#include <QFile>

#include <algorithm>

#include <sqlite3.h>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

void execute(sqlite3* file, const QByteArray& sql)
{
    require(sqlite3_exec(file, sql.constData(), nullptr, nullptr, nullptr) == SQLITE_OK, sql.constData());
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    require(file.open(QIODevice::ReadOnly), "the file is there");
    return file.readAll();
}

void put(const QString& path, const QByteArray& content)
{
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) && file.write(content) == content.size(), "there is room");
}

/// A small database with a journal that is to be played back.
struct Whole {
    QByteArray database;
    QByteArray journal;
};

Whole makeWhole(const QString& folder)
{
    const QString path = folder + u"/QUILLON.mdb"_s;
    prepareFolder(folder);
    sqlite3* file = nullptr;
    require(sqlite3_open(path.toUtf8().constData(), &file) == SQLITE_OK, "the database opens");
    // The smallest pages: most of the file is structure then.
    execute(file, "PRAGMA page_size = 512");
    execute(file, "UPDATE RefDoc SET Explanation = substr(Explanation, 1, 700)");
    execute(file, "VACUUM");
    Whole whole;
    execute(file, "PRAGMA cache_size = 2");
    execute(file, "BEGIN");
    execute(file, "DELETE FROM Link");
    execute(file, "UPDATE Main SET Name = 'x', Explanation = zeroblob(300)");
    whole.database = contentOf(path);
    whole.journal = contentOf(path + u"-journal"_s);
    execute(file, "ROLLBACK");
    sqlite3_close(file);
    return whole;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QTemporaryDir folder;
    static const Whole whole = makeWhole(folder.path());
    QByteArray database = whole.database;
    QByteArray journal = size % 2 == 0 ? whole.journal : QByteArray();
    while (size >= 4) {
        const auto where = static_cast<unsigned>(data[0] << 8 | data[1]);
        QByteArray& changed = (where & 0x8000U) != 0 ? journal : database;
        const auto at = static_cast<qsizetype>(where & 0x7FFFU);
        const auto count = std::min<std::size_t>(data[2] % 16, size - 4);
        const bool isEnd = data[3] == 0xFF;
        for (std::size_t i = 0; i < count && at + static_cast<qsizetype>(i) < changed.size(); ++i)
            changed[at + static_cast<qsizetype>(i)] = static_cast<char>(data[4 + i]);
        if (isEnd)
            changed.truncate(at);
        data += 4 + count;
        size -= 4 + count;
    }
    const QString path = folder.filePath(u"QUILLON.mdb"_s);
    put(path, database);
    if (journal.isEmpty())
        QFile::remove(path + u"-journal"_s);
    else
        put(path + u"-journal"_s, journal);

    FaultWorld world(folder.path());
    const auto outcome = world.open(u"QUILLON.mdb"_s);
    require(outcome != FaultWorld::Outcome::Silent, "a file that is not opened is told about");
    require(world.isOfOnePiece(), "all record sets are those of the open database");
    if (outcome != FaultWorld::Outcome::Done)
        return 0;
    try {
        world.seen();
    } catch (const Error&) { // damage is found where it is read
    }
    Step step{.kind = Step::Kind::Register,
              .identifier = u"M-001231-001"_s,
              .other = {},
              .name = u"水"_s,
              .content = u"液体"_s,
              .many = {}};
    require(world.perform(step) != FaultWorld::Outcome::Silent, "what is not registered is told about");
    for (const auto kind : {Step::Kind::Delete, Step::Kind::Update}) {
        step.kind = kind;
        world.perform(step);
    }
    return 0;
}

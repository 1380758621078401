#include "bench/corpus/corpus.h"

#include "store/database.h"
#include "store/schema.h"
#include "store/sqlite/connection.h"
#include "store/sqlite/statement.h"
#include "store/sqlite/transaction.h"

#include <QStringList>

#include <memory>
#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace quillon::corpus
{

namespace
{

/// Rows on their way into a database, in large transactions.
class DatabaseRows : public RowSink
{
public:
    explicit DatabaseRows(Database& database) : m_connection(database.connection()) {}

    void beginTable(const TableSchema& table) override
    {
        const QStringList places(static_cast<qsizetype>(table.fields.size()), u"?"_s);
        m_insert = m_connection.prepareOwn(u"INSERT INTO \""_s + table.name + u"\" VALUES ("_s +
                                           places.join(u", "_s) + u')');
    }

    void addRow(std::initializer_list<QStringView> fields) override
    {
        constexpr int RowsPerTransaction = 100'000;
        if (!m_transaction)
            m_transaction.emplace(m_connection);
        int position = 0;
        for (const QStringView field : fields)
            m_insert->bind(++position, field);
        m_insert->run();
        if (++m_rows % RowsPerTransaction == 0)
            save();
    }

    void save()
    {
        if (m_transaction)
            m_transaction->commit();
        m_transaction.reset();
    }

private:
    sqlite::Connection& m_connection;
    std::unique_ptr<sqlite::Statement> m_insert;
    std::optional<sqlite::Transaction> m_transaction;
    int m_rows = 0;
};

} // namespace

void writeCorpus(const Options& options, const QString& path)
{
    const std::shared_ptr<Database> database = Database::create(path);
    for (const TableSchema* table : schema::all())
        database->execute(table->statement);
    DatabaseRows rows(*database);
    makeCorpus(options, rows);
    rows.save();
}

} // namespace quillon::corpus

#pragma once

#include "store/database.h"
#include "store/schema.h"
#include "tests/support/call_log.h"
#include "tests/support/connection_handle.h"

#include <QString>
#include <QStringList>

#include <sqlite3.h>

#include <utility>

namespace quillon::testing
{

/// Writes into a log, as long as it lives, what a database's own connection writes into the file, row by row:
/// "insert Link M-991231-001|M-991231-002", "update Main …" (the new row), "delete Main …", and "commit" when a durable
/// write ends. Made once the tables exist.
class JournaledWrites
{
public:
    JournaledWrites(Database& database, CallLog log)
        : m_database(database), m_handle(ConnectionHandle::of(database)), m_log(std::move(log))
    {
        sqlite3_create_function_v2(m_handle, "journal", 1, SQLITE_UTF8 | SQLITE_INNOCUOUS, this, noteRow,
                                   nullptr, nullptr, nullptr);
        const auto noteCommit = [](void* self) {
            static_cast<JournaledWrites*>(self)->m_log.note(QStringLiteral("commit"));
            return 0;
        };
        sqlite3_commit_hook(m_handle, noteCommit, this);
        for (const TableSchema* table : schema::all()) {
            for (const QString& operation :
                 {QStringLiteral("insert"), QStringLiteral("update"), QStringLiteral("delete")})
                makeTrigger(*table, operation);
        }
        m_log.take();
    }
    ~JournaledWrites()
    {
        for (const QString& trigger : m_triggers)
            m_database.connection().execute(QStringLiteral("DROP TRIGGER temp.") + trigger);
        sqlite3_commit_hook(m_handle, nullptr, nullptr);
    }
    JournaledWrites(const JournaledWrites&) = delete;
    JournaledWrites& operator=(const JournaledWrites&) = delete;

private:
    void makeTrigger(const TableSchema& table, const QString& operation)
    {
        const QString row =
            operation == QStringLiteral("delete") ? QStringLiteral("OLD.") : QStringLiteral("NEW.");
        QStringList fields;
        for (const FieldSchema& field : table.fields)
            fields << QStringLiteral("coalesce(") + row + field.name + QStringLiteral(", '')");
        m_triggers << QStringLiteral("journal_%1_%2").arg(operation, table.name);
        m_database.connection().execute(
            QStringLiteral(
                "CREATE TEMP TRIGGER %1 AFTER %2 ON main.\"%3\" BEGIN SELECT journal('%2 %3 ' || %4); END")
                .arg(m_triggers.last(), operation, table.name, fields.join(QStringLiteral(" || '|' || "))));
    }

    static void noteRow(sqlite3_context* context, int /*count*/, sqlite3_value** values)
    {
        const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(values[0]));
        static_cast<JournaledWrites*>(sqlite3_user_data(context))->m_log.note(QString::fromUtf8(text));
    }

    Database& m_database;
    sqlite3* m_handle;
    CallLog m_log;
    QStringList m_triggers;
};

} // namespace quillon::testing

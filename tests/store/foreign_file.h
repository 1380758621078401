#pragma once

#include <QString>
#include <QTest>

#include <sqlite3.h>

namespace quillon::testing
{

/// A database file as another program makes it: nothing of the store stands between the test and SQLite.
class ForeignFile
{
public:
    explicit ForeignFile(const QString& path)
    {
        if (sqlite3_open(path.toUtf8().constData(), &m_handle) != SQLITE_OK)
            qFatal("cannot make the file");
    }
    ~ForeignFile() { sqlite3_close(m_handle); }
    ForeignFile(const ForeignFile&) = delete;
    ForeignFile& operator=(const ForeignFile&) = delete;

    sqlite3* handle() const { return m_handle; }

    ForeignFile& run(const char* sql)
    {
        char* message = nullptr;
        if (sqlite3_exec(m_handle, sql, nullptr, nullptr, &message) != SQLITE_OK)
            qFatal("%s: %s", sql, message);
        return *this;
    }

    /// The rows of a question, the columns of each joined by "|".
    QStringList ask(const char* sql)
    {
        QStringList rows;
        char* message = nullptr;
        const auto take = [](void* result, int count, char** values, char**) {
            QStringList columns;
            for (int i = 0; i < count; ++i)
                columns << QString::fromUtf8(values[i]);
            *static_cast<QStringList*>(result) << columns.join(u'|');
            return 0;
        };
        if (sqlite3_exec(m_handle, sql, take, &rows, &message) != SQLITE_OK)
            qFatal("%s: %s", sql, message);
        return rows;
    }

private:
    sqlite3* m_handle = nullptr;
};

} // namespace quillon::testing

#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

struct sqlite3;
struct sqlite3_stmt;

namespace quillon::bench
{

/// A database file with nothing of the program around it: what the floors are measured with.
/// Failures are `std::runtime_error`.
class BareDatabase
{
public:
    explicit BareDatabase(const QString& path);
    ~BareDatabase();
    BareDatabase(const BareDatabase&) = delete;
    BareDatabase& operator=(const BareDatabase&) = delete;

    sqlite3* handle() const { return m_handle; }

private:
    sqlite3* m_handle = nullptr;
};

/// A prepared statement of a bare database.
class BareStatement
{
public:
    BareStatement(const BareDatabase& database, const char* sql);
    ~BareStatement();
    BareStatement(const BareStatement&) = delete;
    BareStatement& operator=(const BareStatement&) = delete;

    void bind(int position, const QString& text);
    bool step();
    void reset();
    QStringView text(int column) const;

private:
    sqlite3* m_handle;
    sqlite3_stmt* m_statement = nullptr;
};

/// What has been read from texts, so that the compiler cannot leave the reading out.
class Touched
{
public:
    Touched() = default;
    ~Touched();
    Touched(const Touched&) = delete;
    Touched& operator=(const Touched&) = delete;

    void text(QStringView text)
    {
        for (const QChar character : text)
            m_sum += character.unicode();
    }

private:
    quint64 m_sum = 0;
};

/// Steps through all rows and touches the texts of the first `columns` columns; returns the number of rows.
int readAll(BareStatement& statement, int columns);

} // namespace quillon::bench

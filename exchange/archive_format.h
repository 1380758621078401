#pragma once

#include "exchange/stored_row.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <vector>

namespace quillon::exchange::archive
{

// The names of what an archive consists of.
inline const QString ManifestName = QStringLiteral("manifest.json");
inline const QString TablesFolder = QStringLiteral("tables");
inline const QString FilesFolder = QStringLiteral("RefFile");

/// What the manifest says of the rows of a table.
struct Table {
    const TableSchema* schema = nullptr;
    qint64 rows = 0;
    qint64 bytes = 0;
    QByteArray sha256; // in hexadecimal digits
};

/// What it says of a file.
struct File {
    QString name;
    qint64 bytes = 0;
    QByteArray sha256;
};

struct Manifest {
    std::vector<Table> tables; // the seven in their order
    std::vector<File> files;   // in the order of their names

    bool hasRowsOf(const TableSchema& table) const
    {
        return std::any_of(tables.begin(), tables.end(),
                           [&](const Table& each) { return each.schema == &table && each.rows > 0; });
    }
};

/// A table's file within the archive.
QString fileOf(const TableSchema& table);

QByteArray manifestText(const Manifest& manifest);
/// Throws `Refused` for anything else than a whole manifest of this kind of archive.
Manifest readManifest(QByteArrayView text);

/// One line, with its line feed.
void appendRow(QByteArray& lines, const TableSchema& table, const StoredRow& row);
/// Nothing when the line is no row of this table.
std::optional<StoredRow> readRow(QByteArrayView line, const TableSchema& table);

} // namespace quillon::exchange::archive

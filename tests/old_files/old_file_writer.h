#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace quillon::testing
{

/// A table as a file of the older engine holds it.
struct OldTable {
    struct Column {
        QString name;
        int width = 0; // characters; 0: a long text
    };
    using Row = std::vector<std::optional<QString>>;

    QString name;
    std::vector<Column> columns;
    std::vector<Row> rows;
};

/// The tables that the program had in those days, seven or, before there were categories, five; without rows.
std::vector<OldTable> oldTables(int count = 7);

/// How a file is written.
struct OldFileForm {
    int format = 4;            // 3 or 4
    bool isCompressed = false; // format 4: characters of one byte where they can be
    bool hasMovedRows = false; // every third row was moved, and every fifth deleted
    int codePage = 932;        // what the header says
    unsigned int encryptionKey = 0;
    int rowCountError = 0; // by how much the definitions are wrong about the number of rows
};

/// A file, and what each of its bytes is for.
struct OldFile {
    enum Use : char {
        Free,      // nothing
        Structure, // a change of it is a contradiction to something else
        Text,      // a change of it is another text
        Boundary   // a change of it moves the boundary between two texts, or makes one null
    };

    QByteArray bytes;
    QByteArray uses;
};

/// Writes a file of the older engine: small, but whole.
OldFile writeOldFile(const std::vector<OldTable>& tables, const OldFileForm& form = {});

} // namespace quillon::testing

#pragma once

#include "store/old_format/pages.h"

#include <QString>

#include <vector>

namespace quillon::old_format
{

/// A column of a table. Of the types only those are named that are read.
struct Column {
    static constexpr int Integer = 3; // two bytes
    static constexpr int Long = 4;    // four bytes
    static constexpr int Text = 10;
    static constexpr int LongText = 12;

    QString name;
    int type = 0;
    int number = 0;        // among all the columns the table ever had
    bool isFixed = false;  // among the fields of fixed length
    int variableIndex = 0; // among the others
    int fixedOffset = 0;
    int size = 0; // bytes
};

/// What the definition page of a table says about it.
struct Definition {
    quint32 page = 0;
    qint64 rowCount = 0;
    std::vector<Column> columns; // in the order of their numbers
};

/// Reads the definition that begins on this page. Error 3343 with a description that says what is wrong with it.
Definition readDefinition(const Pages& pages, quint32 page);

} // namespace quillon::old_format

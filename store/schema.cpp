#include "store/schema.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

int TableSchema::fieldIndex(QStringView fieldName) const
{
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (fields[i].name == fieldName)
            return static_cast<int>(i);
    }
    return -1;
}

namespace schema
{

const TableSchema& Main()
{
    static const TableSchema table{
        u"Main"_s,
        {{u"Name"_s, 50}, {u"Object_ID"_s, 12}, {u"Explanation"_s, 255}},
        u"CREATE TABLE Main (Name TEXT(50), Object_ID TEXT(12), Explanation TEXT(255), CONSTRAINT Main_Index UNIQUE (Object_ID));"_s};
    return table;
}

const TableSchema& RefDoc()
{
    static const TableSchema table{
        u"RefDoc"_s,
        {{u"Name"_s, 50}, {u"Object_ID"_s, 12}, {u"Explanation"_s, 0}},
        u"CREATE TABLE RefDoc (Name TEXT(50), Object_ID TEXT(12), Explanation MEMO, CONSTRAINT RefDoc_Index UNIQUE (Object_ID));"_s};
    return table;
}

const TableSchema& RefFile()
{
    static const TableSchema table{
        u"RefFile"_s,
        {{u"Name"_s, 50}, {u"Object_ID"_s, 12}, {u"Explanation"_s, 255}},
        u"CREATE TABLE RefFile (Name TEXT(50), Object_ID TEXT(12), Explanation TEXT(255), CONSTRAINT RefFile_Index UNIQUE (Object_ID));"_s};
    return table;
}

const TableSchema& OpenApp()
{
    static const TableSchema table{
        u"OpenApp"_s,
        {{u"AppName"_s, 50}, {u"Path"_s, 255}},
        u"CREATE TABLE OpenApp (AppName TEXT(50), Path TEXT(255)) "_s}; // sic: no semicolon
    return table;
}

const TableSchema& Link()
{
    static const TableSchema table{
        u"Link"_s,
        {{u"Link_Object_ID"_s, 12}, {u"Object_ID"_s, 12}},
        u"CREATE TABLE Link (Link_Object_ID TEXT(12), Object_ID TEXT(12), CONSTRAINT Link_Index UNIQUE (Object_ID, Link_Object_ID));"_s};
    return table;
}

const TableSchema& Category_ID()
{
    static const TableSchema table{
        u"Category_ID"_s,
        {{u"Category_ID"_s, 50}, {u"Name"_s, 50}},
        u"CREATE TABLE Category_ID (Category_ID TEXT(50), Name TEXT(50), CONSTRAINT Category_ID_Index UNIQUE (Category_ID));"_s};
    return table;
}

const TableSchema& Category()
{
    static const TableSchema table{
        u"Category"_s,
        {{u"Category_ID"_s, 50}, {u"Object_ID"_s, 50}}, // sic: wider than every other Object_ID
        u"CREATE TABLE Category (Category_ID TEXT(50), Object_ID TEXT(50), CONSTRAINT Category_Index UNIQUE (Category_ID, Object_ID));"_s};
    return table;
}

std::array<const TableSchema*, 7> all()
{
    return {&Main(), &RefDoc(), &RefFile(), &OpenApp(), &Link(), &Category_ID(), &Category()};
}

} // namespace schema

} // namespace quillon

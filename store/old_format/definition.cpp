#include "store/old_format/definition.h"

#include "app/base/error.h"
#include "store/old_format/little_endian.h"
#include "store/old_format/texts.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::old_format
{

namespace
{

/// Where things lie in a definition.
struct Layout {
    qsizetype rowCount;
    qsizetype columnCount;
    qsizetype indexCount;
    qsizetype columns; // behind what stands there for each index
    qsizetype bytesOfIndex;
    qsizetype bytesOfColumn;
    qsizetype number; // in a column, as the following
    qsizetype variableIndex;
    qsizetype flags;
    qsizetype fixedOffset;
    qsizetype size;
};
constexpr Layout LayoutOfThree = {12, 25, 31, 43, 8, 18, 1, 3, 13, 14, 16};
constexpr Layout LayoutOfFour = {16, 45, 51, 63, 12, 25, 5, 7, 15, 21, 23};

constexpr qsizetype NextPageAt = 4;
constexpr qsizetype BytesBeforeMore = 8; // of every page but the first
constexpr int MostPages = 64;            // the largest definition that can be takes fewer
constexpr int MostColumns = 255;
constexpr quint32 MostIndexes = 32;
constexpr quint8 FixedFlag = 1;

Error unreadableDefinition(const QString& why)
{
    return {errors::NotADatabase, why};
}

/// The pages of a definition behind each other.
QByteArray joined(const Pages& pages, quint32 first)
{
    QByteArray bytes = pages.definitionPage(first).toByteArray();
    if (bytes.isEmpty())
        throw unreadableDefinition(u"テーブルの定義がありません。"_s);
    std::vector seen = {first};
    for (auto next = numberAt<quint32>(bytes, NextPageAt); next != 0;) {
        const QByteArrayView page = pages.definitionPage(next);
        if (page.isEmpty())
            throw unreadableDefinition(u"テーブルの定義の続きがありません。"_s);
        if (std::find(seen.begin(), seen.end(), next) != seen.end() || seen.size() >= MostPages)
            throw unreadableDefinition(u"テーブルの定義に終わりがありません。"_s);
        seen.push_back(next);
        bytes += page.sliced(BytesBeforeMore);
        next = numberAt<quint32>(page, NextPageAt);
    }
    return bytes;
}

/// No two columns have the same place in a row.
void requireDistinctPlaces(const std::vector<Column>& columns)
{
    const auto contradict = [](const Column& a, const Column& b) {
        return a.number == b.number || (!a.isFixed && !b.isFixed && a.variableIndex == b.variableIndex);
    };
    for (auto a = columns.begin(); a != columns.end(); ++a) {
        if (std::any_of(columns.begin(), a, [&](const Column& b) { return contradict(*a, b); }))
            throw unreadableDefinition(u"テーブルの定義が壊れています。"_s);
    }
}

} // namespace

Definition readDefinition(const Pages& pages, quint32 page)
{
    const QByteArray bytes = joined(pages, page);
    const bool isThree = pages.isFormatThree();
    const Layout& layout = isThree ? LayoutOfThree : LayoutOfFour;
    const int count = numberAt<quint16>(bytes, layout.columnCount);
    const auto indexes = numberAt<quint32>(bytes, layout.indexCount);
    if (count > MostColumns || indexes > MostIndexes)
        throw unreadableDefinition(u"テーブルの定義が壊れています。"_s);
    Definition definition{.page = page, .rowCount = numberAt<quint32>(bytes, layout.rowCount), .columns = {}};
    qsizetype at = layout.columns + layout.bytesOfIndex * static_cast<qsizetype>(indexes);
    if (!holds(bytes, at, count * layout.bytesOfColumn))
        throw unreadableDefinition(u"テーブルの定義が壊れています。"_s);
    for (int i = 0; i < count; ++i, at += layout.bytesOfColumn)
        definition.columns.push_back({.name = {},
                                      .type = byteAt(bytes, at),
                                      .number = numberAt<quint16>(bytes, at + layout.number),
                                      .isFixed = (byteAt(bytes, at + layout.flags) & FixedFlag) != 0,
                                      .variableIndex = numberAt<quint16>(bytes, at + layout.variableIndex),
                                      .fixedOffset = numberAt<quint16>(bytes, at + layout.fixedOffset),
                                      .size = numberAt<quint16>(bytes, at + layout.size)});
    const qsizetype bytesOfLength = isThree ? 1 : 2;
    for (Column& column : definition.columns) {
        if (!holds(bytes, at, bytesOfLength))
            throw unreadableDefinition(u"テーブルの定義が壊れています。"_s);
        const qsizetype length = isThree ? byteAt(bytes, at) : numberAt<quint16>(bytes, at);
        at += bytesOfLength;
        if (!holds(bytes, at, length))
            throw unreadableDefinition(u"テーブルの定義が壊れています。"_s);
        column.name = decoded(pages, QByteArrayView(bytes).sliced(at, length)).text;
        at += length;
    }
    std::stable_sort(definition.columns.begin(), definition.columns.end(),
                     [](const Column& a, const Column& b) { return a.number < b.number; });
    requireDistinctPlaces(definition.columns);
    return definition;
}

} // namespace quillon::old_format

#pragma once

#include "store/old_format/pages.h"

#include <QByteArrayView>

#include <optional>

namespace quillon::old_format
{

/// A row as it lies in a page.
struct PageRow {
    QByteArrayView bytes;
    bool isPointer = false; // it was moved: these bytes say where to
    bool isSkipped = false; // deleted, or only to be reached by a pointer
};

/// The rows of a data page.
class PageRows
{
public:
    PageRows(const Pages& pages, QByteArrayView page);

    /// How many rows the page says it has, as far as it has room for them.
    int count() const { return m_count; }
    /// Whether it says more than it has room for.
    bool isOverfull() const { return m_isOverfull; }
    /// The row of this number from 0, or nothing where the page does not say rightly where it lies.
    std::optional<PageRow> row(int number) const;

private:
    qsizetype offsetOf(int number) const;

    QByteArrayView m_page;
    qsizetype m_offsetsAt;
    int m_count = 0;
    bool m_isOverfull = false;
};

/// Where a row lies: the number of the row in the lowest byte, that of the page above.
struct RowPointer {
    quint32 value = 0;
    quint32 page() const { return value >> 8; }
    int row() const { return static_cast<int>(value & 0xFF); }
};

} // namespace quillon::old_format

#pragma once

#include "store/old_format/definition.h"
#include "store/old_format/pages.h"

#include <QByteArrayView>

#include <vector>

namespace quillon::old_format
{

/// The bytes of a row, taken apart into its fields.
class Fields
{
public:
    explicit Fields(const Pages& pages) : m_isThree(pages.isFormatThree()) {}

    /// Takes a row apart. False when its parts contradict each other.
    bool read(QByteArrayView row);
    /// Whether the row that was read last holds bytes that belong to no field.
    bool hasStrayBytes() const { return m_hasStrayBytes; }

    enum class Kind {
        Null,
        Value,
        Damaged // the row does not say rightly where it lies
    };
    struct Field {
        Kind kind = Kind::Damaged;
        QByteArrayView bytes = {};
    };
    /// A field of the row that was read last.
    Field field(const Column& column) const;

private:
    bool readOffsets(qsizetype count, qsizetype countAt);
    qsizetype bytesOfCount() const { return m_isThree ? 1 : 2; }
    qsizetype countAt(qsizetype at) const;

    bool m_isThree;
    QByteArrayView m_row;
    qsizetype m_columns = 0;
    qsizetype m_nullsAt = 0;
    bool m_hasStrayBytes = false;
    std::vector<qsizetype> m_offsets; // of the fields of variable length, and where they end
};

} // namespace quillon::old_format

#pragma once

#include "core/identifier_table.h"

#include <QStringView>

namespace quillon
{

/// A set of identifiers for going through long tables.
class IdentifierSet
{
public:
    /// `expected`: about how many there will be.
    explicit IdentifierSet(qsizetype expected) : m_table(expected) {}

    void insert(QStringView identifier) { m_table.insert(identifier, {}); }
    bool contains(QStringView identifier) const { return m_table.find(identifier) != nullptr; }

private:
    struct Nothing {
    };
    IdentifierTable<Nothing> m_table;
};

} // namespace quillon

#pragma once

#include <QSet>
#include <QString>
#include <QStringView>

#include <optional>
#include <vector>

namespace quillon
{

/// A set of identifiers for going through long tables. Identifiers of the usual form are kept as numbers, which cost
/// no memory of their own each.
class IdentifierSet
{
public:
    /// `expected`: about how many there will be.
    explicit IdentifierSet(qsizetype expected);

    void insert(QStringView identifier);
    bool contains(QStringView identifier) const;

private:
    /// The number of an identifier such as "M-991231-001": letter, date and sequence; never 0. Different identifiers
    /// have different numbers. Nothing for any other text.
    static std::optional<quint64> numberOf(QStringView identifier);

    std::size_t slotOf(quint64 number) const;
    void grow();

    std::vector<quint64> m_numbers; // open addressing, a power of two of slots, 0 for a free one
    std::size_t m_count = 0;
    QSet<QString> m_others;
};

} // namespace quillon

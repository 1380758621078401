#pragma once

#include "bench/corpus/random.h"

#include <QString>

#include <vector>

namespace quillon::corpus
{

/// The identifiers of a tree of categories: parents come before their children.
class CategoryPlan
{
public:
    static constexpr int DeepestLevel = 6;

    CategoryPlan(int count, Random random);

    int size() const { return static_cast<int>(m_identifiers.size()); }
    const QString& identifier(int category) const
    {
        return m_identifiers[static_cast<std::size_t>(category)];
    }
    /// Whether the two are the same or one lies above the other.
    bool onOneLine(int one, int other) const;

private:
    std::vector<QString> m_identifiers;
};

} // namespace quillon::corpus

#include "bench/corpus/category_plan.h"

#include <algorithm>

namespace quillon::corpus
{

namespace
{

/// A category that still takes children.
struct Open {
    int category;
    int level;
    int children;
    int mostChildren;
};

/// Most levels stay within A to Z, some go on to the codes behind it.
int mostChildren(Random& random)
{
    return random.chance(85) ? random.between(4, 26) : random.between(27, 44);
}

QChar letter(int child)
{
    return {static_cast<char16_t>(u'A' + child)};
}

} // namespace

CategoryPlan::CategoryPlan(int count, Random random)
{
    m_identifiers.reserve(static_cast<std::size_t>(count));
    const int topLevel = std::clamp(count / 140, std::min(count, 12), 48);
    std::vector<Open> open;
    for (int top = 0; top < topLevel; ++top) {
        m_identifiers.emplace_back(letter(top));
        open.push_back({top, 1, 0, mostChildren(random)});
    }
    while (size() < count) {
        // The shallower of two, so that the tree grows in width first.
        const std::size_t one = random.index(open.size());
        const std::size_t other = random.index(open.size());
        const std::size_t chosen = open[one].level <= open[other].level ? one : other;
        Open& parent = open[chosen];
        const int level = parent.level + 1;
        m_identifiers.push_back(identifier(parent.category) + u'-' + letter(parent.children));
        if (++parent.children == parent.mostChildren) {
            parent = open.back();
            open.pop_back();
        }
        if (level < DeepestLevel)
            open.push_back({size() - 1, level, 0, mostChildren(random)});
    }
}

bool CategoryPlan::onOneLine(int one, int other) const
{
    const QString& a = identifier(one);
    const QString& b = identifier(other);
    const QString& above = a.size() <= b.size() ? a : b;
    const QString& below = a.size() <= b.size() ? b : a;
    return below.startsWith(above) && (below.size() == above.size() || below[above.size()] == u'-');
}

} // namespace quillon::corpus

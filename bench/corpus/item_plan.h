#pragma once

#include "bench/corpus/random.h"

#include <QString>

#include <vector>

namespace quillon::corpus
{

/// The identifiers of all data of one kind in the order of their registration, at most 999 a day.
class ItemPlan
{
public:
    /// The most data that one kind can have.
    static int capacity();
    /// How many definitions the last day has when there are thousands of them: one number is left.
    static constexpr int FullDay = 998;

    ItemPlan(QChar kind, int count, Random random);

    int size() const { return static_cast<int>(m_items.size()); }
    QString identifier(int item) const;

private:
    struct Item {
        quint16 day;
        quint16 number;
    };

    void addDay(int day, int numbers);

    QChar m_kind;
    std::vector<Item> m_items;
};

} // namespace quillon::corpus

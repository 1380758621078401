#pragma once

#include <QHashFunctions>
#include <QStringView>

#include <bit>
#include <cstddef>
#include <vector>

namespace quillon
{

/// Finds things by a text of their own. The things have numbers from 1 on, and `KeyOf` answers the text of a number,
/// which stays the same as long as the number is in here. Made for tens of thousands of them: eight bytes each are looked
/// at before the one text that is compared.
template <class KeyOf> class KeyIndex
{
public:
    explicit KeyIndex(KeyOf keyOf) : m_keyOf(keyOf), m_slots(LeastSlots) {}

    /// The number of the thing with this key, or 0.
    quint32 find(QStringView key) const { return m_slots[slotOf(key, hashOf(key))].number; }
    /// Puts a thing in whose key nothing else has.
    void insert(quint32 number)
    {
        reserve(m_count + 1);
        const quint32 hash = hashOf(m_keyOf(number));
        m_slots[freeSlot(hash)] = {hash, number};
        ++m_count;
    }
    void remove(QStringView key)
    {
        std::size_t hole = slotOf(key, hashOf(key));
        if (m_slots[hole].number == 0)
            return;
        // What follows moves up as far as its own place allows, so that no search ends too early.
        for (std::size_t next = after(hole); m_slots[next].number != 0; next = after(next)) {
            const std::size_t wanted = m_slots[next].hash & mask();
            if (((next - wanted) & mask()) >= ((next - hole) & mask())) {
                m_slots[hole] = m_slots[next];
                hole = next;
            }
        }
        m_slots[hole] = {};
        --m_count;
    }
    void clear()
    {
        m_slots.assign(LeastSlots, {});
        m_count = 0;
    }
    std::size_t size() const { return m_count; }
    /// Makes room for so many in all.
    void reserve(std::size_t count)
    {
        // Half of the slots stay free: the fewer are taken, the shorter the way to a free one.
        if (count * 2 <= m_slots.size())
            return;
        std::vector<Slot> old(std::bit_ceil(count * 2));
        old.swap(m_slots);
        for (const Slot& slot : old) {
            if (slot.number != 0)
                m_slots[freeSlot(slot.hash)] = slot;
        }
    }

private:
    static constexpr std::size_t LeastSlots = 64;

    struct Slot {
        quint32 hash = 0;
        quint32 number = 0; // 0 for a free one
    };

    static quint32 hashOf(QStringView key) { return static_cast<quint32>(qHash(key)); }
    std::size_t mask() const { return m_slots.size() - 1; }
    std::size_t after(std::size_t slot) const { return (slot + 1) & mask(); }
    /// The slot of a key, or the free one where it would go.
    std::size_t slotOf(QStringView key, quint32 hash) const
    {
        std::size_t slot = hash & mask();
        while (m_slots[slot].number != 0 &&
               (m_slots[slot].hash != hash || m_keyOf(m_slots[slot].number) != key))
            slot = after(slot);
        return slot;
    }
    std::size_t freeSlot(quint32 hash) const
    {
        std::size_t slot = hash & mask();
        while (m_slots[slot].number != 0)
            slot = after(slot);
        return slot;
    }

    KeyOf m_keyOf;
    std::vector<Slot> m_slots; // open addressing, a power of two of them
    std::size_t m_count = 0;
};

} // namespace quillon

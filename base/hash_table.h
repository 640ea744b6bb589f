#ifndef PLC_BASE_HASH_TABLE_H
#define PLC_BASE_HASH_TABLE_H

#include <QtCore/QVector>

namespace plc {

/// Open addressing with linear probing: what the name index and the data image are built on.
///
/// A Slot has a type Key; kMostTakenEighths, how full the table may get; isTaken(), false when it
/// is made; holds(key, hash); and hashBy(hash function), the hash of the key that it holds.
template <typename Slot, typename Hash>
class HashTable {
public:
    typedef typename Slot::Key Key;

    explicit HashTable(const Hash& hash) : m_table(emptyTable()), m_hash(hash) {}

    /// The slot that holds `key`, or null. Valid until the next insert(), reserve() or clear().
    Slot* find(const Key& key) const
    {
        Slot& slot = slotOf(key, m_hash(key));
        return slot.isTaken() ? &slot : nullptr;
    }

    /// Calls `take(slot, hash)`, which takes a free slot for `key`, unless the table holds it.
    template <typename Take>
    void insert(const Key& key, Take take)
    {
        reserve(m_count + 1);
        const quint32 hash = m_hash(key);
        Slot& slot = slotOf(key, hash);
        if (slot.isTaken())
            return;
        take(slot, hash);
        ++m_count;
    }

    void reserve(int count)
    {
        int size = m_slots.isEmpty() ? kSmallest : int(m_slots.size());
        while (size / 8 * Slot::kMostTakenEighths < count)
            size *= 2;
        if (size > int(m_slots.size()) && count > 0)
            resize(size);
    }

    void clear()
    {
        m_slots.clear();
        m_table = emptyTable();
        m_mask = 0;
        m_count = 0;
    }

    /// Calls `visit(slot)` for each slot that is taken, in no order.
    template <typename Visit>
    void forEach(Visit visit) const
    {
        for (int i = 0; i < int(m_slots.size()); ++i) {
            if (m_slots.at(i).isTaken())
                visit(m_slots.at(i));
        }
    }

    /// Begins to load the slot where a search for `key` begins, without waiting for it.
    void prefetch(const Key& key) const
    {
#ifdef __GNUC__
        __builtin_prefetch(m_table + (m_hash(key) & m_mask));
#else
        Q_UNUSED(key);
#endif
    }

    /// How many slots a search for `key` looks at.
    int searchLength(const Key& key) const
    {
        const quint32 hash = m_hash(key);
        const qint64 distance = (&slotOf(key, hash) - m_table) - qint64(hash & m_mask);
        return int(distance < 0 ? distance + m_mask + 1 : distance) + 1;
    }

private:
    static const int kSmallest = 8;

    /// The table without keys; never written.
    static Slot* emptyTable()
    {
        static Slot freeSlot;
        return &freeSlot;
    }

    /// The slot that holds `key`, or the free one where it belongs.
    Slot& slotOf(const Key& key, quint32 hash) const
    {
        quint32 i = hash & m_mask;
        while (m_table[i].isTaken() && !m_table[i].holds(key, hash))
            i = (i + 1) & m_mask;
        return m_table[i];
    }

    /// Where a key belongs that the table does not hold.
    Slot& freeSlotOf(quint32 hash) const
    {
        quint32 i = hash & m_mask;
        while (m_table[i].isTaken())
            i = (i + 1) & m_mask;
        return m_table[i];
    }

    void resize(int slotCount)
    {
        QVector<Slot> old(slotCount);
        old.swap(m_slots);
        m_table = m_slots.data();
        m_mask = quint32(slotCount) - 1;
        for (int i = 0; i < int(old.size()); ++i) {
            const Slot& slot = old.at(i);
            if (slot.isTaken())
                freeSlotOf(slot.hashBy(m_hash)) = slot;
        }
    }

    Q_DISABLE_COPY(HashTable)

    Slot* m_table;      ///< The slots, or the empty table: what a search needs, at hand.
    quint32 m_mask = 0; ///< Number of slots in the table, less one.
    int m_count = 0;
    const Hash m_hash;
    QVector<Slot> m_slots; ///< A power of two, or empty.
};

} // namespace plc

#endif

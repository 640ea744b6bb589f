#ifndef PLC_SYMBOLS_NAME_INDEX_H
#define PLC_SYMBOLS_NAME_INDEX_H

#include <QtCore/QVector>

#include "symbols/label_text.h"

namespace plc {

/// Spreads the characters of a name over 32 bits.
quint32 hashName(const LabelText& name);

/// Records by name, found in constant time and without a copy of the name. Of records with equal
/// names the first that was inserted stays. Names and records are owned by somebody else, who keeps
/// them alive.
template <typename Record>
class NameIndex {
public:
    void reserve(int records)
    {
        int slotCount = kSmallest;
        while (slotCount / 2 < records)
            slotCount *= 2;
        if (slotCount > int(m_slots.size()))
            resize(slotCount);
    }

    void insert(const LabelText& name, Record* record)
    {
        reserve(m_count + 1);
        const quint32 hash = hashName(name);
        Slot& slot = m_slots[slotOf(name, hash)];
        if (slot.record)
            return;
        slot.hash = hash;
        slot.name = name;
        slot.record = record;
        ++m_count;
    }

    /// The record of this name, or null.
    Record* find(const LabelText& name) const
    {
        return m_slots.isEmpty() ? nullptr : m_slots.at(slotOf(name, hashName(name))).record;
    }

    void clear()
    {
        m_slots.clear();
        m_count = 0;
    }

private:
    struct Slot {
        Record* record = nullptr; ///< Null: the slot is free.
        LabelText name;
        quint32 hash = 0;
    };

    static const int kSmallest = 8;

    /// The slot that holds `name`, or the free one where it belongs. At most half the slots are
    /// taken, so that one is met.
    int slotOf(const LabelText& name, quint32 hash) const
    {
        const Slot* table = m_slots.constData();
        const int mask = int(m_slots.size()) - 1;
        int i = int(hash) & mask;
        while (table[i].record && !(table[i].hash == hash && table[i].name == name))
            i = (i + 1) & mask;
        return i;
    }

    void resize(int slotCount)
    {
        QVector<Slot> old(slotCount);
        old.swap(m_slots);
        for (int i = 0; i < int(old.size()); ++i) {
            const Slot& slot = old.at(i);
            if (slot.record)
                m_slots[slotOf(slot.name, slot.hash)] = slot;
        }
    }

    QVector<Slot> m_slots; ///< Open addressing; a power of two, or empty.
    int m_count = 0;
};

} // namespace plc

#endif

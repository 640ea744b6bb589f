#ifndef PLC_SYMBOLS_NAME_INDEX_H
#define PLC_SYMBOLS_NAME_INDEX_H

#include <QtCore/QVector>

#include <cstring>

#include "symbols/label_text.h"

namespace plc {

/// Spreads the characters of a name over 32 bits.
inline quint32 hashName(const LabelText& name)
{
    const quint64 kSpread = Q_UINT64_C(0x9E3779B97F4A7C15); // 2^64 / golden ratio
    const int kCharactersAWord = int(sizeof(quint64) / sizeof(QChar));

    quint64 hash = quint64(name.size);
    int i = 0;
    for (; i + kCharactersAWord <= name.size; i += kCharactersAWord) {
        quint64 word;
        std::memcpy(&word, name.text + i, sizeof word);
        hash = (hash ^ word) * kSpread;
        hash ^= hash >> 32;
    }
    quint64 rest = 0;
    for (; i < name.size; ++i)
        rest = rest << 16 | name.text[i].unicode();
    hash = (hash ^ rest) * kSpread;
    return quint32(hash >> 32);
}

/// Values by name, found in constant time and without a copy of the name. Of values with equal
/// names the first that was inserted stays. The names are owned by somebody else, who keeps them
/// alive.
template <typename Value>
class NameIndex {
public:
    void reserve(int count)
    {
        int size = kSmallest;
        while (!hasRoom(count, size))
            size *= 2;
        if (size > int(m_slots.size()))
            resize(size);
    }

    void insert(const LabelText& name, const Value& value)
    {
        if (!hasRoom(m_count + 1, int(m_slots.size())))
            reserve(m_count + 1);
        const quint32 hash = hashName(name);
        Slot& slot = m_slots[slotOf(name, hash)];
        if (slot.isTaken)
            return;
        slot.name = name;
        slot.hash = hash;
        slot.isTaken = true;
        slot.value = value;
        ++m_count;
    }

    /// The value of this name, or null. Valid until the next insert() or clear().
    const Value* find(const LabelText& name) const
    {
        if (m_slots.isEmpty())
            return nullptr;
        const Slot& slot = m_slots.constData()[slotOf(name, hashName(name))];
        return slot.isTaken ? &slot.value : nullptr;
    }

    void clear()
    {
        m_slots.clear();
        m_count = 0;
    }

private:
    /// All that a search needs lies together: one place in memory to wait for.
    struct Slot {
        LabelText name;
        quint32 hash = 0;
        bool isTaken = false;
        Value value = Value();
    };

    static const int kSmallest = 8;

    /// A quarter of the slots stays free, so that a search ends soon.
    static bool hasRoom(int count, int slotCount) { return count <= slotCount / 4 * 3; }

    /// The slot that holds `name`, or the free one where it belongs.
    int slotOf(const LabelText& name, quint32 hash) const
    {
        const Slot* table = m_slots.constData();
        const int mask = int(m_slots.size()) - 1;
        int i = int(hash) & mask;
        while (table[i].isTaken && !(table[i].hash == hash && table[i].name == name))
            i = (i + 1) & mask;
        return i;
    }

    void resize(int slotCount)
    {
        QVector<Slot> old(slotCount);
        old.swap(m_slots);
        for (int i = 0; i < int(old.size()); ++i) {
            const Slot& slot = old.at(i);
            if (slot.isTaken)
                m_slots[slotOf(slot.name, slot.hash)] = slot;
        }
    }

    QVector<Slot> m_slots; ///< Open addressing; a power of two, or empty.
    int m_count = 0;
};

} // namespace plc

#endif

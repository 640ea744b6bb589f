#ifndef PLC_SYMBOLS_NAME_INDEX_H
#define PLC_SYMBOLS_NAME_INDEX_H

#include <QtCore/QVector>

#include <cstring>

#include "hash_spread.h"
#include "symbols/label_text.h"

namespace plc {

/// Spreads the characters of a name over 32 bits.
inline quint32 hashName(const LabelText& name)
{
    const int kCharactersAWord = int(sizeof(quint64) / sizeof(QChar));

    quint64 hash = quint64(name.size);
    int i = 0;
    for (; i + kCharactersAWord <= name.size; i += kCharactersAWord) {
        quint64 word;
        std::memcpy(&word, name.text + i, sizeof word);
        hash = spread(hash ^ word);
        hash ^= hash >> 32;
    }
    quint64 rest = 0;
    for (; i < name.size; ++i)
        rest = rest << 16 | name.text[i].unicode();
    return quint32(spread(hash ^ rest) >> 32);
}

/// Values by name, found in constant time. Of values with equal names the first that was inserted
/// stays.
///
/// Short names are copied, so that all that a search needs lies together: one place in memory to
/// wait for. Long names are owned by somebody else, who keeps them alive.
template <typename Value>
class NameIndex {
public:
    NameIndex() : m_table(emptyTable()) {}

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
        Slot& slot = slotOf(name, hash);
        if (slot.isTaken())
            return;
        slot.take(name, hash, value);
        ++m_count;
    }

    /// The value of this name, or null. Valid until the next insert() or clear().
    const Value* find(const LabelText& name) const
    {
        const Slot& slot = slotOf(name, hashName(name));
        return slot.isTaken() ? &slot.value : nullptr;
    }

    /// Begins to load the slot where a search for this name begins, without waiting for it.
    void prefetch(const LabelText& name) const
    {
#ifdef __GNUC__
        __builtin_prefetch(m_table + (hashName(name) & m_mask));
#else
        Q_UNUSED(name);
#endif
    }

    void clear()
    {
        m_slots.clear();
        m_table = emptyTable();
        m_mask = 0;
        m_count = 0;
    }

private:
    static const int kCacheLine = 64;

    struct alignas(const QChar*) SlotHead {
        quint32 hash = 0;
        qint32 size = kFree;
        Value value = Value();
    };

    struct alignas(kCacheLine) Slot : SlotHead {
        using SlotHead::hash;
        using SlotHead::size;
        using SlotHead::value;

        /// What the head leaves of a cache line.
        static const int kNameCapacity = (kCacheLine - int(sizeof(SlotHead))) / int(sizeof(QChar));
        union {
            ushort characters[kNameCapacity];
            const QChar* place; ///< Where the characters are if they are too many.
        };

        bool isTaken() const { return size != kFree; }
        bool isShort() const { return size <= kNameCapacity; }
        void take(const LabelText& newName, quint32 newHash, const Value& newValue)
        {
            hash = newHash;
            size = newName.size;
            value = newValue;
            if (isShort())
                std::memcpy(characters, newName.text, size_t(size) * sizeof(QChar));
            else
                place = newName.text;
        }
        bool isNamed(const LabelText& other, quint32 otherHash) const
        {
            if (hash != otherHash || size != other.size)
                return false;
            const void* const name = isShort() ? static_cast<const void*>(characters) : place;
            return std::memcmp(name, other.text, size_t(size) * sizeof(QChar)) == 0;
        }
    };

    static const int kSmallest = 8;
    static const qint32 kFree = -1;

    /// An eighth of the slots stays free: searches end soon, and the table stays small.
    static bool hasRoom(int count, int slotCount)
    {
        return count <= slotCount / 8 * 7;
    }

    /// The table of an index without names; never written.
    static Slot* emptyTable()
    {
        static Slot freeSlot;
        return &freeSlot;
    }

    /// The slot that holds `name`, or the free one where it belongs.
    Slot& slotOf(const LabelText& name, quint32 hash) const
    {
        quint32 i = hash & m_mask;
        while (m_table[i].isTaken() && !m_table[i].isNamed(name, hash))
            i = (i + 1) & m_mask;
        return m_table[i];
    }

    /// For a name that is not in the table yet.
    Slot& freeSlotOf(quint32 hash) const
    {
        quint32 i = hash & m_mask;
        while (m_table[i].isTaken())
            i = (i + 1) & m_mask;
        return m_table[i];
    }

    void resize(int slotCount)
    {
        static_assert(sizeof(Slot) == kCacheLine, "a search touches one cache line a slot");
        const Slot* const oldTable = m_table;
        const quint32 oldMask = m_mask;
        QVector<Slot> exchanged(slotCount);
        exchanged.swap(m_slots); // from here on it keeps the old ones
        m_table = m_slots.data();
        m_mask = quint32(slotCount) - 1;
        for (quint32 i = 0; i <= oldMask; ++i) {
            if (oldTable[i].isTaken())
                freeSlotOf(oldTable[i].hash) = oldTable[i];
        }
    }

    Q_DISABLE_COPY(NameIndex)

    QVector<Slot> m_slots; ///< Open addressing; a power of two, or empty.
    Slot* m_table;         ///< The slots, or the empty table: what a search needs, at hand.
    quint32 m_mask = 0;    ///< Number of slots in the table, less one.
    int m_count = 0;
};

} // namespace plc

#endif

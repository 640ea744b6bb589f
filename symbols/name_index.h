#ifndef PLC_SYMBOLS_NAME_INDEX_H
#define PLC_SYMBOLS_NAME_INDEX_H

#include <QtCore/QList>
#include <QtCore/QString>

#include <cstring>

#include "base/hash_table.h"
#include "base/keyed_hash.h"
#include "base/label_text.h"

namespace plc {

/// Values by name, found in constant time.
///
/// 1. Of values with equal names the first that was inserted stays.
/// 2. A slot fills one cache line and holds all that a search needs, so that it waits for memory
///    once.
/// 3. A name of up to Slot::kNameCapacity characters lies in its slot. A longer one is shared with
///    whoever inserted it: `m_longNames` keeps it alive, and its slot points to its characters.
/// 4. `size` of a slot is the length of its name, or `kFree`; `hash` is that of its name under the
///    table's own hash function.
/// 5. What find() returns stays where it is until the next insert(), reserve() or clear().
template <typename Value, typename Hash = KeyedHash>
class NameIndex {
public:
    explicit NameIndex(const Hash& hash = Hash()) : m_table(hash) {}

    void reserve(int count) { m_table.reserve(count); }

    void insert(const QString& name, const Value& value)
    {
        m_table.insert(LabelText(name), [&](Slot& slot, quint32 hash) {
            const bool isLong = name.size() > Slot::kNameCapacity;
            if (isLong)
                m_longNames.append(name);
            slot.take(LabelText(isLong ? m_longNames.last() : name), hash, value);
        });
    }

    /// The value of this name, or null. Valid until the next insert() or clear().
    const Value* find(const LabelText& name) const
    {
        const Slot* const slot = m_table.find(name);
        return slot ? &slot->value : nullptr;
    }

    /// Begins to load the slot where a search for this name begins, without waiting for it.
    void prefetch(const LabelText& name) const { m_table.prefetch(name); }

    /// How many slots a search for `name` looks at.
    int searchLength(const LabelText& name) const { return m_table.searchLength(name); }

    void clear()
    {
        m_table.clear();
        m_longNames.clear();
    }

private:
    static const int kCacheLine = 64;

    struct alignas(const QChar*) SlotHead {
        quint32 hash = 0;
        qint32 size = kFree;
        Value value = Value();
    };

    struct alignas(kCacheLine) Slot : SlotHead {
        typedef LabelText Key;
        using SlotHead::hash;
        using SlotHead::size;
        using SlotHead::value;

        /// Searches end soon, and the table stays small.
        static const int kMostTakenEighths = 7;
        /// What the head leaves of a cache line.
        static const int kNameCapacity = (kCacheLine - int(sizeof(SlotHead))) / int(sizeof(QChar));
        union {
            ushort characters[kNameCapacity];
            const QChar* place; ///< The characters in `m_longNames`, if they are too many.
        };

        bool isTaken() const { return size != kFree; }
        bool isShort() const { return size <= kNameCapacity; }
        quint32 hashBy(const Hash&) const { return hash; }
        void take(const LabelText& newName, quint32 newHash, const Value& newValue)
        {
            static_assert(sizeof(Slot) == kCacheLine, "a search touches one cache line a slot");
            hash = newHash;
            size = newName.size;
            value = newValue;
            if (isShort())
                std::memcpy(characters, newName.text, size_t(size) * sizeof(QChar));
            else
                place = newName.text;
        }
        bool holds(const LabelText& other, quint32 otherHash) const
        {
            if (hash != otherHash || size != other.size)
                return false;
            const void* const name = isShort() ? static_cast<const void*>(characters) : place;
            return std::memcmp(name, other.text, size_t(size) * sizeof(QChar)) == 0;
        }
    };

    static const qint32 kFree = -1;

    Q_DISABLE_COPY(NameIndex)

    HashTable<Slot, Hash> m_table;
    QList<QString> m_longNames;
};

} // namespace plc

#endif

#ifndef PLC_IMAGE_DATA_IMAGE_H
#define PLC_IMAGE_DATA_IMAGE_H

#include <QtCore/QList>
#include <QtCore/QtGlobal>

#include <cstring>

#include "base/hash_table.h"
#include "base/keyed_hash.h"

namespace plc {

/// PLC memory as last read or written: a map from 64-bit keys (memory area index in the high half,
/// byte address in the low half) to bytes.
///
/// 1. A byte that was touched, reading included, exists from then on until clear(), with value 0
///    until it is written. `m_size` counts the bytes that exist.
/// 2. Bytes lie in pages of one area; each page has a map of which of its bytes exist. A dense area
///    so costs little more than its bytes.
/// 3. A byte of a page that does not exist is 0: ranges are copied without looking at the map.
/// 4. A page belongs to one slot of the table, and is neither moved nor freed before clear():
///    references to bytes stay valid.
/// 5. Addresses go on at 0 after 0xFFFFFFFF, within their area.
/// 6. Not thread-safe by itself: the driver holds `dataMutex` around it.
class DataImage {
public:
    explicit DataImage(const KeyedHash& hash = KeyedHash()) : m_pages(hash) {}
    ~DataImage();

    static quint64 key(quint32 areaIndex, quint32 address)
    {
        return quint64(areaIndex) << 32 | address;
    }

    bool contains(quint64 key) const;
    /// The byte at `key`, 0 when it does not exist; creates nothing.
    uchar value(quint64 key) const;
    /// The byte at `key`, created with value 0 when it does not exist. The reference stays valid
    /// until clear().
    uchar& operator[](quint64 key);
    void insert(quint64 key, uchar value) { (*this)[key] = value; }
    /// Number of bytes that exist.
    qint64 size() const { return m_size; }
    qint64 count() const { return m_size; }
    bool isEmpty() const { return m_size == 0; }
    /// The keys of all bytes that exist, ascending.
    QList<quint64> keys() const;
    void clear();
    /// How many slots of its table a search for the byte's page looks at.
    int searchLength(quint64 key) const { return m_pages.searchLength(key >> kPageBits); }

    /// Copies `count` bytes from `address` on into `bytes` and creates those that do not exist.
    /// Addresses go on at 0 after 0xFFFFFFFF. A `count` of 0 or less does nothing.
    void read(quint32 areaIndex, quint32 address, uchar* bytes, int count)
    {
        if (const uchar* place = findRange(key(areaIndex, address), count))
            copy(bytes, place, count);
        else
            readByPages(areaIndex, address, bytes, count);
    }
    /// Stores `count` bytes from `address` on. Addresses go on at 0 after 0xFFFFFFFF.
    void write(quint32 areaIndex, quint32 address, const uchar* bytes, int count)
    {
        if (uchar* place = findRange(key(areaIndex, address), count))
            copy(place, bytes, count);
        else
            writeByPages(areaIndex, address, bytes, count);
    }

private:
    static const int kPageBits = 8;
    static const int kPageSize = 1 << kPageBits;
    static const quint64 kIndexMask = kPageSize - 1;
    static const int kWordBits = 64;

    /// Bytes that do not exist are 0, so that ranges can be copied without looking at the map.
    struct Page {
        quint64 exists[kPageSize / kWordBits];
        uchar bytes[kPageSize];

        bool contains(int index) const
        {
            return (exists[index / kWordBits] >> index % kWordBits & 1) != 0;
        }
        int create(int first, int count);
    };
    struct Slot {
        typedef quint64 Key;
        /// Pages are much larger than slots: room for short searches costs little.
        static const int kMostTakenEighths = 6;

        quint64 pageKey = 0;
        Page* page = nullptr; ///< Null: the slot is free.

        bool isTaken() const { return bool(page); }
        bool holds(quint64 key, quint32) const { return pageKey == key; }
        quint32 hashBy(const KeyedHash& hash) const { return hash(pageKey); }
    };

    Page* findPage(quint64 pageKey) const
    {
        const Slot* const slot = m_pages.find(pageKey);
        return slot ? slot->page : nullptr;
    }

    /// `count` ones from bit `first` on; `count` is 1 to 64 - `first`.
    static quint64 ones(int first, int count)
    {
        return (~Q_UINT64_C(0) >> (kWordBits - count)) << first;
    }

    /// Where the range lies when its bytes exist already and stand in one word of the map, as most
    /// values do; else null.
    uchar* findRange(quint64 start, int count) const
    {
        const int index = int(start & kIndexMask);
        const int bit = index % kWordBits;
        if (count <= 0 || count > kWordBits - bit)
            return nullptr;
        Page* page = findPage(start >> kPageBits);
        const quint64 needed = ones(bit, count);
        if (!page || (page->exists[index / kWordBits] & needed) != needed)
            return nullptr;
        return page->bytes + index;
    }

    /// Most values have a few bytes: two moves that overlap, without a call.
    static void copy(uchar* to, const uchar* from, int count)
    {
        if (count > 16)
            std::memcpy(to, from, size_t(count));
        else if (count >= 8)
            copyEnds<quint64>(to, from, count);
        else if (count >= 4)
            copyEnds<quint32>(to, from, count);
        else if (count >= 2)
            copyEnds<quint16>(to, from, count);
        else
            *to = *from;
    }
    template <typename Word>
    static void copyEnds(uchar* to, const uchar* from, int count)
    {
        Word first;
        Word last;
        std::memcpy(&first, from, sizeof first);
        std::memcpy(&last, from + count - sizeof last, sizeof last);
        std::memcpy(to, &first, sizeof first);
        std::memcpy(to + count - sizeof last, &last, sizeof last);
    }

    void readByPages(quint32 areaIndex, quint32 address, uchar* bytes, int count);
    void writeByPages(quint32 areaIndex, quint32 address, const uchar* bytes, int count);
    Page& pageOf(quint64 pageKey);

    Q_DISABLE_COPY(DataImage)

    HashTable<Slot, KeyedHash> m_pages;
    qint64 m_size = 0;
};

} // namespace plc

#endif

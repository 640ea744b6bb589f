#ifndef PLC_IMAGE_DATA_IMAGE_H
#define PLC_IMAGE_DATA_IMAGE_H

#include <QtCore/QList>
#include <QtCore/QVector>
#include <QtCore/QtGlobal>

#include <cstring>

#include "hash_spread.h"

namespace plc {

/// PLC memory as last read or written: a map from 64-bit keys (memory area index in the high half,
/// byte address in the low half) to bytes.
///
/// Bytes lie in pages with a map of which of them exist, so that a dense area costs little more
/// than its bytes, and ranges are copied page by page. A byte that was touched exists, with value 0
/// until it is written, and never disappears but by clear(). Not thread-safe by itself.
class DataImage {
public:
    DataImage() : m_table(emptyTable()) {}
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

        int create(int first, int count);
    };
    struct Slot {
        quint64 pageKey = 0;
        Page* page = nullptr; ///< Null: the slot is free.
    };

    /// The table of an image without pages; never written.
    static Slot* emptyTable()
    {
        static Slot freeSlot;
        return &freeSlot;
    }

    /// The slot that holds the page, or the free one where it belongs.
    Slot& slotOf(quint64 pageKey) const
    {
        quint32 i = quint32(spread(pageKey) >> 32) & m_mask;
        while (m_table[i].page && m_table[i].pageKey != pageKey)
            i = (i + 1) & m_mask;
        return m_table[i];
    }
    Page* findPage(quint64 pageKey) const { return slotOf(pageKey).page; }

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
    void insertPage(quint64 pageKey, Page* page);
    void grow();
    void useTable(Slot* table, int slotCount);

    Q_DISABLE_COPY(DataImage)

    QVector<Slot> m_slots; ///< Open addressing; a power of two, or empty.
    Slot* m_table;         ///< The slots, or the empty table: what a search needs, at hand.
    quint32 m_mask = 0;    ///< Number of slots in the table, less one.
    int m_pageCount = 0;
    qint64 m_size = 0;
};

} // namespace plc

#endif

#include "data_image.h"

#include <algorithm>
#include <cstring>

namespace plc {

namespace {

const int kPageBits = 8;
const int kPageSize = 1 << kPageBits;
const quint64 kPageMask = kPageSize - 1;
const int kWordBits = 64;
const int kMapWords = kPageSize / kWordBits;
const int kSmallestTable = 16;

int countBits(quint64 word)
{
    int bits = 0;
    for (; word != 0; word &= word - 1)
        ++bits;
    return bits;
}

/// `count` ones from bit `first` on; `count` is 1 to 64 - `first`.
quint64 ones(int first, int count)
{
    return (~Q_UINT64_C(0) >> (kWordBits - count)) << first;
}

int slotOfKey(quint64 pageKey, int slotCount)
{
    const quint64 kSpread = Q_UINT64_C(0x9E3779B97F4A7C15); // 2^64 / golden ratio
    return int((pageKey * kSpread) >> 32) & (slotCount - 1);
}

} // namespace

/// Bytes that do not exist are 0, so that ranges can be copied without looking at the map.
struct DataImage::Page {
    uchar bytes[kPageSize];
    quint64 exists[kMapWords];

    bool contains(int index) const
    {
        return (exists[index / kWordBits] >> (index % kWordBits) & 1) != 0;
    }
    /// Marks `count` bytes from `first` on as existing. Returns how many did not exist before.
    int create(int first, int count)
    {
        int created = 0;
        while (count > 0) {
            quint64& word = exists[first / kWordBits];
            const int bit = first % kWordBits;
            const int step = qMin(count, kWordBits - bit);
            const quint64 missing = ones(bit, step) & ~word;
            if (missing != 0) {
                created += countBits(missing);
                word |= missing;
            }
            first += step;
            count -= step;
        }
        return created;
    }
};

DataImage::~DataImage()
{
    clear();
}

bool DataImage::contains(quint64 key) const
{
    const Page* page = findPage(key >> kPageBits);
    return page && page->contains(int(key & kPageMask));
}

uchar DataImage::value(quint64 key) const
{
    const Page* page = findPage(key >> kPageBits);
    return page ? page->bytes[key & kPageMask] : uchar(0);
}

uchar& DataImage::operator[](quint64 key)
{
    Page& page = pageOf(key >> kPageBits);
    const int index = int(key & kPageMask);
    m_size += page.create(index, 1);
    return page.bytes[index];
}

QList<quint64> DataImage::keys() const
{
    QList<quint64> keys;
    for (int i = 0; i < int(m_slots.size()); ++i) {
        const Slot& slot = m_slots.at(i);
        for (int index = 0; slot.page && index < kPageSize; ++index) {
            if (slot.page->contains(index))
                keys.append(slot.pageKey << kPageBits | quint64(index));
        }
    }
    std::sort(keys.begin(), keys.end());
    return keys;
}

void DataImage::clear()
{
    for (int i = 0; i < int(m_slots.size()); ++i)
        delete m_slots.at(i).page;
    m_slots.clear();
    m_pageCount = 0;
    m_size = 0;
}

void DataImage::read(quint32 areaIndex, quint32 address, uchar* bytes, int count)
{
    while (count > 0) {
        const quint64 start = key(areaIndex, address);
        const int index = int(start & kPageMask);
        const int step = qMin(count, kPageSize - index);
        Page& page = pageOf(start >> kPageBits);
        m_size += page.create(index, step);
        std::memcpy(bytes, page.bytes + index, size_t(step));
        bytes += step;
        address += quint32(step);
        count -= step;
    }
}

void DataImage::write(quint32 areaIndex, quint32 address, const uchar* bytes, int count)
{
    while (count > 0) {
        const quint64 start = key(areaIndex, address);
        const int index = int(start & kPageMask);
        const int step = qMin(count, kPageSize - index);
        Page& page = pageOf(start >> kPageBits);
        m_size += page.create(index, step);
        std::memcpy(page.bytes + index, bytes, size_t(step));
        bytes += step;
        address += quint32(step);
        count -= step;
    }
}

DataImage::Page* DataImage::findPage(quint64 pageKey) const
{
    const int count = int(m_slots.size());
    if (count == 0)
        return nullptr;
    const Slot* table = m_slots.constData();
    int i = slotOfKey(pageKey, count);
    while (table[i].page && table[i].pageKey != pageKey)
        i = (i + 1) & (count - 1);
    return table[i].page;
}

DataImage::Page& DataImage::pageOf(quint64 pageKey)
{
    Page* page = findPage(pageKey);
    if (!page) {
        page = new Page();
        insertPage(pageKey, page);
    }
    return *page;
}

void DataImage::insertPage(quint64 pageKey, Page* page)
{
    // A quarter of the slots stays free, so that a search ends soon.
    if (4 * (m_pageCount + 1) > 3 * int(m_slots.size()))
        grow();
    const int count = int(m_slots.size());
    int i = slotOfKey(pageKey, count);
    while (m_slots.at(i).page)
        i = (i + 1) & (count - 1);
    m_slots[i].pageKey = pageKey;
    m_slots[i].page = page;
    ++m_pageCount;
}

void DataImage::grow()
{
    QVector<Slot> old(qMax(kSmallestTable, 2 * int(m_slots.size())));
    old.swap(m_slots);
    m_pageCount = 0;
    for (int i = 0; i < int(old.size()); ++i) {
        if (old.at(i).page)
            insertPage(old.at(i).pageKey, old.at(i).page);
    }
}

} // namespace plc

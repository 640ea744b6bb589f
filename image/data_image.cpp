#include "image/data_image.h"

#include <algorithm>

#include "base/wrapped_int.h"

namespace plc {

namespace {

int countBits(quint64 word)
{
    int bits = 0;
    for (; word != 0; word &= word - 1)
        ++bits;
    return bits;
}

} // namespace

/// Marks `count` bytes from `first` on as existing. Returns how many did not exist before.
int DataImage::Page::create(int first, int count)
{
    int created = 0;
    while (count > 0) {
        quint64& word = exists[first / kWordBits];
        const int bit = first % kWordBits;
        const int step = qMin(count, kWordBits - bit);
        const quint64 missing = ones(bit, step) & ~word;
        created += countBits(missing);
        word |= missing;
        first += step;
        count -= step;
    }
    return created;
}

DataImage::~DataImage()
{
    clear();
}

bool DataImage::contains(quint64 key) const
{
    return bool(findRange(key, 1));
}

uchar DataImage::value(quint64 key) const
{
    const Page* page = findPage(key >> kPageBits);
    return page ? page->bytes[key & kIndexMask] : uchar(0);
}

uchar& DataImage::operator[](quint64 key)
{
    Page& page = pageOf(key >> kPageBits);
    const int index = int(key & kIndexMask);
    m_size += page.create(index, 1);
    return page.bytes[index];
}

QList<quint64> DataImage::keys() const
{
    QList<quint64> keys;
    m_pages.forEach([&](const Slot& slot) {
        for (int index = 0; index < kPageSize; ++index) {
            if (slot.page->contains(index))
                keys.append(slot.pageKey << kPageBits | quint64(index));
        }
    });
    std::sort(keys.begin(), keys.end());
    return keys;
}

void DataImage::clear()
{
    m_pages.forEach([](const Slot& slot) { delete slot.page; });
    m_pages.clear();
    m_size = 0;
}

void DataImage::readByPages(quint32 areaIndex, quint32 address, uchar* bytes, int count)
{
    while (count > 0) {
        const quint64 start = key(areaIndex, address);
        const int index = int(start & kIndexMask);
        const int step = qMin(count, kPageSize - index);
        Page& page = pageOf(start >> kPageBits);
        m_size += page.create(index, step);
        std::memcpy(bytes, page.bytes + index, size_t(step));
        bytes += step;
        address = advanced(address, step);
        count -= step;
    }
}

void DataImage::writeByPages(quint32 areaIndex, quint32 address, const uchar* bytes, int count)
{
    while (count > 0) {
        const quint64 start = key(areaIndex, address);
        const int index = int(start & kIndexMask);
        const int step = qMin(count, kPageSize - index);
        Page& page = pageOf(start >> kPageBits);
        m_size += page.create(index, step);
        std::memcpy(page.bytes + index, bytes, size_t(step));
        bytes += step;
        address = advanced(address, step);
        count -= step;
    }
}

DataImage::Page& DataImage::pageOf(quint64 pageKey)
{
    Page* page = findPage(pageKey);
    if (!page) {
        page = new Page();
        m_pages.insert(pageKey, [=](Slot& slot, quint32) {
            slot.pageKey = pageKey;
            slot.page = page;
        });
    }
    return *page;
}

} // namespace plc

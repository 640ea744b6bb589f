#ifndef PLC_IMAGE_DATA_IMAGE_H
#define PLC_IMAGE_DATA_IMAGE_H

#include <QtCore/QList>
#include <QtCore/QVector>
#include <QtCore/QtGlobal>

namespace plc {

/// PLC memory as last read or written: a map from 64-bit keys (memory area index in the high half,
/// byte address in the low half) to bytes.
///
/// Bytes lie in pages with a map of which of them exist, so that a dense area costs little more
/// than its bytes, and ranges are copied page by page. A byte that was touched exists, with value 0
/// until it is written, and never disappears but by clear(). Not thread-safe by itself.
class DataImage {
public:
    DataImage() = default;
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
    void read(quint32 areaIndex, quint32 address, uchar* bytes, int count);
    /// Stores `count` bytes from `address` on. Addresses go on at 0 after 0xFFFFFFFF.
    void write(quint32 areaIndex, quint32 address, const uchar* bytes, int count);

private:
    struct Page;
    struct Slot {
        quint64 pageKey = 0;
        Page* page = nullptr; ///< Null: the slot is free.
    };

    Page* findPage(quint64 pageKey) const;
    Page& pageOf(quint64 pageKey);
    void insertPage(quint64 pageKey, Page* page);
    void grow();

    Q_DISABLE_COPY(DataImage)

    QVector<Slot> m_slots; ///< Open addressing; a power of two, or empty.
    int m_pageCount = 0;
    qint64 m_size = 0;
};

} // namespace plc

#endif

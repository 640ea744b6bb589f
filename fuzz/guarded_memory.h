#ifndef PLC_FUZZ_GUARDED_MEMORY_H
#define PLC_FUZZ_GUARDED_MEMORY_H

#include <sys/mman.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <cstdlib>
#include <cstring>

namespace plc::fuzz {

/// Memory that ends at an unmapped page: reading a single byte behind what is placed in it ends the
/// process. What is placed stays until the next is.
class GuardedMemory {
public:
    GuardedMemory()
    {
        void* memory = mmap(nullptr, kSize + kPageSize, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED)
            std::abort();
        m_end = static_cast<char*>(memory) + kSize;
        if (mprotect(m_end, kPageSize, PROT_NONE) != 0)
            std::abort();
    }
    ~GuardedMemory() { munmap(m_end - kSize, kSize + kPageSize); }

    /// The bytes, at most 1 MiB of them, right in front of the unmapped page.
    QByteArray bytes(const QByteArray& source)
    {
        const int size = int(qMin<qint64>(source.size(), qint64(kSize)));
        return QByteArray::fromRawData(place(source.constData(), std::size_t(size)), size);
    }

    QString text(const QString& source)
    {
        const int size = int(qMin<qint64>(source.size(), qint64(kSize / sizeof(QChar))));
        const char* start = place(source.constData(), std::size_t(size) * sizeof(QChar));
        return QString::fromRawData(reinterpret_cast<const QChar*>(start), size);
    }

private:
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    static constexpr std::size_t kSize = std::size_t(1) << 20;
    static constexpr std::size_t kPageSize = std::size_t(1) << 16;

    char* place(const void* source, std::size_t size)
    {
        char* start = m_end - size;
        std::memcpy(start, source, size);
        return start;
    }

    char* m_end;
};

} // namespace plc::fuzz

#endif

#include "support/allocations.h"

#include <malloc.h>
#include <cerrno>
#include <cstddef>

// The allocator of the C library under the names that stay when malloc() is replaced.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

/// The allocator's own word in front of each block.
constexpr std::int64_t kBlockOverhead = std::int64_t(sizeof(std::size_t));

plc::bench::Allocations counted;
bool heapIsMetered = false;
std::int64_t heldBytes = 0;

void countCall(std::size_t size)
{
    ++counted.calls;
    counted.bytes += std::int64_t(size);
}

void* countTaken(void* block)
{
    if (heapIsMetered && block)
        heldBytes += std::int64_t(malloc_usable_size(block)) + kBlockOverhead;
    return block;
}

void countGivenBack(void* block)
{
    if (heapIsMetered && block)
        heldBytes -= std::int64_t(malloc_usable_size(block)) + kBlockOverhead;
}

void* alignedBlock(std::size_t alignment, std::size_t size)
{
    countCall(size);
    return countTaken(__libc_memalign(alignment, size));
}

} // namespace

#define PLC_REPLACES_LIBRARY extern "C" __attribute__((visibility("default")))

PLC_REPLACES_LIBRARY void* malloc(std::size_t size) noexcept
{
    countCall(size);
    return countTaken(__libc_malloc(size));
}

PLC_REPLACES_LIBRARY void* calloc(std::size_t count, std::size_t size) noexcept
{
    countCall(count * size);
    return countTaken(__libc_calloc(count, size));
}

PLC_REPLACES_LIBRARY void* realloc(void* block, std::size_t size) noexcept
{
    countCall(size);
    countGivenBack(block);
    return countTaken(__libc_realloc(block, size));
}

PLC_REPLACES_LIBRARY void free(void* block) noexcept
{
    countGivenBack(block);
    __libc_free(block);
}

PLC_REPLACES_LIBRARY void* memalign(std::size_t alignment, std::size_t size) noexcept
{
    return alignedBlock(alignment, size);
}

PLC_REPLACES_LIBRARY void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    return alignedBlock(alignment, size);
}

PLC_REPLACES_LIBRARY int posix_memalign(void** block, std::size_t alignment,
                                        std::size_t size) noexcept
{
    *block = alignedBlock(alignment, size);
    return *block ? 0 : ENOMEM;
}

namespace plc::bench {

Allocations allocations()
{
    return counted;
}

HeapMeter::HeapMeter()
{
    heldBytes = 0;
    heapIsMetered = true;
}

HeapMeter::~HeapMeter()
{
    heapIsMetered = false;
}

std::int64_t HeapMeter::bytesHeld() const
{
    return heldBytes;
}

} // namespace plc::bench

#include "base/process_key.h"

#include <cstring>

#include "base/folded_product.h"

#ifdef __linux__
#include <sys/auxv.h>
#endif

namespace plc {

quint64 processKey()
{
    // Where the system has put the program's data and its stack.
    static const char kPlace = 0;
    const char local = 0;
    quint64 key = foldedProduct(quint64(quintptr(&kPlace)), Q_UINT64_C(0x9E3779B97F4A7C15)) ^
                  quint64(quintptr(&local));
#ifdef __linux__
    // The kernel hands 16 random bytes to each process that it starts; their address is a number.
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    if (const void* const random = reinterpret_cast<const void*>(getauxval(AT_RANDOM))) {
        quint64 words[2];
        std::memcpy(words, random, sizeof words);
        key ^= words[0] ^ words[1];
    }
#endif
    return key;
}

} // namespace plc

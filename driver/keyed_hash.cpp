#include "driver/keyed_hash.h"

#ifdef __linux__
#include <sys/auxv.h>
#endif

namespace plc {

namespace {

/// Spreads the key over a word of its own for each `number`.
quint64 wordOfKey(quint64 key, quint64 number)
{
    const quint64 kFirstFactor = Q_UINT64_C(0x9E3779B97F4A7C15);
    const quint64 kSecondFactor = Q_UINT64_C(0xD1B54A32D192ED03);
    return foldedProduct(foldedProduct(key ^ number, kFirstFactor) ^ kSecondFactor, kSecondFactor);
}

} // namespace

quint64 processKey()
{
    // Where the system has put the program's data and its stack.
    static const char kPlace = 0;
    const char local = 0;
    quint64 key = foldedProduct(quint64(quintptr(&kPlace)), Q_UINT64_C(0x9E3779B97F4A7C15)) ^
                  quint64(quintptr(&local));
#ifdef __linux__
    // The kernel hands 16 random bytes to each process that it starts.
    if (const void* const random = reinterpret_cast<const void*>(getauxval(AT_RANDOM))) {
        quint64 words[2];
        std::memcpy(words, random, sizeof words);
        key ^= words[0] ^ words[1];
    }
#endif
    return key;
}

KeyedHash::KeyedHash(quint64 key)
    : m_start(wordOfKey(key, 1)), m_step(wordOfKey(key, 2) | 1), m_last(wordOfKey(key, 3) | 1)
{
}

} // namespace plc

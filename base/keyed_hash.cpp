#include "base/keyed_hash.h"

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

KeyedHash::KeyedHash(quint64 key)
    : m_start(wordOfKey(key, 1)), m_step(wordOfKey(key, 2) | 1), m_last(wordOfKey(key, 3) | 1)
{
}

} // namespace plc

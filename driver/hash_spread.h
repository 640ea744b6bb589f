#ifndef PLC_DRIVER_HASH_SPREAD_H
#define PLC_DRIVER_HASH_SPREAD_H

#include <QtCore/QtGlobal>

// The product wraps on purpose.
#ifdef __clang__
#define PLC_WRAPS __attribute__((no_sanitize("unsigned-integer-overflow")))
#else
#define PLC_WRAPS
#endif

namespace plc {

/// Multiplicative hashing (Knuth, The Art of Computer Programming, volume 3, section 6.4): the
/// upper bits of the product depend on all bits of the key.
PLC_WRAPS inline quint64 spread(quint64 key)
{
    return key * Q_UINT64_C(0x9E3779B97F4A7C15); // 2^64 / golden ratio
}

} // namespace plc

#undef PLC_WRAPS

#endif

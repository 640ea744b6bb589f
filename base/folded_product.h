#ifndef PLC_BASE_FOLDED_PRODUCT_H
#define PLC_BASE_FOLDED_PRODUCT_H

#include <QtCore/QtGlobal>

namespace plc {

/// The 128 bits of a product, the upper half folded onto the lower.
inline quint64 foldedProduct(quint64 a, quint64 b)
{
#ifdef __SIZEOF_INT128__
    __extension__ typedef unsigned __int128 Product;
    const Product product = Product(a) * b;
    return quint64(product) ^ quint64(product >> 64);
#else
    const quint64 kLowHalf = 0xFFFFFFFFu;
    const quint64 low = (a & kLowHalf) * (b & kLowHalf);
    const quint64 middle = (a >> 32) * (b & kLowHalf) + (low >> 32);
    const quint64 otherMiddle = (a & kLowHalf) * (b >> 32) + (middle & kLowHalf);
    const quint64 high = (a >> 32) * (b >> 32) + (middle >> 32) + (otherMiddle >> 32);
    return high ^ (otherMiddle << 32 | (low & kLowHalf));
#endif
}

} // namespace plc

#endif

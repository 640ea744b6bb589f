#include "image/value_read.h"

#include <QtCore/QtEndian>

#include <cstring>

#include "base/wrapped_int.h"

namespace plc {

namespace {

/// From most significant byte first to least significant byte first.
template <typename Element>
void reverseElements(uchar* bytes, int size)
{
    const int width = int(sizeof(Element));
    for (int i = 0; i + width <= size; i += width) {
        Element element;
        std::memcpy(&element, bytes + i, sizeof element);
        element = qToLittleEndian(qFromBigEndian(element));
        std::memcpy(bytes + i, &element, sizeof element);
    }
}

void toHostOrder(TypeGroup group, uchar* bytes, int size)
{
    switch (group) {
        case TypeGroup::Flag:
            for (int i = 0; i < size; ++i)
                bytes[i] = bytes[i] != 0;
            break;
        case TypeGroup::Word:
            reverseElements<quint16>(bytes, size);
            break;
        case TypeGroup::DoubleWord:
            reverseElements<quint32>(bytes, size);
            break;
        case TypeGroup::QuadWord:
            reverseElements<quint64>(bytes, size);
            break;
        default:
            break;
    }
}

void readBits(DataImage& image, const ControlInformationM& place, uchar* bits, int count)
{
    const quint32 area = quint32(place.areaIndex);
    for (int i = 0; i < count; ++i) {
        const BitPlace bit(advanced(quint32(place.address), i));
        uchar word[kRegisterBytes];
        image.read(area, bit.highByte, word, kRegisterBytes);
        bits[i] = uchar((word[0] << 8 | word[1]) >> bit.bit & 1);
    }
}

} // namespace

void readValue(DataImage& image, const ControlInformationM& place, TypeGroup group, int count,
               QByteArray& value)
{
    uchar* const buffer = reinterpret_cast<uchar*>(value.data());
    int size = int(value.size());
    switch (group) {
        case TypeGroup::None:
        case TypeGroup::Structure:
            std::memset(buffer, 0, size_t(size));
            return;
        case TypeGroup::Bit:
            readBits(image, place, buffer, size);
            return;
        case TypeGroup::Byte:
            // Packed at the front, while a write takes one element from each register.
            std::memset(buffer + count, 0, size_t(size - count));
            size = count;
            break;
        default:
            break;
    }
    image.read(quint32(place.areaIndex), quint32(place.address), buffer, size);
    toHostOrder(group, buffer, size);
}

} // namespace plc

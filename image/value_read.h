#ifndef PLC_IMAGE_VALUE_READ_H
#define PLC_IMAGE_VALUE_READ_H

#include <QtCore/QByteArray>

#include "image/data_image.h"
#include "symbols/label_resolution.h"
#include "symbols/type_codes.h"

namespace plc {

/// Bytes of the host's buffer for `count` registers, or elements of one-byte groups without
/// registers. 0 for a negative count.
inline qint64 valueSize(TypeGroup group, qint64 count)
{
    switch (group) {
        case TypeGroup::Flag:
        case TypeGroup::Bit:
            return qMax(qint64(0), count);
        case TypeGroup::DoubleWord:
        case TypeGroup::QuadWord: {
            const int width = elementWidth(group);
            const int registers = width / kRegisterBytes;
            return qMax(qint64(0), (count + registers - 1) / registers * width);
        }
        default:
            return qMax(qint64(0), count * kRegisterBytes);
    }
}

/// Fills `value`, whose size is that of valueSize(), from the image: least significant byte first.
/// Bytes that did not exist exist afterwards.
void readValue(DataImage& image, const ControlInformationM& place, TypeGroup group, int count,
               QByteArray& value);

} // namespace plc

#endif

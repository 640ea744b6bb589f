#include <QtCore/QtEndian>

#include <cstring>

#include "driver/Communication_Protocol.h"
#include "driver/wrapped_int.h"
#include "image/local_data.h"
#include "symbols/label_resolution.h"
#include "symbols/type_codes.h"

namespace {

const int kRegisterBytes = 2;

/// Bytes of the host's buffer for `count` registers, or elements of one-byte groups without
/// registers. 0 for a negative count.
qint64 bufferSize(plc::TypeGroup group, qint64 count)
{
    switch (group) {
        case plc::TypeGroup::Flag:
        case plc::TypeGroup::Bit:
            return qMax(qint64(0), count);
        case plc::TypeGroup::DoubleWord:
        case plc::TypeGroup::QuadWord: {
            const int width = plc::elementWidth(group);
            const int registers = width / kRegisterBytes;
            return qMax(qint64(0), (count + registers - 1) / registers * width);
        }
        default:
            return qMax(qint64(0), count * kRegisterBytes);
    }
}

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

void toHostOrder(plc::TypeGroup group, uchar* bytes, int size)
{
    switch (group) {
        case plc::TypeGroup::Flag:
            for (int i = 0; i < size; ++i)
                bytes[i] = bytes[i] != 0;
            break;
        case plc::TypeGroup::Word:
            reverseElements<quint16>(bytes, size);
            break;
        case plc::TypeGroup::DoubleWord:
            reverseElements<quint32>(bytes, size);
            break;
        case plc::TypeGroup::QuadWord:
            reverseElements<quint64>(bytes, size);
            break;
        default:
            break;
    }
}

void readBits(const ControlInformationM& place, uchar* bits, int count)
{
    const quint32 area = quint32(place.areaIndex);
    for (int i = 0; i < count; ++i) {
        const plc::BitPlace bit(plc::advanced(quint32(place.address), i));
        uchar word[kRegisterBytes];
        PLC_driver.localImage.read(area, bit.highByte, word, kRegisterBytes);
        bits[i] = uchar((word[0] << 8 | word[1]) >> bit.bit & 1);
    }
}

/// Fills the buffer from the image.
void readValue(const ControlInformationM& place, plc::TypeGroup group, int count, uchar* buffer,
               int size)
{
    switch (group) {
        case plc::TypeGroup::None:
        case plc::TypeGroup::Structure:
            std::memset(buffer, 0, size_t(size));
            return;
        case plc::TypeGroup::Bit:
            readBits(place, buffer, size);
            return;
        case plc::TypeGroup::Byte:
            // Packed at the front, while a write takes one element from each register.
            std::memset(buffer + count, 0, size_t(size - count));
            size = count;
            break;
        default:
            break;
    }
    PLC_driver.localImage.read(quint32(place.areaIndex), quint32(place.address), buffer, size);
    toHostOrder(group, buffer, size);
}

/// Gives `value` this size, or empties it and returns false when no value is that large.
bool resize(QByteArray& value, qint64 size)
{
    const bool acceptable = size <= PLC_LARGEST_VALUE;
    value.resize(acceptable ? int(size) : 0);
    return acceptable;
}

} // namespace

int GetRegisterData(const QString& label, int, int, int, QByteArray* value, int count)
{
    if (!value)
        return 0;
    ControlInformationM place = ControlInformationM();
    if (get_label_address_info(label, place) != plc::kResolved) {
        resize(*value, bufferSize(plc::TypeGroup::None, count));
        value->fill('\0');
        return 0;
    }
    const plc::TypeGroup group = plc::typeInfo(place.dataType).group;
    if (!resize(*value, bufferSize(group, count)))
        return 0;
    if (value->isEmpty())
        return 1;

    QMutexLocker lock(&PLC_driver.dataMutex);
    readValue(place, group, count, reinterpret_cast<uchar*>(value->data()), int(value->size()));
    return 1;
}

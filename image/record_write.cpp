#include "image/record_write.h"

#include "base/wrapped_int.h"
#include "symbols/type_codes.h"

namespace plc {

namespace {

void writeBytes(DataImage& image, const RW_VAR& record)
{
    QByteArray bytes = record.data;
    if (bytes.size() < record.length)
        bytes.append(QByteArray(record.length - int(bytes.size()), '\0'));
    image.write(quint32(record.areaIndex), quint32(record.address),
                reinterpret_cast<const uchar*>(bytes.constData()), record.length);
}

void writeBit(DataImage& image, quint32 areaIndex, quint32 bitAddress, bool on)
{
    const BitPlace place(bitAddress);
    uchar& high = image[DataImage::key(areaIndex, place.highByte)];
    uchar& low = image[DataImage::key(areaIndex, place.lowByte)];
    const int mask = 1 << place.bit;
    int word = high << 8 | low;
    word = on ? word | mask : word & ~mask;
    low = uchar(word & 0xFF);
    high = uchar(word >> 8);
}

void writeBits(DataImage& image, const RW_VAR& record)
{
    for (int i = 0; i < record.length; ++i)
        writeBit(image, quint32(record.areaIndex), advanced(quint32(record.address), i),
                 i < int(record.data.size()) && record.data.at(i) != 0);
}

} // namespace

void writeRecord(DataImage& image, const RW_VAR& record)
{
    if (record.dataType == PLC_TYPE_BIT)
        writeBits(image, record);
    else
        writeBytes(image, record);
}

} // namespace plc

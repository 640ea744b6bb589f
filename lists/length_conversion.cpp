#include "lists/length_conversion.h"

#include "base/wrapped_int.h"
#include "symbols/type_codes.h"

namespace plc {

namespace {

const int kWordBytes = 2;
const int kWordBits = 16;

/// Bytes of `count` registers, rounded up to whole elements of `elementBytes`.
qint64 wholeElements(qint64 count, int elementBytes)
{
    const int registers = elementBytes / kWordBytes;
    return (count + registers - 1) / registers * elementBytes;
}

} // namespace

bool toReadRange(const ControlInformationM& place, qint32 count, TextCount textCount,
                 ReadRange& range)
{
    const TypeGroup group = typeInfo(place.dataType).group;
    qint64 length = count;
    range.dataType = place.dataType;
    range.address = place.address;
    switch (group) {
        case TypeGroup::None:
        case TypeGroup::Structure:
            return false;
        case TypeGroup::Flag:
        case TypeGroup::Byte:
            break;
        case TypeGroup::Text:
            if (textCount == TextCount::Registers)
                length *= kWordBytes;
            break;
        case TypeGroup::Word:
        case TypeGroup::DoubleWord:
        case TypeGroup::QuadWord:
            length = wholeElements(length, elementWidth(group));
            break;
        case TypeGroup::Bit:
            length = (place.address % kWordBits + length + kWordBits - 1) / kWordBits * kWordBytes;
            range.dataType = PLC_TYPE_WORD;
            range.address = place.address / kWordBits;
            break;
    }
    range.length = toInt32(length);
    return true;
}

} // namespace plc

#include "image/value_write.h"

namespace plc {

namespace {

qint64 roundedUp(qint64 size, int width)
{
    return (size + width - 1) / width * width;
}

} // namespace

qint64 wireSize(TypeGroup group, qint64 size, qint64 count)
{
    const int width = elementWidth(group);
    switch (group) {
        case TypeGroup::Flag:
        case TypeGroup::Bit:
            return qMax(count, size);
        case TypeGroup::Byte:
            return qMax(count, roundedUp(size, kRegisterBytes) / kRegisterBytes);
        case TypeGroup::Word:
        case TypeGroup::DoubleWord:
        case TypeGroup::QuadWord: {
            const int registers = width / kRegisterBytes;
            return qMax((count + registers - 1) / registers * width, roundedUp(size, width));
        }
        case TypeGroup::Text:
            return qMax(count * kRegisterBytes, size);
        default:
            return 0;
    }
}

QByteArray wireBytes(TypeGroup group, const QByteArray& value, int size)
{
    QByteArray out(size, '\0');
    const int width = elementWidth(group);
    for (int i = 0; i < int(value.size()); ++i) {
        const char byte = value.at(i);
        switch (group) {
            case TypeGroup::Flag:
            case TypeGroup::Bit:
                out[i] = byte != 0;
                break;
            case TypeGroup::Byte:
                // One element a register, in its low byte.
                if (i % kRegisterBytes == 0)
                    out[i / kRegisterBytes] = byte;
                break;
            default:
                out[i / width * width + (width - 1 - i % width)] = byte;
                break;
        }
    }
    return out;
}

} // namespace plc

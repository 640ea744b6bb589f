#include "driver/Communication_Protocol.h"
#include "driver/wrapped_int.h"
#include "image/local_data.h"
#include "lists/variable_lists.h"
#include "symbols/label_resolution.h"
#include "symbols/type_codes.h"

namespace {

const int kRegisterBytes = 2;

/// A bit is written by a record of its own: one data byte, at its bit address.
const int kBitPiece = 1;

qint64 roundedUp(qint64 size, int width)
{
    return (size + width - 1) / width * width;
}

/// Bytes on the wire for a host buffer of `size` bytes and a `count` of the host; 0 for types that
/// cannot be written. What the buffer lacks is 0, what it has beyond the count is written too.
qint64 convertedSize(plc::TypeGroup group, qint64 size, qint64 count)
{
    const int width = plc::elementWidth(group);
    switch (group) {
        case plc::TypeGroup::Flag:
        case plc::TypeGroup::Bit:
            return qMax(count, size);
        case plc::TypeGroup::Byte:
            return qMax(count, roundedUp(size, kRegisterBytes) / kRegisterBytes);
        case plc::TypeGroup::Word:
        case plc::TypeGroup::DoubleWord:
        case plc::TypeGroup::QuadWord: {
            const int registers = width / kRegisterBytes;
            return qMax((count + registers - 1) / registers * width, roundedUp(size, width));
        }
        case plc::TypeGroup::Text:
            return qMax(count * kRegisterBytes, size);
        default:
            return 0;
    }
}

/// The host's bytes in PLC order, padded with zeros to `size`.
QByteArray converted(plc::TypeGroup group, const QByteArray& value, int size)
{
    QByteArray out(size, '\0');
    const int width = plc::elementWidth(group);
    for (int i = 0; i < int(value.size()); ++i) {
        const char byte = value.at(i);
        switch (group) {
            case plc::TypeGroup::Flag:
            case plc::TypeGroup::Bit:
                out[i] = byte != 0;
                break;
            case plc::TypeGroup::Byte:
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

bool linkHasFailed()
{
    QMutexLocker lock(&PLC_driver.listMutex);
    return PLC_driver.failed != 0;
}

void queueValue(RW_VAR& record, plc::TypeGroup group, const QByteArray& value, int count)
{
    const qint64 size = convertedSize(group, value.size(), count);
    const int pieceSize = group == plc::TypeGroup::Bit ? kBitPiece : PLC_WRITE_PIECE;
    if (size <= 0 || !plc::isWithinLimits(size, pieceSize))
        return;
    const QByteArray bytes = converted(group, value, int(size));
    plc::queueWritePieces(record, bytes, pieceSize);
    if (linkHasFailed()) {
        // The host sees the value while the link is down; otherwise the request shows it.
        record.length = int(size);
        record.data = bytes;
        WriteDataToLocal(&record);
    }
}

} // namespace

int SetRegisterData(const QString& label, int, const QString& subLabel, int station,
                    QByteArray* value, int count, int category, int aux1)
{
    const ComInfo* settings = PLC_driver.settings;
    ControlInformationM place = ControlInformationM();
    if (!value || !settings || get_label_address_info(label, place) != plc::kResolved)
        return 0;

    RW_VAR record;
    record.category = category;
    record.aux1 = aux1;
    record.aux2 = PLC_REPLY_ACKNOWLEDGED;
    record.aux3 = settings->remoteMode;
    record.deviceNo = settings->localDeviceNo;
    record.label = label;
    record.subLabel = subLabel;
    record.dataType = place.dataType;
    record.address = place.address;
    record.station = settings->multiStation != 0 ? station : settings->defaultStation;
    record.length = count;
    record.areaIndex = place.areaIndex;

    if (settings->writeMode != PLC_WRITE_MODE_QUEUE) {
        if (count > PLC_LARGEST_VALUE)
            return 0;
        record.data = *value;
        WriteDataToLocal(&record);
        return 1;
    }
    queueValue(record, plc::typeInfo(place.dataType).group, *value, count);
    return 0;
}

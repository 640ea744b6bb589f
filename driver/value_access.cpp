#include "driver/Communication_Protocol.h"
#include "driver/image_access.h"
#include "driver/list_access.h"
#include "image/value_read.h"
#include "image/value_write.h"
#include "lists/variable_lists.h"

namespace {

/// A bit is written by a record of its own: one data byte, at its bit address.
const int kBitPiece = 1;

/// Gives `value` this size, or empties it and returns false when no value is that large.
bool resize(QByteArray& value, qint64 size)
{
    const bool acceptable = size <= PLC_LARGEST_VALUE;
    const int wanted = acceptable ? int(size) : 0;
    if (wanted == 0 || wanted != value.size())
        value.resize(wanted);
    return acceptable;
}

bool linkHasFailed()
{
    QMutexLocker lock(&PLC_driver.listMutex);
    return PLC_driver.failed != 0;
}

void queueConverted(RW_VAR& record, plc::TypeGroup group, const QByteArray& value, int count)
{
    const qint64 size = plc::wireSize(group, value.size(), count);
    const int pieceSize = group == plc::TypeGroup::Bit ? kBitPiece : PLC_WRITE_PIECE;
    if (size <= 0 || !plc::isWithinLimits(size, pieceSize))
        return;
    const QByteArray bytes = plc::wireBytes(group, value, int(size));
    plc::queueValue(record, bytes, pieceSize);
    if (linkHasFailed()) {
        // The host sees the value while the link is down; otherwise the request shows it.
        record.length = int(size);
        record.data = bytes;
        WriteDataToLocal(&record);
    }
}

} // namespace

int GetRegisterData(const QString& label, int, int, int, QByteArray* value, int count)
{
    if (!value)
        return 0;
    ControlInformationM place = ControlInformationM();
    if (PLC_driver.labels.resolve(label, place) != plc::kResolved) {
        resize(*value, plc::valueSize(plc::TypeGroup::None, count));
        value->fill('\0');
        return 0;
    }
    const plc::TypeGroup group = plc::typeInfo(place.dataType).group;
    if (!resize(*value, plc::valueSize(group, count)))
        return 0;
    if (value->isEmpty())
        return 1;

    QMutexLocker lock(&PLC_driver.dataMutex);
    plc::readValue(PLC_driver.localImage, place, group, count, *value);
    return 1;
}

int SetRegisterData(const QString& label, int, const QString& subLabel, int station,
                    QByteArray* value, int count, int category, int aux1)
{
    const ComInfo* settings = PLC_driver.settings;
    ControlInformationM place = ControlInformationM();
    if (!value || !settings || PLC_driver.labels.resolve(label, place) != plc::kResolved)
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
    queueConverted(record, plc::typeInfo(place.dataType).group, *value, count);
    return 0;
}

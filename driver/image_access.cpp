#include "driver/image_access.h"

#include "driver/Communication_Protocol.h"
#include "frames/read_reply.h"
#include "image/record_write.h"

quint64 ExtendFindSameVar(const unsigned int& areaIndex, const unsigned int& address)
{
    const quint64 key = plc::DataImage::key(areaIndex, address);
    PLC_driver.localImage[key];
    return key;
}

void SaveToLocalDataErea(QByteArray* reply)
{
    if (!reply || PLC_driver.requestQueue.isEmpty())
        return;
    const int offset = PLC_driver.requestQueue.at(0).dataOffset;
    if (offset < 0)
        return;
    plc::ReplyBlocks blocks(*reply, offset);
    plc::DataImage& image = PLC_driver.localImage;
    const RW_VAR* const end = PLC_driver.batch + plc::batchSize();
    for (const RW_VAR* entry = PLC_driver.batch; entry != end; ++entry) {
        const plc::ReplyBlocks::Block block = blocks.next(quint16(entry->length));
        image.write(quint32(entry->areaIndex), quint32(entry->address), block.bytes, block.size);
    }
}

void WriteDataToLocal(RW_VAR* var)
{
    if (!var || var->length <= 0 || var->length > PLC_LARGEST_VALUE)
        return;
    QMutexLocker lock(&PLC_driver.dataMutex);
    plc::writeRecord(PLC_driver.localImage, *var);
}

#include "image/local_data.h"

#include "driver/Communication_Protocol.h"
#include "driver/result_codes.h"
#include "driver/wrapped_int.h"
#include "frames/frame_layer.h"
#include "symbols/type_codes.h"

namespace {

/// Begins each data block of a read reply; not stored.
const int kBlockLeadSize = 1;

/// What CheckGetData() answers for a good reply.
enum DataCheck { kValidToStore = 1, kValid = 2 };

/// Bytes expected in reply to the request at the head of the queue.
int expectedLength()
{
    return PLC_driver.requestQueue.isEmpty() ? PLC_REPLY_LENGTH_OPEN
                                             : PLC_driver.requestQueue.at(0).replyLength;
}

bool isUnexpected(int received, int expected)
{
    return expected != received && expected != PLC_REPLY_LENGTH_OPEN;
}

void writeBytes(const RW_VAR& var)
{
    QByteArray bytes = var.data.left(var.length);
    if (bytes.size() < var.length)
        bytes.append(QByteArray(var.length - int(bytes.size()), '\0'));
    PLC_driver.localImage.write(quint32(var.areaIndex), quint32(var.address),
                                reinterpret_cast<const uchar*>(bytes.constData()), var.length);
}

void writeBit(quint32 areaIndex, quint32 bitAddress, bool on)
{
    const plc::BitPlace place(bitAddress);
    plc::DataImage& image = PLC_driver.localImage;
    uchar& high = image[plc::DataImage::key(areaIndex, place.highByte)];
    uchar& low = image[plc::DataImage::key(areaIndex, place.lowByte)];
    const int mask = 1 << place.bit;
    int word = high << 8 | low;
    word = on ? word | mask : word & ~mask;
    low = uchar(word & 0xFF);
    high = uchar(word >> 8);
}

void writeBits(const RW_VAR& var)
{
    for (int i = 0; i < var.length; ++i)
        writeBit(quint32(var.areaIndex), plc::advanced(quint32(var.address), i),
                 i < int(var.data.size()) && var.data.at(i) != 0);
}

int judgeLocal(QByteArray* reply, int received)
{
    const int expected = expectedLength();
    if (received == 0 && expected != 0)
        return plc::kLocalNothingReceived;
    if (expected == 0)
        return plc::kLocalGood;
    if (isUnexpected(received, expected))
        return plc::kLocalWrongLength;
    switch (CheckGetData(reply, int(reply->size()))) {
        case kValidToStore: {
            QMutexLocker lock(&PLC_driver.dataMutex);
            SaveToLocalDataErea(reply);
            return plc::kLocalGood;
        }
        case kValid:
            return plc::kLocalGood;
        default:
            return plc::kLocalCheckFailed;
    }
}

int judgeRemote(QByteArray* reply, int received)
{
    const int expected = expectedLength();
    if (received == 0 && expected != 0)
        return plc::kRemoteNothingReceived;
    if (isUnexpected(received, expected))
        return plc::kRemoteWrongLength;
    const int check = CheckGetData(reply, int(reply->size()));
    if (check != kValidToStore && check != kValid)
        return plc::kRemoteCheckFailed;
    if (PLC_driver.requestQueue.at(0).var.aux12 != PLC_REMOTE_STORED)
        return plc::kRemoteGood;
    // Stored without the lock, and also when the request only asked for an acknowledgement: hosts
    // that serve a remote area read it on the communication thread.
    SaveToLocalDataErea(reply);
    const bool first = PLC_driver.settings && PLC_driver.settings->frameIndex == 1;
    return first ? plc::kRemoteGood : plc::kLocalGood;
}

} // namespace

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
    plc::FrameReader reader(*reply, offset);
    plc::DataImage& image = PLC_driver.localImage;
    const RW_VAR* const end = PLC_driver.batch + plc::batchSize();
    for (const RW_VAR* entry = PLC_driver.batch; entry != end; ++entry) {
        const int length = quint16(entry->length);
        reader.skip(kBlockLeadSize);
        image.write(quint32(entry->areaIndex), quint32(entry->address), reader.here(),
                    qMin(length, reader.left()));
        reader.skip(length);
    }
}

int DealDataOfLocalArea(QByteArray* reply, int received)
{
    QByteArray nothing;
    return GetDriverReturnValue(judgeLocal(reply ? reply : &nothing, received));
}

int DealDataOfRemoteArea(QByteArray* reply, int received)
{
    QByteArray nothing;
    return GetDriverReturnValue(judgeRemote(reply ? reply : &nothing, received));
}

void WriteDataToLocal(RW_VAR* var)
{
    if (!var || var->length <= 0 || var->length > PLC_LARGEST_VALUE)
        return;
    QMutexLocker lock(&PLC_driver.dataMutex);
    if (var->dataType == PLC_TYPE_BIT)
        writeBits(*var);
    else
        writeBytes(*var);
}

#include "driver/request_building.h"

#include "driver/Communication_Protocol.h"
#include "driver/image_access.h"
#include "frames/handshake.h"
#include "frames/read_request.h"
#include "frames/write_request.h"

namespace {

const int kSmallestLoginReply = plc::kHeaderSize;

plc::PlcInfo plcInfo()
{
    const plc::PlcInfo info = {PLC_driver.plcInfo1, PLC_driver.plcInfo2};
    return info;
}

/// Appends a request to the queue; its reply states its own length.
void queueRequest(const QByteArray& frame, int dataOffset, int minReplyLength, const RW_VAR& var)
{
    Protocol request;
    request.frame = frame;
    request.frameLength = int(frame.size());
    request.replyLength = PLC_REPLY_LENGTH_OPEN;
    request.dataOffset = dataOffset;
    request.minReplyLength = minReplyLength;
    request.var = var;
    PLC_driver.requestQueue.append(request);
}

/// Notes in the settings record that `frames` replies are due, none of them answered.
void expectReplies(int frames)
{
    if (!PLC_driver.settings)
        return;
    PLC_driver.settings->frameCount = frames;
    PLC_driver.settings->frameIndex = 0;
}

} // namespace

void ReadRegister(RW_VAR* var)
{
    ReadAnalog(var);
}

void ReadAnalog(RW_VAR* var)
{
    if (!var)
        return;
    const QByteArray frame = plc::readRequest(PLC_driver.batch, plc::batchSize(), plcInfo());
    queueRequest(frame, plc::kReadReplyDataOffset, 0, *var);
    expectReplies(1);
}

void WriteRegister(RW_VAR* var)
{
    if (!var)
        return;
    WriteAnalog(var);
    if (PLC_driver.failed == 0)
        WriteDataToLocal(var);
}

void WriteAnalog(RW_VAR* var)
{
    if (!var)
        return;
    queueRequest(plc::writeRequest(PLC_driver.batch, plc::batchSize(), plcInfo()), 0, 0, *var);
    expectReplies(1);
}

void Remote_ReadVar(RW_VAR*) {}

void Remote_WriteVar(RW_VAR*) {}

int handshake_data(RW_VAR* var)
{
    if (!var)
        return 0;
    queueRequest(plc::identificationRequest(), 0, kSmallestLoginReply, *var);
    queueRequest(plc::fileRequest(), 0, kSmallestLoginReply, *var);
    expectReplies(plc::kLoginFrames);
    return 0;
}

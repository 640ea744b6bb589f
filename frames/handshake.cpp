#include "frames/handshake.h"

#include "driver/Communication_Protocol.h"
#include "frames/frame_layer.h"

namespace {

const char kIdentificationFrame[] =
    "BB BB 00 00 00 0E"                    // header: 14 bytes follow
    "01 00"                                // service, reserved
    "00 00 02 00 00 00 06 00 00 00 00 00"; // fixed parameters

const char kFileRequestFrame[] =
    "BB BB 00 00 00 11"                       // header: 17 bytes follow
    "31 00"                                   // service, reserved
    "00 0D"                                   // length of the name with its zero
    "44 4F 57 4E 4C 4F 41 44 2E 53 44 42 00"; // "DOWNLOAD.SDB"

const int kSmallestLoginReply = 6;
const int kLoginFrames = 2;

const int kIdentificationPayload = 200;
const int kFilePayload = 30;
const int kInfo2Offset = 24;
const int kInfo1Offset = 25;

int checkFileReply(const QByteArray& reply)
{
    if (plc::statedPayloadLength(reply) < kFilePayload || reply.size() <= kInfo1Offset)
        return plc::kFileRefused;
    PLC_driver.plcInfo1 = quint8(reply.at(kInfo1Offset));
    PLC_driver.plcInfo2 = quint8(reply.at(kInfo2Offset));
    return plc::kLoginGood;
}

} // namespace

int handshake_data(RW_VAR* var)
{
    if (!var)
        return 0;
    plc::queueRequest(QByteArray::fromHex(kIdentificationFrame), 0, kSmallestLoginReply, *var);
    plc::queueRequest(QByteArray::fromHex(kFileRequestFrame), 0, kSmallestLoginReply, *var);
    plc::expectReplies(kLoginFrames);
    return 0;
}

int handshake_data_check(QByteArray* reply)
{
    if (!reply || reply->size() < plc::kHeaderSize || PLC_driver.requestQueue.isEmpty() ||
        reply->size() < PLC_driver.requestQueue.at(0).minReplyLength)
        return plc::kLoginTooShort;
    if (!PLC_driver.settings)
        return plc::kLoginNotExpected;

    switch (PLC_driver.settings->frameIndex) {
        case 0:
            return plc::statedPayloadLength(*reply) < kIdentificationPayload
                       ? plc::kIdentificationRefused
                       : plc::kLoginGood;
        case 1:
            return checkFileReply(*reply);
        default:
            return plc::kLoginNotExpected;
    }
}

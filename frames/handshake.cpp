#include "frames/handshake.h"

namespace plc {

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

const int kIdentificationPayload = 200;
const int kFilePayload = 30;
const int kInfo2Offset = 24;
const int kInfo1Offset = 25;

} // namespace

QByteArray identificationRequest()
{
    return QByteArray::fromHex(kIdentificationFrame);
}

QByteArray fileRequest()
{
    return QByteArray::fromHex(kFileRequestFrame);
}

LoginCheck checkIdentification(const QByteArray& reply)
{
    return statedPayloadLength(reply) < kIdentificationPayload ? kIdentificationRefused
                                                               : kLoginGood;
}

LoginCheck checkFile(const QByteArray& reply, PlcInfo& info)
{
    if (statedPayloadLength(reply) < kFilePayload || reply.size() <= kInfo1Offset)
        return kFileRefused;
    info.info1 = quint8(reply.at(kInfo1Offset));
    info.info2 = quint8(reply.at(kInfo2Offset));
    return kLoginGood;
}

} // namespace plc

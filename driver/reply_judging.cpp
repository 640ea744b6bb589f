#include "driver/reply_judging.h"

#include "base/result_numbers.h"
#include "driver/Communication_Protocol.h"
#include "driver/image_access.h"
#include "driver/result_codes.h"
#include "frames/handshake.h"

namespace {

enum DataCheck { kInvalid = 0, kValidToStore = 1, kValid = 2 };

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
    if (CheckGetData(reply, int(reply->size())) == kInvalid)
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

int CheckGetData(const QByteArray* reply, int)
{
    if (!reply || !plc::isGoodReply(*reply) || PLC_driver.requestQueue.isEmpty())
        return kInvalid;
    return PLC_driver.requestQueue.at(0).var.aux2 == PLC_REPLY_STORED ? kValidToStore : kValid;
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
            return plc::checkIdentification(*reply);
        case 1: {
            plc::PlcInfo info;
            const plc::LoginCheck check = plc::checkFile(*reply, info);
            if (check == plc::kLoginGood) {
                PLC_driver.plcInfo1 = info.info1;
                PLC_driver.plcInfo2 = info.info2;
            }
            return check;
        }
        default:
            return plc::kLoginNotExpected;
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

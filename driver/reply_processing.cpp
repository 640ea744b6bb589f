#include "base/wrapped_int.h"
#include "driver/Communication_Protocol.h"
#include "driver/records.h"
#include "driver/reply_judging.h"
#include "frames/frame_layer.h"
#include "frames/handshake.h"

namespace {

bool isSameRequest(const RW_VAR& a, const RW_VAR& b)
{
    return a.category == b.category && a.aux1 == b.aux1;
}

/// Whether another piece of the head's host request waits behind it.
bool hasFurtherPiece(const QList<RW_VAR>& list, bool localOnly)
{
    for (int i = 1; i < int(list.size()); ++i) {
        if (isSameRequest(list.at(i), list.at(0)) &&
            (!localOnly || list.at(i).deviceNo == PLC_driver.settings->localDeviceNo))
            return true;
    }
    return false;
}

/// Tells the host of its request once: at its last piece, or at a piece that failed.
void announceHead(const QList<RW_VAR>& list, bool localOnly)
{
    if (!PLC_driver.resultCallback)
        return;
    if (!PLC_driver.failed && hasFurtherPiece(list, localOnly))
        return;
    const RW_VAR& head = list.at(0);
    PLC_driver.resultCallback(PLC_driver.settings->hostTag, head.category, head.aux1,
                              PLC_driver.failed ? PLC_STATUS_FAILED : PLC_STATUS_DONE);
}

/// The batch's entries behind its head follow it directly.
void removeFollowers(QList<RW_VAR>& list)
{
    const int followers = qMin(plc::batchSize(), int(list.size())) - 1;
    if (followers > 0)
        list.erase(list.begin() + 1, list.begin() + 1 + followers);
}

void takeHeadAsReply(QList<RW_VAR>& list)
{
    passRetValue(list.at(0), PLC_driver.reply);
    list.removeFirst();
}

void settleWrites()
{
    QList<RW_VAR>& list = PLC_driver.writeList;
    if (list.isEmpty())
        return;
    removeFollowers(list);
    announceHead(list, false);
    takeHeadAsReply(list);
}

void settleOneShotReads(bool remote)
{
    QList<RW_VAR>& list = PLC_driver.onceReadList;
    if (list.isEmpty())
        return;
    removeFollowers(list);
    if (!remote)
        announceHead(list, true);
    takeHeadAsReply(list);
}

/// Sends the batch to the back of the cycle. A list that was rebuilt since has no issued head.
void settleCyclicReads()
{
    QList<RW_VAR>& list = PLC_driver.readList;
    if (list.isEmpty() || list.at(0).result != plc::kIssued)
        return;
    list.first().result = 0;
    passRetValue(list.at(0), PLC_driver.reply);
    // A batch of the whole list leaves the order as it is.
    const int entries = int(list.size());
    for (int moves = plc::batchSize() % entries; moves > 0; --moves)
        list.append(list.takeFirst());
}

void settleLists(bool remote)
{
    switch (PLC_driver.lastKind) {
        case plc::kWrite:
            settleWrites();
            break;
        case plc::kOneShotRead:
            settleOneShotReads(remote);
            break;
        case plc::kCyclicRead:
            settleCyclicReads();
            break;
        default:
            break;
    }
}

/// Removes what is left of the failed host request.
void purge(QList<RW_VAR>& list)
{
    const RW_VAR& failed = PLC_driver.reply;
    const bool anyStation = PLC_driver.settings->multiStation == 0;
    QList<RW_VAR> kept;
    for (int i = 0; i < int(list.size()); ++i) {
        const RW_VAR& entry = list.at(i);
        if (!isSameRequest(entry, failed) || !(anyStation || entry.station == failed.station))
            kept.append(entry);
    }
    list.swap(kept);
}

void abandonTransaction(bool remote)
{
    QMutexLocker lock(&PLC_driver.listMutex);
    PLC_driver.failed = 1;
    PLC_driver.cycleCount = 0;
    PLC_driver.settings->scanDone = 0;
    PLC_driver.settings->retryCount = 0;
    PLC_driver.requestQueue.clear();
    PLC_driver.loggedIn = 0;

    settleLists(remote);
    if (PLC_driver.failureCallback) {
        QList<RW_VAR> none;
        PLC_driver.failureCallback(&none, PLC_driver.reply.category, PLC_FAILURE_MODE);
    }
    if (PLC_driver.lastKind == plc::kWrite)
        purge(PLC_driver.writeList);
    else if (PLC_driver.lastKind == plc::kOneShotRead)
        purge(PLC_driver.onceReadList);
}

/// Counts a failure. Returns what the host is told: not finished while retries are left, else
/// `code`.
int fail(int code, bool remote)
{
    ComInfo& settings = *PLC_driver.settings;
    const qint64 failures = qint64(settings.retryCount) + 1;
    settings.retryCount = plc::toInt32(failures);
    if (failures <= settings.retryLimit)
        return PLC_RESULT_NOT_FINISHED;
    abandonTransaction(remote);
    return code;
}

/// A full pass is done when more local transactions were completed than there are cyclic entries.
void countTowardsFullPass()
{
    if (PLC_driver.settings->scanDone)
        return;
    const qint64 transactions = qint64(PLC_driver.cycleCount) + 1;
    PLC_driver.cycleCount = plc::toInt32(transactions);
    if (transactions > PLC_driver.readList.size()) {
        PLC_driver.cycleCount = 0;
        PLC_driver.settings->scanDone = 1;
    }
}

/// Counts an answered frame. True when the transaction is complete.
bool countAnsweredFrame()
{
    ComInfo& settings = *PLC_driver.settings;
    const qint64 answered = qint64(settings.frameIndex) + 1;
    settings.frameIndex = plc::toInt32(answered);
    return answered >= settings.frameCount;
}

void acceptReply(bool remote)
{
    const bool complete = countAnsweredFrame();
    QMutexLocker lock(&PLC_driver.listMutex);
    PLC_driver.failed = 0;
    PLC_driver.requestQueue.removeFirst();
    if (!complete)
        return;
    if (!remote)
        countTowardsFullPass();
    settleLists(remote);
}

int advanceLogin(QByteArray* reply)
{
    if (handshake_data_check(reply) != plc::kLoginGood) {
        PLC_driver.requestQueue.clear();
        return PLC_RESULT_LOGIN_REFUSED;
    }
    if (countAnsweredFrame()) {
        PLC_driver.requestQueue.clear();
        PLC_driver.loggedIn = 1;
    } else {
        PLC_driver.requestQueue.removeFirst();
    }
    return PLC_RESULT_ACCEPTED;
}

/// Judges the reply to the request at the head of the queue. Returns the outcome for the host.
int processReply(QByteArray* reply, int received)
{
    Protocol& request = PLC_driver.requestQueue.first();
    const bool wholeFrame = plc::isWholeFrame(*reply);
    if (request.replyLength == PLC_REPLY_LENGTH_OPEN) {
        if (wholeFrame) {
            request.replyLength = int(reply->size());
            return PLC_RESULT_ACCEPTED;
        }
        return reply->isEmpty() ? fail(PLC_RESULT_NO_BYTES, false) : PLC_RESULT_NOT_FINISHED;
    }
    if (request.replyLength > 0 && !wholeFrame)
        return fail(PLC_RESULT_FRAME_LENGTH_WRONG, false);
    if (!PLC_driver.loggedIn)
        return advanceLogin(reply);

    const bool remote = request.var.deviceNo != PLC_driver.settings->localDeviceNo;
    const int code =
        remote ? DealDataOfRemoteArea(reply, received) : DealDataOfLocalArea(reply, received);
    if (code != PLC_RESULT_ACCEPTED && code != PLC_RESULT_REMOTE_ACCEPTED)
        return fail(code, remote);
    acceptReply(remote);
    return code;
}

} // namespace

RW_VAR* DataCom(QByteArray* reply, int received)
{
    int result = PLC_RESULT_ACCEPTED;
    if (!PLC_driver.requestQueue.isEmpty()) {
        QByteArray nothing;
        result = PLC_driver.settings ? processReply(reply ? reply : &nothing, received)
                                     : PLC_RESULT_NO_SETTINGS;
    }
    PLC_driver.reply.result = result;
    return &PLC_driver.reply;
}

#include "driver/Communication_Protocol.h"
#include "driver/request_building.h"
#include "driver/stations.h"

namespace {

struct BatchRule {
    int entryOverhead;
    int capacity;
};
const BatchRule kWriteRule = {PLC_WRITE_ENTRY_OVERHEAD, PLC_MOST_WRITE_ENTRIES};
const BatchRule kReadRule = {PLC_READ_ENTRY_OVERHEAD, PLC_MOST_READ_ENTRIES};

void addToBatch(const RW_VAR& entry)
{
    PLC_driver.batch[PLC_driver.batchCount] = entry;
    ++PLC_driver.batchCount;
}

/// Adds the followers of the list's head up to the first that the budget has no room for.
void addFollowers(const QList<RW_VAR>& list, const BatchRule& rule)
{
    qint64 total = qint64(list.at(0).length) + rule.entryOverhead;
    for (int i = 1; i < int(list.size()) && PLC_driver.batchCount < rule.capacity; ++i) {
        total += qint64(list.at(i).length) + rule.entryOverhead;
        if (total > PLC_REQUEST_BUDGET)
            return;
        addToBatch(list.at(i));
    }
}

void dropSwitchedOffHeads(QList<RW_VAR>& list)
{
    while (!list.isEmpty() && Ethernetcontains(list.at(0).station))
        list.removeFirst();
}

/// Issues a batch from the write or the one-shot list. False when it is not that list's turn.
bool issueBatch(QList<RW_VAR>& list, int& batchesInARow, const BatchRule& rule, plc::BatchKind kind,
                void (*build)(RW_VAR*), void (*buildRemote)(RW_VAR*), RW_VAR& served)
{
    if (list.isEmpty() || batchesInARow >= PLC_REQUESTS_IN_A_ROW)
        return false;
    dropSwitchedOffHeads(list);
    if (list.isEmpty())
        return false;

    served = list.at(0);
    addToBatch(served);
    if (PLC_driver.settings->remoteMode) {
        buildRemote(&served);
    } else {
        addFollowers(list, rule);
        build(&served);
    }
    PLC_driver.lastKind = kind;
    ++batchesInARow;
    return true;
}

/// Rotates the cyclic list to its first entry whose station is on. False, with the order as it was,
/// when there is none.
bool rotateToServedStation(QList<RW_VAR>& list)
{
    for (int moved = 0; moved < int(list.size()); ++moved) {
        if (!Ethernetcontains(list.at(0).station))
            return true;
        list.append(list.takeFirst());
    }
    return false;
}

void issueCyclicReads(RW_VAR& served)
{
    QList<RW_VAR>& list = PLC_driver.readList;
    if (!rotateToServedStation(list))
        return;

    served = list.at(0);
    list.first().result = plc::kIssued;
    addToBatch(served);
    if (PLC_driver.settings->remoteMode) {
        Remote_ReadVar(&served);
    } else {
        addFollowers(list, kReadRule);
        ReadRegister(&served);
    }
    PLC_driver.lastKind = plc::kCyclicRead;
    PLC_driver.writeTries = 0;
    PLC_driver.onceTries = 0;
}

/// Writes go before one-shot reads, and both before the cyclic reads.
void issueNextBatch(RW_VAR& served)
{
    const bool issued = issueBatch(PLC_driver.writeList, PLC_driver.writeTries, kWriteRule,
                                   plc::kWrite, WriteRegister, Remote_WriteVar, served) ||
                        issueBatch(PLC_driver.onceReadList, PLC_driver.onceTries, kReadRule,
                                   plc::kOneShotRead, ReadRegister, Remote_ReadVar, served);
    if (!issued)
        issueCyclicReads(served);
}

} // namespace

Protocol* ComCommunication()
{
    if (!PLC_driver.requestQueue.isEmpty())
        return &PLC_driver.requestQueue.first();
    if (!PLC_driver.settings)
        return nullptr;

    QMutexLocker lock(&PLC_driver.listMutex);
    PLC_driver.batchCount = 0;
    RW_VAR served;
    issueNextBatch(served);

    if (PLC_driver.requestQueue.isEmpty()) {
        PLC_driver.writeTries = 0;
        PLC_driver.onceTries = 0;
        PLC_driver.settings->scanDone = 1;
        return nullptr;
    }
    if (!PLC_driver.loggedIn) {
        // The batch stays in its list and is chosen again after the login.
        PLC_driver.requestQueue.clear();
        handshake_data(&served);
    }
    return &PLC_driver.requestQueue.first();
}

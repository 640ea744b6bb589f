#include "driver/list_access.h"

#include "driver/Communication_Protocol.h"
#include "lists/read_list_rebuild.h"
#include "lists/variable_lists.h"

void plc::queueValue(const RW_VAR& record, const QByteArray& bytes, int pieceSize)
{
    QMutexLocker lock(&PLC_driver.listMutex);
    queueWritePieces(PLC_driver.writeList, record, bytes, pieceSize);
}

int AddListReadVar(RW_VAR* var)
{
    if (!var)
        return 0;
    PLC_driver.readList.append(*var);
    return int(PLC_driver.readList.size());
}

int AddListWriteVar(RW_VAR* var, int append)
{
    if (!var)
        return 0;
    QMutexLocker lock(&PLC_driver.listMutex);
    QList<RW_VAR>& list = PLC_driver.writeList;
    if (append == PLC_APPEND_ALWAYS)
        list.append(*var);
    else
        plc::queueWrite(list, *var);
    return int(list.size());
}

int AddListOnceReadVar(RW_VAR* var, int append)
{
    const ComInfo* settings = PLC_driver.settings;
    if (!var || !settings)
        return 0;
    const bool appendAlways = append == PLC_APPEND_ALWAYS;
    // The label is resolved before the list is locked.
    if (!appendAlways && !plc::toOneShotRead(*var, *settings, PLC_driver.labels))
        return 0;

    QMutexLocker lock(&PLC_driver.listMutex);
    QList<RW_VAR>& list = PLC_driver.onceReadList;
    if (appendAlways)
        list.append(*var);
    else if (var->length > 0)
        plc::addReadPieces(list, *var, settings->maxReadBytes);
    return int(list.size());
}

int ReCreatReadVarList(QList<HostVarItem>* vars)
{
    ComInfo* const settings = PLC_driver.settings;
    if (!vars || !settings)
        return 0;
    // The communication thread waits for the lock: what takes long comes before and behind it.
    QList<RW_VAR> reads = plc::cyclicReads(*vars, *settings, PLC_driver.labels);
    const int count = int(reads.size());

    QMutexLocker lock(&PLC_driver.listMutex);
    PLC_driver.readList.swap(reads);
    if (!vars->isEmpty()) {
        PLC_driver.cycleCount = 0;
        settings->scanDone = 0;
    }
    lock.unlock();
    return count; // the earlier entries are released here
}

void BitVarReCreat(QList<RW_VAR>* list, int maxLen)
{
    if (list && maxLen > 0)
        PLC_driver.readList.append(plc::foldedReads(*list, maxLen));
}

#include "model/driver_model.h"

#include <algorithm>

namespace plc::model {

namespace {

constexpr std::size_t kBatchCapacity = 150;
constexpr std::size_t kReadEntries = 99;
constexpr int kBudget = 999;
constexpr int kWriteOverhead = 10;
constexpr int kReadOverhead = 1;
constexpr int kTriesInARow = 5;
constexpr int kBitCode = 13;
/// Bytes of a request in front of and behind its payload as it is put together here.
constexpr int kHeaderAndTrailer = 8 + 4;

void put(Bytes& frame, std::int64_t value, int bytes)
{
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        frame.push_back(std::uint8_t(std::uint64_t(value) >> shift));
}

/// The frame with this service and payload behind the service code's two bytes.
Bytes frameOf(int service, const Bytes& payload)
{
    Bytes frame = {0xBB, 0xBB, 0, 0};
    put(frame, std::int64_t(payload.size()) + 2, 2);
    put(frame, service, 1);
    put(frame, 0, 1);
    frame.insert(frame.end(), payload.begin(), payload.end());
    return frame;
}

void putTrailer(Bytes& payload, int plcInfo1, int plcInfo2)
{
    put(payload, 0, 1);
    put(payload, 1, 1);
    put(payload, plcInfo1, 1);
    put(payload, plcInfo2, 1);
}

} // namespace

bool DriverModel::nextRequest()
{
    if (!queue.empty())
        return true;
    if (!settings)
        return false;
    batch.clear();
    Variable head;
    if (!serveWrites(head) && !serveOnceReads(head))
        serveCyclicReads(head);
    return finishRequest(head);
}

bool DriverModel::serveWrites(Variable& head)
{
    if (writeList.empty() || writeTries >= kTriesInARow)
        return false;
    while (!writeList.empty() && isOff(writeList.front()))
        writeList.erase(writeList.begin());
    if (writeList.empty())
        return false;
    head = writeList.front();
    batch.push_back(head);
    if (settings->word[kRemoteMode] == 0) {
        fillWriteBatch();
        queueWrite(head);
    }
    lastKind = kWrite;
    ++writeTries;
    return true;
}

void DriverModel::fillWriteBatch()
{
    std::int64_t total = std::int64_t(writeList[0].length) + kWriteOverhead;
    for (std::size_t i = 1; i < writeList.size() && batch.size() < kBatchCapacity; ++i) {
        const std::int64_t cost = std::int64_t(writeList[i].length) + kWriteOverhead;
        if (total + cost > kBudget)
            return;
        total += cost;
        batch.push_back(writeList[i]);
    }
}

bool DriverModel::serveOnceReads(Variable& head)
{
    if (onceList.empty() || onceTries >= kTriesInARow)
        return false;
    while (!onceList.empty() && isOff(onceList.front()))
        onceList.erase(onceList.begin());
    if (onceList.empty())
        return false;
    head = onceList.front();
    batch.push_back(head);
    if (settings->word[kRemoteMode] == 0) {
        fillReadBatch(onceList);
        queueRead(head);
    }
    lastKind = kOnce;
    ++onceTries;
    return true;
}

void DriverModel::fillReadBatch(const std::vector<Variable>& list)
{
    std::int64_t total = std::int64_t(list[0].length) + kReadOverhead;
    for (std::size_t i = 1; i < list.size() && batch.size() < kReadEntries; ++i) {
        const std::int64_t cost = std::int64_t(list[i].length) + kReadOverhead;
        if (total + cost > kBudget)
            return;
        total += cost;
        batch.push_back(list[i]);
    }
}

bool DriverModel::serveCyclicReads(Variable& head)
{
    const auto served = std::find_if(readList.begin(), readList.end(),
                                     [this](const Variable& var) { return !isOff(var); });
    if (served == readList.end())
        return false;
    std::rotate(readList.begin(), served, readList.end());
    head = readList.front();
    readList.front().result = -1;
    batch.push_back(head);
    if (settings->word[kRemoteMode] == 0) {
        fillReadBatch(readList);
        queueRead(head);
    }
    lastKind = kCyclic;
    writeTries = 0;
    onceTries = 0;
    return true;
}

void DriverModel::queueRequest(const Bytes& frame, const Variable& var, int dataOffset,
                               int minReplyLength)
{
    Request request;
    request.frame = frame;
    request.frameLength = int(frame.size());
    request.replyLength = -1;
    request.dataOffset = dataOffset;
    request.minReplyLength = minReplyLength;
    request.var = var;
    queue.push_back(request);
}

void DriverModel::queueWrite(const Variable& head)
{
    Bytes payload;
    std::int64_t carried = 0;
    put(payload, std::int64_t(batch.size()), 4);
    for (const Variable& var : batch) {
        put(payload, var.areaIndex, 2);
        put(payload, var.address, 4);
        put(payload, batch[0].dataType == kBitCode ? 0 : var.length, 4);
        if (carried + var.length > kLargestValue)
            continue;
        carried += std::max(var.length, 0);
        for (std::int64_t i = 0; i < var.length; ++i)
            put(payload, i < std::int64_t(var.data.size()) ? var.data[std::size_t(i)] : 0, 1);
    }
    putTrailer(payload, plcInfo1, plcInfo2);
    queueRequest(frameOf(0x3C, payload), head, 0, 0);
    settings->word[kFrameIndex] = 0;
    settings->word[kFrameCount] = 1;
    if (failed == 0)
        image.store(head);
}

void DriverModel::queueRead(const Variable& head)
{
    Bytes payload;
    put(payload, std::int64_t(batch.size()), 4);
    for (const Variable& var : batch) {
        put(payload, var.areaIndex, 2);
        put(payload, var.address, 4);
        put(payload, var.length, 4);
    }
    putTrailer(payload, plcInfo1, plcInfo2);
    queueRequest(frameOf(0x2E, payload), head, 12, 0);
    settings->word[kFrameIndex] = 0;
    settings->word[kFrameCount] = 1;
}

void DriverModel::queueLogin(const Variable& head)
{
    const Bytes identification = {0xBB, 0xBB, 0, 0, 0, 0x0E, 1, 0, 0, 0,
                                  2,    0,    0, 0, 6, 0,    0, 0, 0, 0};
    const std::string name = "DOWNLOAD.SDB";
    Bytes file = {0xBB, 0xBB, 0, 0, 0, 0x11, 0x31, 0, 0, 0x0D};
    file.insert(file.end(), name.begin(), name.end());
    file.push_back(0);
    queueRequest(identification, head, 0, 6);
    queueRequest(file, head, 0, 6);
    settings->word[kFrameCount] = 2;
    settings->word[kFrameIndex] = 0;
}

bool DriverModel::finishRequest(const Variable& head)
{
    if (queue.empty()) {
        writeTries = 0;
        onceTries = 0;
        settings->word[kScanDone] = 1;
        return false;
    }
    if (loggedIn == 0) {
        queue.clear();
        queueLogin(head);
    }
    return true;
}

} // namespace plc::model

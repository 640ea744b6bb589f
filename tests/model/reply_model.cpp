#include "model/driver_model.h"

namespace plc::model {

namespace {

constexpr int kNothingArrived = 41;
constexpr int kLengthWrong = 71;
constexpr int kAccepted = 1;
constexpr int kRemoteAccepted = 100;
constexpr int kLoginRefused = 201;
constexpr int kNoSettings = 200;

/// Payload length that the reply's header tells; the reply holds 6 bytes or more.
int toldLength(const Bytes& bytes)
{
    return bytes[4] * 256 + bytes[5];
}

bool isWholeFrame(const Bytes& bytes)
{
    return bytes.size() >= 6 && std::size_t(toldLength(bytes)) + 6 == bytes.size();
}

bool isSameRequest(const Variable& a, const Variable& b)
{
    return a.category == b.category && a.aux1 == b.aux1;
}

} // namespace

void DriverModel::takeReply(const Bytes& bytes, int received)
{
    reply.result = kAccepted;
    if (queue.empty())
        return;
    if (!settings) {
        reply.result = kNoSettings;
        return;
    }
    Request& head = queue.front();
    if (head.replyLength == -1) {
        if (isWholeFrame(bytes))
            head.replyLength = int(bytes.size());
        else if (bytes.empty())
            fail(kNothingArrived, false);
        else
            reply.result = 0;
        return;
    }
    if (head.replyLength > 0 && !isWholeFrame(bytes)) {
        fail(kLengthWrong, false);
        return;
    }
    if (loggedIn == 0) {
        takeLoginReply(bytes);
        return;
    }
    const bool isRemote = head.var.deviceNo != settings->word[kLocalDeviceNo];
    const int code = isRemote ? takeRemoteReply(bytes, received) : takeLocalReply(bytes, received);
    if (code == kAccepted || code == kRemoteAccepted)
        accept(code, isRemote);
    else
        fail(code, isRemote);
}

void DriverModel::takeLoginReply(const Bytes& bytes)
{
    if (loginCheck(bytes) != 0) {
        queue.clear();
        reply.result = kLoginRefused;
        return;
    }
    const std::int64_t answered = std::int64_t(settings->word[kFrameIndex]) + 1;
    settings->word[kFrameIndex] = stored(answered);
    if (answered < settings->word[kFrameCount]) {
        queue.erase(queue.begin());
    } else {
        queue.clear();
        loggedIn = 1;
    }
}

int DriverModel::loginCheck(const Bytes& bytes)
{
    if (bytes.size() < 6 || std::int64_t(bytes.size()) < queue.front().minReplyLength)
        return 8;
    if (settings->word[kFrameIndex] == 0)
        return toldLength(bytes) <= 199 ? 9 : 0;
    if (settings->word[kFrameIndex] != 1)
        return 1;
    if (toldLength(bytes) < 30 || bytes.size() < 26)
        return 13;
    plcInfo1 = bytes[25];
    plcInfo2 = bytes[24];
    return 0;
}

int DriverModel::dataCheck(const Bytes& bytes) const
{
    if (!isWholeFrame(bytes) || bytes.size() < 8)
        return 0;
    if (bytes[6] != 0 || bytes[7] != 0)
        return 0;
    return queue.front().var.aux2 == 0 ? 1 : 2;
}

int DriverModel::shifted(int base) const
{
    const int category = queue.front().var.category;
    return base + (category >= 1 && category <= 11 ? category + 1 : 1);
}

int DriverModel::takeLocalReply(const Bytes& bytes, int received)
{
    const int expected = queue.front().replyLength;
    if (received == 0 && expected != 0)
        return shifted(40);
    if (expected == 0)
        return kAccepted;
    if (expected != received && expected != -1)
        return shifted(70);
    const int check = dataCheck(bytes);
    if (check == 0)
        return shifted(10);
    if (check == 1)
        storeReply(bytes);
    return kAccepted;
}

int DriverModel::takeRemoteReply(const Bytes& bytes, int received)
{
    const int expected = queue.front().replyLength;
    if (received == 0 && expected != 0)
        return shifted(140);
    if (expected != received && expected != -1)
        return shifted(170);
    if (dataCheck(bytes) == 0)
        return shifted(110);
    if (queue.front().var.aux12 != -1)
        return kRemoteAccepted;
    storeReply(bytes);
    return settings->word[kFrameIndex] == 1 ? kRemoteAccepted : kAccepted;
}

void DriverModel::storeReply(const Bytes& bytes)
{
    std::int64_t position = queue.front().dataOffset;
    if (position < 0)
        return;
    const std::int64_t end = std::int64_t(bytes.size());
    for (const Variable& var : batch) {
        const int length = std::uint16_t(var.length);
        for (int j = 0; j < length && position + 1 + j < end; ++j)
            image.at(var.areaIndex, std::int64_t(var.address) + j) =
                bytes[std::size_t(position + 1 + j)];
        position += 1 + length;
    }
}

void DriverModel::accept(int code, bool isRemote)
{
    failed = 0;
    const std::int64_t answered = std::int64_t(settings->word[kFrameIndex]) + 1;
    settings->word[kFrameIndex] = stored(answered);
    const bool isComplete = answered >= settings->word[kFrameCount];
    if (isComplete && settings->word[kScanDone] == 0 && !isRemote) {
        ++cycleCount;
        if (cycleCount > int(readList.size())) {
            cycleCount = 0;
            settings->word[kScanDone] = 1;
        }
    }
    queue.erase(queue.begin());
    if (isComplete)
        settle(isRemote);
    reply.result = code;
}

void DriverModel::fail(int code, bool isRemote)
{
    const std::int64_t failures = std::int64_t(settings->word[kRetryCount]) + 1;
    settings->word[kRetryCount] = stored(failures);
    if (failures <= settings->word[kRetryLimit]) {
        reply.result = 0;
        return;
    }
    failed = 1;
    cycleCount = 0;
    settings->word[kScanDone] = 0;
    settings->word[kRetryCount] = 0;
    queue.clear();
    loggedIn = 0;
    settle(isRemote);
    if (hasFailureCallback)
        calls.push_back({CallbackCall::Failure, {0, reply.category, 1, 0}});
    if (lastKind == kWrite)
        purge(writeList);
    if (lastKind == kOnce)
        purge(onceList);
    reply.result = code;
}

void DriverModel::settle(bool isRemote)
{
    if (lastKind == kWrite)
        settleWrites();
    else if (lastKind == kOnce)
        settleOnceReads(isRemote);
    else if (lastKind == kCyclic)
        settleCyclicReads();
}

void DriverModel::removeFollowers(std::vector<Variable>& list) const
{
    for (std::size_t i = 1; i < batch.size() && list.size() > 1; ++i)
        list.erase(list.begin() + 1);
}

void DriverModel::tellOutcome(const Variable& head, bool hasFurtherPiece)
{
    if (!hasResultCallback || (hasFurtherPiece && failed == 0))
        return;
    calls.push_back({CallbackCall::Result,
                     {settings->word[kHostTag], head.category, head.aux1, failed != 0 ? 2 : 1}});
}

void DriverModel::settleWrites()
{
    if (writeList.empty())
        return;
    removeFollowers(writeList);
    const Variable head = writeList.front();
    bool hasFurtherPiece = false;
    for (std::size_t i = 1; i < writeList.size(); ++i)
        hasFurtherPiece = hasFurtherPiece || isSameRequest(writeList[i], head);
    tellOutcome(head, hasFurtherPiece);
    reply = head;
    reply.data.clear();
    writeList.erase(writeList.begin());
}

void DriverModel::settleOnceReads(bool isRemote)
{
    if (onceList.empty())
        return;
    removeFollowers(onceList);
    const Variable head = onceList.front();
    if (!isRemote) {
        bool hasFurtherPiece = false;
        for (std::size_t i = 1; i < onceList.size(); ++i)
            hasFurtherPiece =
                hasFurtherPiece || (isSameRequest(onceList[i], head) &&
                                    onceList[i].deviceNo == settings->word[kLocalDeviceNo]);
        tellOutcome(head, hasFurtherPiece);
    }
    reply = head;
    reply.data.clear();
    onceList.erase(onceList.begin());
}

void DriverModel::settleCyclicReads()
{
    if (readList.empty() || readList.front().result != -1)
        return;
    readList.front().result = 0;
    reply = readList.front();
    reply.data.clear();
    for (std::size_t i = 0; i < batch.size(); ++i) {
        readList.push_back(Variable(readList.front()));
        readList.erase(readList.begin());
    }
}

void DriverModel::purge(std::vector<Variable>& list) const
{
    std::vector<Variable> kept;
    for (const Variable& var : list) {
        const bool isStation = settings->word[kMultiStation] == 0 || var.station == reply.station;
        if (!isSameRequest(var, reply) || !isStation)
            kept.push_back(var);
    }
    list = kept;
}

} // namespace plc::model

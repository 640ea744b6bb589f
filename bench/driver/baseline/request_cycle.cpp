#include "baseline/straightforward_driver.h"
#include "support/replies.h"

namespace plc::bench {
namespace baseline {

namespace {

constexpr int kBudget = 999;
constexpr int kReadOverhead = 1;
constexpr int kWriteOverhead = 10;
constexpr int kMostReads = 99;
constexpr int kMostWrites = 150;
constexpr int kHeaderSize = 6;
constexpr int kPayloadLengthOffset = 4;
constexpr int kReadService = 0x2E;
constexpr int kWriteService = 0x3C;
constexpr int kOpenLength = -1;
constexpr int kBlockLead = 1;

void appendNumber(QByteArray& frame, quint32 number, int bytes)
{
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        frame.append(char(uchar(number >> shift & 0xFF)));
}

QByteArray beginRequest(int service, int entries)
{
    QByteArray frame;
    appendNumber(frame, 0xBBBB0000, 4);
    appendNumber(frame, 0, 2);
    appendNumber(frame, quint32(service) << 8, 2);
    appendNumber(frame, quint32(entries), 4);
    return frame;
}

void appendPlace(QByteArray& frame, const RW_VAR& entry)
{
    appendNumber(frame, quint32(entry.areaIndex) & 0xFFFF, 2);
    appendNumber(frame, quint32(entry.address), 4);
    appendNumber(frame, quint32(entry.length), 4);
}

void endRequest(QByteArray& frame)
{
    appendNumber(frame, 0x00010000, 4);
    const int payload = int(frame.size()) - kHeaderSize;
    frame[kPayloadLengthOffset] = char(uchar(payload >> 8 & 0xFF));
    frame[kPayloadLengthOffset + 1] = char(uchar(payload & 0xFF));
}

QList<RW_VAR> takeBatch(const QList<RW_VAR>& list, int overhead, int most)
{
    QList<RW_VAR> batch;
    int total = 0;
    for (const RW_VAR& entry : list) {
        total += entry.length + overhead;
        if (!batch.isEmpty() && (total > kBudget || int(batch.size()) == most))
            break;
        batch.append(entry);
    }
    return batch;
}

bool isWhole(const QByteArray& reply)
{
    return reply.size() >= kHeaderSize && (uchar(reply.at(kPayloadLengthOffset)) << 8 |
                                           uchar(reply.at(kPayloadLengthOffset + 1))) +
                                                  kHeaderSize ==
                                              int(reply.size());
}

} // namespace

void StraightforwardDriver::addWrite(const RW_VAR& write)
{
    QMutexLocker lock(&m_listMutex);
    for (int i = 1; i < int(m_writeList.size()); ++i) {
        if (m_writeList.at(i).station == write.station &&
            m_writeList.at(i).address == write.address &&
            m_writeList.at(i).length == write.length) {
            m_writeList[i] = write;
            return;
        }
    }
    m_writeList.append(write);
}

Protocol* StraightforwardDriver::nextRequest()
{
    if (!m_requests.isEmpty())
        return &m_requests.first();
    QMutexLocker lock(&m_listMutex);
    m_writing = !m_writeList.isEmpty();
    m_batch = m_writing ? takeBatch(m_writeList, kWriteOverhead, kMostWrites)
                        : takeBatch(m_readList, kReadOverhead, kMostReads);
    if (m_batch.isEmpty())
        return nullptr;
    if (m_writing)
        buildWriteRequest();
    else
        buildReadRequest();
    return &m_requests.first();
}

void StraightforwardDriver::buildReadRequest()
{
    QByteArray frame = beginRequest(kReadService, int(m_batch.size()));
    for (const RW_VAR& entry : std::as_const(m_batch))
        appendPlace(frame, entry);
    endRequest(frame);
    queueRequest(frame);
}

void StraightforwardDriver::buildWriteRequest()
{
    QByteArray frame = beginRequest(kWriteService, int(m_batch.size()));
    for (const RW_VAR& entry : std::as_const(m_batch)) {
        appendPlace(frame, entry);
        frame.append(entry.data.left(entry.length));
    }
    endRequest(frame);
    queueRequest(frame);
    store(m_batch.at(0).areaIndex, m_batch.at(0).address, m_batch.at(0).data);
}

void StraightforwardDriver::queueRequest(const QByteArray& frame)
{
    Protocol request;
    request.frame = frame;
    request.frameLength = int(frame.size());
    request.replyLength = kOpenLength;
    request.dataOffset = kReadReplyDataOffset;
    request.var = m_batch.at(0);
    m_requests.append(request);
}

int StraightforwardDriver::takeReply(const QByteArray& reply)
{
    if (m_requests.isEmpty() || !isWhole(reply))
        return 0;
    if (m_requests.first().replyLength == kOpenLength) {
        m_requests.first().replyLength = int(reply.size());
        return kReplyAccepted;
    }
    if (!m_writing)
        storeReply(reply);
    QMutexLocker lock(&m_listMutex);
    m_requests.removeFirst();
    QList<RW_VAR>& list = m_writing ? m_writeList : m_readList;
    for (int i = 0; i < int(m_batch.size()); ++i) {
        const RW_VAR entry = list.takeFirst();
        if (!m_writing)
            list.append(entry);
    }
    return kReplyAccepted;
}

void StraightforwardDriver::storeReply(const QByteArray& reply)
{
    QMutexLocker lock(&m_imageMutex);
    int position = m_requests.first().dataOffset;
    for (const RW_VAR& entry : std::as_const(m_batch)) {
        position += kBlockLead;
        for (int i = 0; i < entry.length && position + i < int(reply.size()); ++i)
            byteAt(entry.areaIndex, entry.address + i) = uchar(reply.at(position + i));
        position += entry.length;
    }
}

} // namespace baseline
} // namespace plc::bench

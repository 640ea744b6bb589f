#include "gateway/forwarding/unconfirmed_samples.h"

#include <utility>

namespace plc::gateway {

void UnconfirmedSamples::addBytes(qint64 bytes, qint64 now)
{
    if (!isGrowing())
        m_growing.begunAt = now;
    m_growing.bytes += bytes;
    m_bytes += bytes;
}

bool UnconfirmedSamples::addHistory(qint64 number)
{
    if (isEmpty())
        return false;
    (isGrowing() ? m_growing : m_batches.back()).historyTo = number;
    return true;
}

quint64 UnconfirmedSamples::endBatch()
{
    m_growing.mark = ++m_lastMark;
    m_batches.push_back(std::exchange(m_growing, {}));
    return m_lastMark;
}

std::deque<UnconfirmedSamples::Batch> UnconfirmedSamples::take(quint64 mark)
{
    std::deque<Batch> taken;
    while (!m_batches.empty() && m_batches.front().mark <= mark) {
        m_bytes -= m_batches.front().bytes;
        taken.push_back(std::move(m_batches.front()));
        m_batches.pop_front();
    }
    return taken;
}

std::deque<UnconfirmedSamples::Batch> UnconfirmedSamples::takeAll()
{
    if (isGrowing())
        endBatch();
    m_bytes = 0;
    return std::exchange(m_batches, {});
}

} // namespace plc::gateway

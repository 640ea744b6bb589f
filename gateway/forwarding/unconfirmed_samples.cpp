#include "gateway/forwarding/unconfirmed_samples.h"

#include <algorithm>
#include <utility>

namespace plc::gateway {

bool UnconfirmedSamples::hasHistory() const
{
    return m_growing.historyTo > 0 ||
           std::any_of(m_batches.begin(), m_batches.end(),
                       [](const Batch& batch) { return batch.historyTo > 0; });
}

qint64 UnconfirmedSamples::firstStored() const
{
    // Where the store failed meanwhile they are not in order.
    qint64 first = 0;
    for (const Batch& batch : m_batches) {
        if (batch.storedFrom > 0 && (first == 0 || batch.storedFrom < first))
            first = batch.storedFrom;
    }
    return first;
}

void UnconfirmedSamples::addBytes(qint64 bytes, qint64 now)
{
    if (!isGrowing())
        m_growing.begunAt = now;
    m_growing.bytes += bytes;
    m_bytes += bytes;
}

bool UnconfirmedSamples::addHistory(qint64 number, quint64 unsendable)
{
    if (isEmpty())
        return false;
    Batch& batch = isGrowing() ? m_growing : m_batches.back();
    batch.historyTo = number;
    batch.unsendable += unsendable;
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

QVector<Sample> UnconfirmedSamples::takeDevice(int device)
{
    QVector<Sample> samples;
    const auto takeFrom = [&](QVector<LiveSample>* live) {
        const auto others = std::stable_partition(
            live->begin(), live->end(),
            [device](const LiveSample& each) { return each.device != device; });
        for (auto each = others; each != live->end(); ++each)
            samples.append(each->sample);
        live->erase(others, live->end());
    };
    for (Batch& batch : m_batches)
        takeFrom(&batch.live);
    takeFrom(&m_growing.live);
    return samples;
}

} // namespace plc::gateway

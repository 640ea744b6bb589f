#ifndef PLC_GATEWAY_FORWARDING_UNCONFIRMED_SAMPLES_H
#define PLC_GATEWAY_FORWARDING_UNCONFIRMED_SAMPLES_H

#include <QtCore/QVector>

#include <deque>

#include "gateway/model/metric.h"
#include "gateway/model/write_request.h"

namespace plc::gateway {

/// What was published and has not been confirmed by the broker, in batches. A batch ends when its
/// confirmation is asked for.
class UnconfirmedSamples {
public:
    struct LiveSample {
        int device;
        Sample sample;
    };

    struct Batch {
        quint64 mark = 0;
        qint64 begunAt = 0; ///< When the first of it was published.
        qint64 bytes = 0;
        QVector<LiveSample> live; ///< Published when they were found; empty once they are stored.
        QVector<WriteOutcome> outcomes;
        qint64 storedFrom = 0; ///< Their numbers in the store, where they were put there.
        qint64 storedTo = 0;
        qint64 historyTo = 0;   ///< The last change from the store that was published.
        quint64 unsendable = 0; ///< Changes from the store that could not be.
        quint64 removal = 0;    ///< The last removal of a kept message; 0: none.
    };

    /// Whether changes from the store are on their way.
    bool hasHistory() const;
    /// The first number in the store of what is there only until it is confirmed; 0: nothing is.
    qint64 firstStored() const;

    bool isEmpty() const { return m_batches.empty() && !isGrowing(); }
    qint64 bytes() const { return m_bytes; }
    /// How long the oldest batch that has ended has been waiting; 0 when none is.
    qint64 age(qint64 now) const { return m_batches.empty() ? 0 : now - m_batches.front().begunAt; }

    void addLive(int device, const Sample& sample) { m_growing.live.append({device, sample}); }
    void addOutcome(const WriteOutcome& outcome) { m_growing.outcomes.append(outcome); }
    /// Stored changes up to this one were sent, or there was nobody to send them to. Returns false
    /// when nothing is on its way with which they could be confirmed.
    bool addHistory(qint64 number, quint64 unsendable);
    void addRemoval(quint64 removal) { m_growing.removal = removal; }
    void addBytes(qint64 bytes, qint64 now);
    bool isGrowing() const { return m_growing.bytes > 0; }
    /// Ends the batch. Returns the mark to ask for.
    quint64 endBatch();

    /// Hands out the batches that are confirmed by this mark, oldest first.
    std::deque<Batch> take(quint64 mark);
    /// Hands out all, oldest first.
    std::deque<Batch> takeAll();
    /// Hands out what was published live of one device, oldest first; it is not stored yet.
    QVector<Sample> takeDevice(int device);
    std::deque<Batch>& batches() { return m_batches; }

private:
    std::deque<Batch> m_batches;
    Batch m_growing;
    qint64 m_bytes = 0;
    quint64 m_lastMark = 0;
};

} // namespace plc::gateway

#endif

#ifndef PLC_RECORDER_CHANGE_BATCH_H
#define PLC_RECORDER_CHANGE_BATCH_H

#include <QtCore/QByteArray>
#include <QtCore/QVector>

#include "recorder/byte_reader.h"
#include "recorder/change.h"

namespace plc::recorder {

// A batch holds changes of any series as they came, each as:
//
//   series  by how much it differs from that of the change before (0), a signed number
//   time    by how many ms it differs from that of the change before (that of the batch), signed
//   size    of the value in bytes x 4 + quality
//   value   its bytes

/// Makes a batch.
class BatchEncoder {
public:
    explicit BatchEncoder(qint64 time = 0) : m_time(time) {}

    void append(int series, const Sample& sample);
    const QByteArray& batch() const { return m_batch; }

private:
    QByteArray m_batch;
    int m_series = 0; ///< Of the change before, as its time.
    qint64 m_time;
};

/// The changes of a batch of time `time`.
QByteArray encodeBatch(const QVector<Change>& changes, qint64 time);

/// Reads a batch.
class BatchDecoder {
public:
    BatchDecoder(const QByteArray& batch, qint64 time)
        : m_batch(batch), m_reader(m_batch), m_time(time)
    {
    }
    BatchDecoder(const BatchDecoder&) = delete;
    BatchDecoder& operator=(const BatchDecoder&) = delete;

    /// Goes on to the next change. Returns false behind the last one, and where the batch is
    /// damaged.
    bool next();
    int series() const { return m_series; }
    /// A copy with bytes of its own.
    Sample sample() const;
    bool isDamaged() const { return m_reader.hasFailed(); }

private:
    const QByteArray m_batch;
    ByteReader m_reader;
    int m_series = 0;
    qint64 m_time;
    Quality m_quality = Quality::Good;
    const char* m_bytes = nullptr;
    quint64 m_size = 0;
};

} // namespace plc::recorder

#endif

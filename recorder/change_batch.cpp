#include "recorder/change_batch.h"

#include "recorder/byte_writer.h"

namespace plc::recorder {

void BatchEncoder::append(int series, const Sample& sample)
{
    appendSigned(qint64(series) - m_series, &m_batch);
    // A damaged batch may have had any times.
    appendSigned(qint64(quint64(sample.time) - quint64(m_time)), &m_batch);
    appendNumber(quint64(sample.bytes.size()) << 2 | quint64(sample.quality), &m_batch);
    m_batch.append(sample.bytes);
    m_series = series;
    m_time = sample.time;
}

QByteArray encodeBatch(const QVector<Change>& changes, qint64 time)
{
    BatchEncoder encoder(time);
    for (const Change& change : changes)
        encoder.append(change.series, change.sample);
    return encoder.batch();
}

bool BatchDecoder::next()
{
    if (m_reader.isAtEnd() || m_reader.hasFailed())
        return false;
    m_series = int(m_series + m_reader.signedNumber());
    m_time = qint64(quint64(m_time) + quint64(m_reader.signedNumber()));
    const quint64 size = m_reader.number();
    m_quality = Quality(size & 3);
    m_size = size >> 2;
    m_bytes = m_reader.take(m_size);
    return !m_reader.hasFailed();
}

Sample BatchDecoder::sample() const
{
    return {m_time, m_quality, QByteArray(m_bytes, int(m_size))};
}

} // namespace plc::recorder

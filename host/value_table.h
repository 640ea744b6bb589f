#ifndef PLC_HOST_VALUE_TABLE_H
#define PLC_HOST_VALUE_TABLE_H

#include <QtCore/QByteArray>
#include <QtCore/QVector>

#include <functional>
#include <vector>

#include "host/data_point.h"
#include "host/frame_entries.h"
#include "host/freshness.h"
#include "host/rate_meter.h"
#include "host/value_layout.h"

namespace plc {

/// The cyclically read values: each as it was in the last accepted reply that carried it, with the
/// age of that reply. What the driver's image shows in between (values just written, not yet
/// confirmed) does not appear here.
class ValueTable {
public:
    /// Fetches the current bytes of a data point, as GetRegisterData() gives them.
    using Fetch = std::function<QByteArray(const DataPoint&)>;

    ValueTable() = default;
    /// A table that begins at time `since`, and whose values are stale `staleAfter` ms after they
    /// were read.
    ValueTable(const QVector<DataPoint>& points, int staleAfter, qint64 since, Fetch fetch);

    int size() const { return int(m_rows.size()); }
    const DataPoint& point(int row) const { return m_rows[size_t(row)].point; }
    /// The value's bytes; empty until it was read.
    const QByteArray& bytes(int row) const { return m_rows[size_t(row)].bytes; }
    bool wasRead(int row) const { return m_rows[size_t(row)].readAt != Freshness::kNever; }
    /// Milliseconds since the reply that the value is from; it must have been read.
    qint64 age(int row, qint64 now) const { return now - m_rows[size_t(row)].readAt; }
    /// Whether the value is too old to be relied on, or was waited for too long.
    bool isStale(int row, qint64 now) const
    {
        return now - qMax(m_since, m_rows[size_t(row)].readAt) > m_staleAfter;
    }
    /// Times that the value was read, and that it was found changed.
    quint64 reads(int row) const { return m_rows[size_t(row)].reads; }
    quint64 changes(int row) const { return m_rows[size_t(row)].changes; }
    double readsPerSecond(int row, qint64 now) const
    {
        return m_rows[size_t(row)].rate.perSecond(now);
    }

    /// A reply to a read of these entries was accepted.
    void replyAccepted(const QVector<FrameEntry>& entries, qint64 now);

private:
    struct Row {
        explicit Row(const DataPoint& dataPoint)
            : point(dataPoint), range(valueBytes(dataPoint)), freshness(range.size)
        {
        }

        DataPoint point;
        ByteRange range;
        Freshness freshness;
        QByteArray bytes;
        qint64 readAt = Freshness::kNever;
        quint64 reads = 0;
        quint64 changes = 0;
        RateMeter rate;
    };

    void cover(Row* row, const FrameEntry& entry, qint64 now);

    std::vector<Row> m_rows;
    /// Rows in the order of their places, and the size of the largest, to find those that an entry
    /// reaches.
    std::vector<int> m_byPlace;
    quint32 m_largest = 0;
    int m_staleAfter = 0;
    qint64 m_since = 0;
    Fetch m_fetch;
};

} // namespace plc

#endif

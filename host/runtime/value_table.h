#ifndef PLC_HOST_RUNTIME_VALUE_TABLE_H
#define PLC_HOST_RUNTIME_VALUE_TABLE_H

#include <QtCore/QByteArray>
#include <QtCore/QVector>

#include <optional>
#include <vector>

#include "host/points/data_point.h"
#include "host/points/value_assembly.h"
#include "host/points/value_layout.h"
#include "host/runtime/rate_meter.h"
#include "host/wire/frame_entries.h"
#include "values/export.h"

namespace plc::host {

struct MemoryView; // host/points/value_memory.h

/// What is known of a value.
enum class ValueState {
    Unread,  ///< It was not read yet.
    Good,    ///< The bytes can be relied on.
    Stale,   ///< The bytes are too old to be relied on.
    Refused, ///< The PLC does not give the value; the bytes, if any, are from before.
};

/// A value at one moment.
struct ValueReading {
    QByteArray bytes; ///< As GetRegisterData() gives them; empty if the value was never read.
    qint64 age = -1;  ///< Milliseconds since the value was asked for; -1 if it was never read.
    ValueState state = ValueState::Unread;
    bool isPieced = false; ///< The bytes are put together from several replies.
};

/// The cyclically read values, each as the PLC gave it.
///
/// 1. The bytes of a value are those of one reply. Only a value longer than any entry is put
///    together, from one pass of the reads: no part of an earlier pass is left in it.
/// 2. They come from replies alone. What the driver's image shows in between (values just written,
///    which the PLC may refuse) does not appear here.
/// 3. A value is as old as the request that it answers, the oldest where there were several.
/// 4. A value that the PLC refuses to give is stale, whatever it was.
class PLC_HOST_EXPORT ValueTable {
public:
    ValueTable() = default;
    /// A table that begins at time `since`, and whose values are stale `staleAfter` ms after they
    /// were asked for. Values of more than `longestWhole` bytes come in several replies.
    ValueTable(const QVector<DataPoint>& points, int staleAfter, int longestWhole, qint64 since);

    /// Takes over what `former` knows of values that stay: the value of row r was that of row
    /// formerRows[r] there, each of which stands once at most, or none where that is below 0.
    void takeOver(const ValueTable& former, const QVector<int>& formerRows);

    int size() const { return int(m_rows.size()); }
    const DataPoint& point(int row) const { return m_rows[size_t(row)].point; }
    /// The value's bytes in the form that GetRegisterData() gives; empty until it was read.
    const QByteArray& bytes(int row) const { return m_rows[size_t(row)].bytes; }
    bool wasRead(int row) const { return m_rows[size_t(row)].readAt != Freshness::kNever; }
    /// Milliseconds since the value was asked for; it must have been read.
    qint64 age(int row, qint64 now) const { return now - m_rows[size_t(row)].readAt; }
    /// Whether the value is too old to be relied on, was waited for too long, or is refused.
    bool isStale(int row, qint64 now) const
    {
        return isRefused(row) || now - m_rows[size_t(row)].knownSince() > m_staleAfter;
    }
    ValueReading reading(int row, qint64 now) const;
    /// Whether the value is put together from several replies.
    bool isPieced(int row) const { return m_rows[size_t(row)].range.size > m_longestWhole; }
    /// Whether the PLC refused to give the value when it was last asked for it alone.
    bool isRefused(int row) const { return m_rows[size_t(row)].refusal.has_value(); }
    /// The status in that reply; -1 where it had none. The value must be refused.
    int refusalStatus(int row) const { return *m_rows[size_t(row)].refusal; }
    /// Times that the value was read, and that it was found changed.
    quint64 reads(int row) const { return m_rows[size_t(row)].reads; }
    quint64 changes(int row) const { return m_rows[size_t(row)].changes; }
    double readsPerSecond(int row, qint64 now) const
    {
        return m_rows[size_t(row)].rate.perSecond(now);
    }

    /// A reply to a read of these entries, sent at `sentAt`, was accepted at time `now`. Returns
    /// the rows that it gave and that had been refused.
    QVector<int> replyAccepted(const QVector<FrameEntry>& entries,
                               const QVector<QByteArray>& blocks, qint64 sentAt, qint64 now);
    /// What has come of values that are put together is not continued on another connection.
    void linkLost();
    /// The PLC refused to give this value alone.
    void refused(int row, int status) { m_rows[size_t(row)].refusal = status; }

private:
    struct Row {
        Row(const DataPoint& dataPoint, qint64 begin)
            : point(dataPoint), range(valueBytes(dataPoint)), since(begin)
        {
        }
        /// When it was asked for; of a value that was not read yet, since when it is waited for.
        qint64 knownSince() const { return qMax(since, readAt); }

        DataPoint point;
        ByteRange range;
        qint64 since;
        QByteArray bytes;
        qint64 readAt = Freshness::kNever;
        quint64 reads = 0;
        quint64 changes = 0;
        RateMeter rate;
        std::optional<int> refusal;
        /// Parts that have come so far: of the present reply, or of the present pass.
        std::optional<ValueAssembly> parts;
        quint64 replyOfParts = 0;
    };

    bool cover(Row* row, const FrameEntry& entry, const QByteArray& block, qint64 sentAt);
    bool addPart(Row* row, qint64 start, const QByteArray& block, qint64 sentAt);
    static void addElements(Row* row, qint64 start, const QByteArray& block, qint64 sentAt);
    void show(Row* row, const MemoryView& memory, qint64 sentAt);

    std::vector<Row> m_rows;
    /// Rows in the order of their places, and the size of the largest, to find those that an entry
    /// reaches.
    std::vector<int> m_byPlace;
    quint32 m_largest = 0;
    quint32 m_longestWhole = 0;
    int m_staleAfter = 0;
    quint64 m_replies = 0;
    std::vector<char> m_shown; ///< Room for the value that is shown.
};

} // namespace plc::host

#endif

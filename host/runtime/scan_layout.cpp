#include "host/runtime/scan_layout.h"

#include <algorithm>
#include <tuple>
#include <vector>

#include "host/wire/read_limits.h"

namespace plc::host {
namespace {

/// Bytes that an entry costs on the wire beside its data: those that name it in the request, and
/// one before its data in the reply. Up to such a gap it is cheaper to read the gap.
constexpr int kEntryBytes = 11;

struct Scan {
    QVector<ScanEntry> entries;
    qint64 requests = 0;
    qint64 bytes = 0;
};

bool isBefore(const ScanValue& a, const ScanValue& b)
{
    return std::tie(a.station, a.range.area, a.range.start, b.range.size, a.row) <
           std::tie(b.station, b.range.area, b.range.start, a.range.size, b.row);
}

/// Makes a scan of values that come in the order of their places.
class ScanBuilder {
public:
    ScanBuilder(int maxReadBytes, int largestGap)
        : m_maxReadBytes(maxReadBytes), m_largestGap(largestGap)
    {
    }

    void add(const ScanValue& value)
    {
        if (qint64(value.range.size) > longestEntry(m_maxReadBytes))
            addInPieces(value);
        else if (!extend(value))
            begin(value, value.range);
    }

    Scan take()
    {
        close();
        return std::move(m_scan);
    }

private:
    void addInPieces(const ScanValue& value)
    {
        ByteRange piece = value.range;
        for (quint32 done = 0; done < value.range.size; done += piece.size) {
            piece.start = value.range.start + done;
            piece.size = qMin(value.pieceSize, value.range.size - done);
            begin(value, piece);
        }
        close();
    }

    /// Puts the value into the last entry if it may and the request has room.
    bool extend(const ScanValue& value)
    {
        if (!m_isOpen || m_entry.station != value.station || m_entry.range.area != value.range.area)
            return false;
        const qint64 end = qint64(m_entry.range.start) + m_entry.range.size;
        const qint64 gap = qint64(value.range.start) - end;
        if (gap > (m_mayBridge && value.mayBridgeGaps ? m_largestGap : 0))
            return false;
        const qint64 length =
            qMax(end, qint64(value.range.start) + value.range.size) - m_entry.range.start;
        const bool isLonger = length > m_entry.range.size;
        if (isLonger && (length > m_maxReadBytes || !m_budget.hasRoomFor(length)))
            return false;
        m_entry.range.size = quint32(length);
        m_entry.rows.append(value.row);
        m_mayBridge = m_mayBridge && value.mayBridgeGaps;
        return true;
    }

    void begin(const ScanValue& value, const ByteRange& range)
    {
        close();
        if (!m_budget.hasRoomFor(range.size)) {
            ++m_scan.requests;
            m_budget = ReadRequestBudget();
        }
        m_entry = {range, value.station, {value.row}};
        m_mayBridge = value.mayBridgeGaps;
        m_isOpen = true;
    }

    void close()
    {
        if (!m_isOpen)
            return;
        m_isOpen = false;
        if (m_scan.entries.isEmpty())
            m_scan.requests = 1;
        m_budget.add(m_entry.range.size);
        m_scan.bytes += m_entry.range.size + kEntryBytes;
        m_scan.entries.append(m_entry);
    }

    const int m_maxReadBytes;
    const int m_largestGap;
    Scan m_scan;
    ReadRequestBudget m_budget; ///< Of the closed entries of the request that is being filled.
    ScanEntry m_entry;
    bool m_isOpen = false;
    bool m_mayBridge = true;
};

Scan scanOf(const std::vector<ScanValue>& sorted, int maxReadBytes, int largestGap)
{
    ScanBuilder builder(maxReadBytes, largestGap);
    for (const ScanValue& value : sorted)
        builder.add(value);
    return builder.take();
}

} // namespace

ScanValue scanValue(int row, const DataPoint& point, int maxReadBytes)
{
    return {row, valueBytes(point), point.station, true, pieceBytes(point, maxReadBytes)};
}

QVector<ScanEntry> layOutScan(const QVector<ScanValue>& values, int maxReadBytes)
{
    std::vector<ScanValue> sorted(values.begin(), values.end());
    std::sort(sorted.begin(), sorted.end(), isBefore);
    Scan best = scanOf(sorted, maxReadBytes, kEntryBytes);
    for (int gap = 2 * kEntryBytes; gap / 2 < maxReadBytes && best.requests > 1; gap *= 2) {
        Scan scan = scanOf(sorted, maxReadBytes, gap);
        if (std::tie(scan.requests, scan.bytes) < std::tie(best.requests, best.bytes))
            best = std::move(scan);
    }
    // Where short values lie far apart, the gaps fill the requests sooner than the entries do.
    if (best.requests > 1) {
        Scan scan = scanOf(sorted, maxReadBytes, 0);
        if (std::tie(scan.requests, scan.bytes) < std::tie(best.requests, best.bytes))
            best = std::move(scan);
    }
    return best.entries;
}

} // namespace plc::host

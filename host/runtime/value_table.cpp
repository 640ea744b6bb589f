#include "host/runtime/value_table.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "host/points/value_memory.h"

namespace plc::host {

ValueTable::ValueTable(const QVector<DataPoint>& points, int staleAfter, int longestWhole,
                       qint64 since)
    : m_longestWhole(quint32(longestWhole)), m_staleAfter(staleAfter)
{
    m_rows.reserve(size_t(points.size()));
    for (const DataPoint& point : points) {
        m_rows.emplace_back(point, since);
        m_largest = qMax(m_largest, m_rows.back().range.size);
    }
    m_byPlace.resize(m_rows.size());
    std::iota(m_byPlace.begin(), m_byPlace.end(), 0);
    std::stable_sort(m_byPlace.begin(), m_byPlace.end(), [this](int a, int b) {
        const ByteRange& left = m_rows[size_t(a)].range;
        const ByteRange& right = m_rows[size_t(b)].range;
        return std::pair(left.area, left.start) < std::pair(right.area, right.start);
    });
}

void ValueTable::takeOver(const ValueTable& former, const QVector<int>& formerRows)
{
    for (int row = 0; row < int(formerRows.size()); ++row) {
        if (formerRows[row] < 0)
            continue;
        m_rows[size_t(row)] = former.m_rows[size_t(formerRows[row])];
        // The rest of it may come in other pieces.
        m_rows[size_t(row)].parts.reset();
    }
}

ValueReading ValueTable::reading(int row, qint64 now) const
{
    ValueReading reading;
    if (wasRead(row)) {
        reading.bytes = bytes(row);
        reading.age = qMax<qint64>(0, age(row, now));
        reading.state = isStale(row, now) ? ValueState::Stale : ValueState::Good;
        reading.isPieced = isPieced(row);
    }
    if (isRefused(row))
        reading.state = ValueState::Refused;
    return reading;
}

QVector<int> ValueTable::replyAccepted(const QVector<FrameEntry>& entries,
                                       const QVector<QByteArray>& blocks, qint64 sentAt, qint64 now)
{
    QVector<int> rows;
    ++m_replies;
    for (int i = 0; i < int(entries.size()); ++i) {
        const FrameEntry& entry = entries[i];
        const qint64 first = qint64(entry.address) - m_largest;
        const auto start =
            std::lower_bound(m_byPlace.begin(), m_byPlace.end(), std::pair(int(entry.area), first),
                             [this](int row, const std::pair<int, qint64>& place) {
                                 const ByteRange& range = m_rows[size_t(row)].range;
                                 return std::pair(range.area, qint64(range.start)) < place;
                             });
        for (auto next = start; next != m_byPlace.end(); ++next) {
            Row& row = m_rows[size_t(*next)];
            if (row.range.area != entry.area ||
                qint64(row.range.start) >= qint64(entry.address) + entry.length)
                break;
            const bool wasRefused = row.refusal.has_value();
            if (!cover(&row, entry, blocks[i], sentAt))
                continue;
            row.rate.count(now);
            if (wasRefused)
                rows.append(*next);
        }
    }
    return rows;
}

void ValueTable::linkLost()
{
    for (Row& row : m_rows)
        row.parts.reset();
}

/// Returns whether the value is whole with this entry and was shown.
bool ValueTable::cover(Row* row, const FrameEntry& entry, const QByteArray& block, qint64 sentAt)
{
    const qint64 offset = qint64(row->range.start) - entry.address;
    if (offset + row->range.size <= 0)
        return false;
    if (offset >= 0 && offset + row->range.size <= block.size()) {
        show(row, {block.constData() + offset, int(row->range.size)}, sentAt);
        return true;
    }
    return addPart(row, -offset, block, sentAt);
}

bool ValueTable::addPart(Row* row, qint64 start, const QByteArray& block, qint64 sentAt)
{
    // What an earlier reply gave of a value that fits into one is worth nothing.
    const bool isPieced = row->range.size > m_longestWhole;
    if (!row->parts || (!isPieced && row->replyOfParts != m_replies))
        row->parts.emplace(row->range.size);
    row->replyOfParts = m_replies;
    if (isPieced)
        addElements(row, start, block, sentAt);
    else
        row->parts->add(start, block, sentAt);
    if (!row->parts->isComplete())
        return false;
    const QByteArray memory = row->parts->bytes();
    show(row, {memory.constData(), int(memory.size())}, row->parts->oldest());
    return true;
}

/// The elements that lie whole in the block: each is from one reply.
void ValueTable::addElements(Row* row, qint64 start, const QByteArray& block, qint64 sentAt)
{
    const qint64 element = elementBytes(row->point);
    const qint64 size = row->range.size;
    const qint64 from = (qMax<qint64>(0, start) + element - 1) / element * element;
    const qint64 end = start + block.size();
    const qint64 to = end >= size ? size : end / element * element;
    if (from < to)
        row->parts->add(from, block.mid(int(from - start), int(to - from)), sentAt);
}

/// Most values are as they were: their bytes stay where they are.
void ValueTable::show(Row* row, const MemoryView& memory, qint64 sentAt)
{
    const std::size_t size = std::size_t(valueSize(row->point, memory));
    m_shown.resize(std::max(m_shown.size(), size));
    writeValueOfMemory(row->point, memory, m_shown.data());
    const bool isNew = std::size_t(row->bytes.size()) != size ||
                       !std::equal(row->bytes.cbegin(), row->bytes.cend(), m_shown.cbegin());
    if (row->reads > 0 && isNew)
        ++row->changes;
    if (isNew)
        row->bytes = QByteArray(m_shown.data(), int(size));
    row->readAt = sentAt;
    ++row->reads;
    row->refusal.reset();
    row->parts.reset();
}

} // namespace plc::host

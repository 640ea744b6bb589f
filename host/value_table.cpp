#include "host/value_table.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace plc {

ValueTable::ValueTable(const QVector<DataPoint>& points, int staleAfter, qint64 since, Fetch fetch)
    : m_staleAfter(staleAfter), m_since(since), m_fetch(std::move(fetch))
{
    m_rows.reserve(size_t(points.size()));
    for (const DataPoint& point : points) {
        m_rows.emplace_back(point);
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

void ValueTable::replyAccepted(const QVector<FrameEntry>& entries, qint64 now)
{
    for (const FrameEntry& entry : entries) {
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
            cover(&row, entry, now);
        }
    }
}

void ValueTable::cover(Row* row, const FrameEntry& entry, qint64 now)
{
    const qint64 start = qint64(entry.address) - row->range.start;
    if (!row->freshness.cover(start, start + entry.length, now))
        return;
    const qint64 oldest = row->freshness.oldest();
    if (oldest == Freshness::kNever || (oldest == row->readAt && oldest != now))
        return;
    const QByteArray bytes = m_fetch(row->point);
    if (row->reads > 0 && bytes != row->bytes)
        ++row->changes;
    row->bytes = bytes;
    row->readAt = oldest;
    ++row->reads;
    row->rate.count(now);
}

} // namespace plc

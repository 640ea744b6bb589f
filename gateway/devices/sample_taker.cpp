#include "gateway/devices/sample_taker.h"

#include <algorithm>
#include <cmath>

#include "host/points/value_codec.h"
#include "values/numeric_value.h"

namespace plc::gateway {
namespace {

Quality qualityOf(const host::ValueTable& values, int row, qint64 now)
{
    if (values.isRefused(row))
        return Quality::Bad;
    return values.wasRead(row) && !values.isStale(row, now) ? Quality::Good : Quality::Stale;
}

/// Whether an element differs by the deadband or more, or is no number now or before.
bool leavesDeadband(const Metric& metric, const QByteArray& before, const QByteArray& after)
{
    const QVector<values::Value> older = host::decodeValues(metric.point, before);
    const QVector<values::Value> newer = host::decodeValues(metric.point, after);
    return !std::equal(newer.begin(), newer.end(), older.begin(), older.end(),
                       [&metric](const values::Value& a, const values::Value& b) {
                           const std::optional<double> first = values::numericValue(a);
                           const std::optional<double> second = values::numericValue(b);
                           return first && second && std::abs(*first - *second) < metric.deadband;
                       });
}

} // namespace

SampleTaker::SampleTaker(const QVector<Metric>& metrics, qint64 time) : m_metrics(metrics)
{
    m_told.reserve(metrics.size());
    for (int metric = 0; metric < int(metrics.size()); ++metric)
        m_told.append({metric, time, Quality::Stale, true, {}});
}

QVector<Sample> SampleTaker::take(const host::ValueTable& values, qint64 now, qint64 time)
{
    QVector<Sample> news;
    for (int row = 0; row < int(m_told.size()); ++row) {
        const Quality quality = qualityOf(values, row, now);
        Sample& told = m_told[row];
        if (!isNews(m_metrics[row], told, quality, values.bytes(row)))
            continue;
        const qint64 since = quality == Quality::Good ? time - values.age(row, now) : time;
        told = {row, since, quality, quality != told.quality, values.bytes(row)};
        news.append(told);
    }
    return news;
}

bool SampleTaker::isNews(const Metric& metric, const Sample& told, Quality quality,
                         const QByteArray& bytes) const
{
    if (quality != told.quality)
        return true;
    // What a value that is not good was before does not change any more.
    if (quality != Quality::Good || bytes == told.bytes)
        return false;
    return metric.deadband <= 0.0 || leavesDeadband(metric, told.bytes, bytes);
}

} // namespace plc::gateway

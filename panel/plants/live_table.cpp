#include "panel/plants/live_table.h"

#include <algorithm>

namespace plc::panel {
namespace {

Quality qualityOf(const host::ValueTable& values, int row, qint64 now)
{
    if (values.isRefused(row))
        return Quality::Bad;
    return values.wasRead(row) && !values.isStale(row, now) ? Quality::Good : Quality::Stale;
}

} // namespace

const QVector<int>& LiveTable::sample(const host::ValueTable& values, const QVector<int>& places,
                                      qint64 now, const Moment& moment)
{
    m_changed.clear();
    m_confirmed.reset();
    for (int row = 0; row < int(places.size()); ++row) {
        const int slot = places[row];
        if (!has(slot))
            m_values.resize(std::size_t(slot) + 1);
        LiveValue& known = m_values[std::size_t(slot)];
        const Quality quality = qualityOf(values, row, now);
        const bool isFirst = values.wasRead(row) && !known.wasRead();
        if (values.wasRead(row)) {
            const Moment asked = moment.before(std::max<qint64>(0, values.age(row, now)));
            known.time = asked.time;
            known.steady = asked.steady;
        }
        if (quality == Quality::Good && (!m_confirmed || known.steady < m_confirmed->steady))
            m_confirmed = known.moment();
        if (quality == known.quality && !isFirst && values.bytes(row) == known.bytes)
            continue;
        known.quality = quality;
        known.bytes = values.bytes(row);
        m_changed.append(slot);
    }
    return m_changed;
}

void LiveTable::forget(int slot)
{
    if (has(slot))
        m_values[std::size_t(slot)] = LiveValue();
}

} // namespace plc::panel

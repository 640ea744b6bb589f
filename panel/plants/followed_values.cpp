#include "panel/plants/followed_values.h"

#include <algorithm>
#include <utility>

namespace plc::panel {

recorder::Quality recordedQuality(Quality quality)
{
    switch (quality) {
        case Quality::Good:
            return recorder::Quality::Good;
        case Quality::Stale:
            return recorder::Quality::Stale;
        case Quality::Bad:
            break;
    }
    return recorder::Quality::Bad;
}

void FollowedValues::follow(int slot, int series)
{
    if (m_followed.size() <= slot)
        m_followed.resize(slot + 1);
    m_followed[slot].series = series;
}

QVector<recorder::Change> FollowedValues::forget(qint64 time)
{
    QVector<recorder::Change> changes;
    m_forgotten.clear();
    for (int slot = 0; slot < int(m_followed.size()); ++slot) {
        Followed& followed = m_followed[slot];
        if (followed.series < 0)
            continue;
        followed.told = time;
        followed.isForgotten = true;
        m_forgotten.append(slot);
        changes.append({followed.series, {time, recorder::Quality::Stale, {}}});
    }
    return changes;
}

QVector<recorder::Change> FollowedValues::sampled(const ValueOf& value, const QVector<int>& changed,
                                                  qint64 time)
{
    QVector<recorder::Change> changes;
    for (const int slot : changed) {
        if (slot >= m_followed.size() || m_followed[slot].series < 0 ||
            m_followed[slot].isForgotten)
            continue;
        changes.append(tell(value(slot), time, &m_followed[slot]));
    }
    for (const int slot : std::exchange(m_forgotten, {})) {
        Followed& followed = m_followed[slot];
        const LiveValue& known = value(slot);
        // What was asked for before says nothing of the time since; unless the clock was set back.
        const bool isOld = !known.wasRead() || known.time < followed.told;
        if (known.quality != Quality::Bad && isOld && time >= followed.told) {
            m_forgotten.append(slot);
            continue;
        }
        followed.isForgotten = false;
        changes.append(tell(known, time, &followed));
    }
    return changes;
}

recorder::Change FollowedValues::tell(const LiveValue& value, qint64 time, Followed* followed)
{
    // A reply may be older than the moment at which it was given up waiting for it.
    const qint64 since = value.quality == Quality::Good ? value.time : time;
    followed->told = std::min(std::max(since, followed->told), time);
    return {followed->series, {followed->told, recordedQuality(value.quality), value.bytes}};
}

} // namespace plc::panel

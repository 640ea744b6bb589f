#include "panel/plants/wanted_values.h"

#include <utility>

namespace plc::panel {

int WantedValues::want(const host::DataPoint& point)
{
    int slot = find(point.text);
    if (slot == kNone) {
        if (m_free.isEmpty()) {
            slot = int(m_values.size());
            m_values.emplace_back();
        } else {
            slot = m_free.takeLast();
        }
        m_values[std::size_t(slot)] = {point, 0, 0, true};
        m_slots.insert(point.text, slot);
        m_hasChanged = true;
    }
    ++m_values[std::size_t(slot)].users;
    return slot;
}

void WantedValues::release(int slot, qint64 now)
{
    Wanted& value = m_values[std::size_t(slot)];
    if (--value.users == 0)
        value.unusedSince = now;
}

QVector<int> WantedValues::expire(qint64 now)
{
    QVector<int> freed;
    for (int slot = 0; slot < end(); ++slot) {
        Wanted& value = m_values[std::size_t(slot)];
        if (!value.isUsed || value.users > 0 || now - value.unusedSince < kKeptUnused)
            continue;
        m_slots.remove(value.point.text);
        value = Wanted();
        freed.append(slot);
    }
    m_free += freed;
    m_hasChanged = m_hasChanged || !freed.isEmpty();
    return freed;
}

QVector<int> WantedValues::used() const
{
    QVector<int> places;
    places.reserve(size());
    for (int slot = 0; slot < end(); ++slot) {
        if (m_values[std::size_t(slot)].isUsed)
            places.append(slot);
    }
    return places;
}

bool WantedValues::takeChange()
{
    return std::exchange(m_hasChanged, false);
}

} // namespace plc::panel

#include "host/transfers/write_places.h"

#include <iterator>

namespace plc::host {
namespace {

quint64 rangeOf(const FrameEntry& place)
{
    return quint64(place.address) << 32 | place.length;
}

} // namespace

bool WritePlaces::isTaken(const FrameEntry& place) const
{
    if (m_ranges.contains(rangeOf(place)))
        return true;
    const auto next = m_lengths.lower_bound({place.area, place.address});
    if (next != m_lengths.end() && next->first.first == place.area &&
        next->first.second < qint64(place.address) + place.length)
        return true;
    if (next == m_lengths.begin())
        return false;
    const auto before = std::prev(next);
    return before->first.first == place.area &&
           place.address < qint64(before->first.second) + before->second;
}

void WritePlaces::add(const FrameEntry& place)
{
    m_lengths.emplace(Start(place.area, place.address), place.length);
    m_ranges.insert(rangeOf(place));
}

void WritePlaces::remove(const FrameEntry& place)
{
    m_lengths.erase({place.area, place.address});
    m_ranges.remove(rangeOf(place));
}

void WritePlaces::clear()
{
    m_lengths.clear();
    m_ranges.clear();
}

} // namespace plc::host

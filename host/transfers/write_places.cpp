#include "host/transfers/write_places.h"

#include <algorithm>
#include <iterator>

namespace plc::host {
namespace {

bool liesBefore(const FramePlace& a, const FramePlace& b)
{
    return a.area != b.area ? a.area < b.area : a.address < b.address;
}

/// `a` does not lie behind `b`.
bool reachesInto(const FramePlace& a, const FramePlace& b)
{
    return a.area == b.area && b.address < quint64(a.address) + a.length;
}

quint64 rangeOf(const FramePlace& place)
{
    return quint64(place.address) << 32 | place.length;
}

} // namespace

bool WritePlaces::isTaken(const FramePlace& place) const
{
    if (std::binary_search(m_ranges.begin(), m_ranges.end(), rangeOf(place)))
        return true;
    const auto next = std::lower_bound(m_places.begin(), m_places.end(), place, liesBefore);
    if (next != m_places.end() && reachesInto(place, *next))
        return true;
    return next != m_places.begin() && reachesInto(*std::prev(next), place);
}

void WritePlaces::add(const FramePlace& place)
{
    m_places.insert(std::upper_bound(m_places.begin(), m_places.end(), place, liesBefore), place);
    const quint64 range = rangeOf(place);
    m_ranges.insert(std::upper_bound(m_ranges.begin(), m_ranges.end(), range), range);
}

void WritePlaces::remove(const FramePlace& place)
{
    const auto taken = std::equal_range(m_places.begin(), m_places.end(), place, liesBefore);
    m_places.erase(taken.first, taken.second);
    const auto ranges = std::equal_range(m_ranges.begin(), m_ranges.end(), rangeOf(place));
    m_ranges.erase(ranges.first, ranges.second);
}

void WritePlaces::clear()
{
    m_places.clear();
    m_ranges.clear();
}

} // namespace plc::host

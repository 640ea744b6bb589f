#ifndef PLC_HOST_TRANSFERS_WRITE_PLACES_H
#define PLC_HOST_TRANSFERS_WRITE_PLACES_H

#include <vector>

#include "host/wire/frame_entries.h"
#include "values/export.h"

namespace plc::host {

/// The places that writes go to of which it is not sure yet that they were carried out. No two of
/// them meet, see isTaken(); so a question takes a few steps, however many writes there are.
class PLC_HOST_EXPORT WritePlaces {
public:
    /// Whether the driver would take a write to `place` for a new value of one that goes to a place
    /// in here, which has its address and length, in whatever area; or whether the two have bytes
    /// in common, so that their order counts.
    bool isTaken(const FramePlace& place) const;

    /// `place` must not be taken, and must have a length.
    void add(const FramePlace& place);
    void remove(const FramePlace& place);
    void clear();

private:
    /// Both in ascending order, where neighbours lie close in memory: writes are often queued so.
    std::vector<FramePlace> m_places; ///< By area and address.
    std::vector<quint64> m_ranges;    ///< Address and length, whatever the area.
};

} // namespace plc::host

#endif

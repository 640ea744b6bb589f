#ifndef PLC_HOST_TRANSFERS_WRITE_PLACES_H
#define PLC_HOST_TRANSFERS_WRITE_PLACES_H

#include <QtCore/QSet>

#include <map>
#include <utility>

#include "host/wire/frame_entries.h"
#include "values/export.h"

namespace plc::host {

/// The places that unsettled writes go to. No two of them meet, see isTaken(); so a question takes
/// a few steps, however many writes there are.
class PLC_HOST_EXPORT WritePlaces {
public:
    /// Whether the driver would take a write to `place` for a new value of one that goes to a place
    /// in here, which has its address and length, in whatever area; or whether the two have bytes
    /// in common, so that their order counts.
    bool isTaken(const FrameEntry& place) const;

    /// `place` must not be taken, and must have a length.
    void add(const FrameEntry& place);
    void remove(const FrameEntry& place);
    void clear();

private:
    using Start = std::pair<quint16, quint32>; ///< Area and address.

    std::map<Start, quint32> m_lengths;
    QSet<quint64> m_ranges; ///< Address and length, whatever the area.
};

} // namespace plc::host

#endif

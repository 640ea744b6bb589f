#ifndef PLC_HOST_WRITE_TRACKER_H
#define PLC_HOST_WRITE_TRACKER_H

#include <functional>

#include "host/driver_library.h"
#include "host/transfer_outcome.h"
#include "host/transfer_queue.h"
#include "host/value_codec.h"

namespace plc {

/// Called once, when the write is settled.
using WriteSettled = std::function<void(const TransferOutcome&)>;

struct Write {
    int tag = 0;
    DataPoint point;
    WriteBuffer buffer;
    QVector<FrameEntry> pieces;
    WriteSettled settled;
    bool wasSent = false; ///< A request has carried a piece of it.
    int accepted = 0;     ///< Bytes (elements of BIT) that the PLC took.
    int confirmed = 0;    ///< The part of it that is sure.
};

/// Holds writes back until the driver can carry them out unharmed.
///
/// - The driver replaces a queued write by one of the same station, address and length, even while
///   the first is under way and whatever the areas are; so no write goes to a place while another
///   one to it is unsettled.
/// - Behind a bit the driver would state no length for any other write of the same request, and
///   behind another write it would write a bit as a byte to the address that its number makes; so
///   bits never share the driver's list with other writes.
/// - After a failure the driver forgets the further pieces of the first write of a request only; so
///   a write of several pieces goes alone.
///
/// Writes keep their order.
class WriteTracker : public TransferQueue<Write> {
public:
    /// Hands the driver all writes that may go now.
    void handOver(const DriverFunctions& driver);

private:
    bool mayGo(const Write& write) const;
    bool collides(const FrameEntry& piece) const;
};

} // namespace plc

#endif

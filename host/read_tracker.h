#ifndef PLC_HOST_READ_TRACKER_H
#define PLC_HOST_READ_TRACKER_H

#include <functional>

#include "host/driver_library.h"
#include "host/transfer_outcome.h"
#include "host/transfer_queue.h"

namespace plc {

/// Called once, when the read is settled; with the value as GetRegisterData() gives it if it is
/// done.
using ReadSettled = std::function<void(const TransferOutcome&, const QByteArray& bytes)>;

struct OneShotRead {
    int tag = 0;
    DataPoint point;
    QVector<FrameEntry> pieces;
    ReadSettled settled;
    bool wasSent = false; ///< A request has carried a piece of it.
};

/// Hands one-shot reads to the driver as its list has room.
class ReadTracker : public TransferQueue<OneShotRead> {
public:
    /// Hands the driver the reads for which there is room. Returns those that it does not take.
    QVector<OneShotRead> handOver(const DriverFunctions& driver, int localDeviceNo);

private:
    bool hasRoomFor(const OneShotRead& read) const;
};

} // namespace plc

#endif

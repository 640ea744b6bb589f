#include "host/write_tracker.h"

#include <algorithm>

namespace plc {
namespace {

bool isSplit(const Write& write)
{
    return write.pieces.size() > 1;
}

bool overlap(const FrameEntry& a, const FrameEntry& b)
{
    return a.area == b.area && qint64(a.address) < qint64(b.address) + b.length &&
           qint64(b.address) < qint64(a.address) + a.length;
}

/// Whether the driver would take the second for a new value of the first, or their order counts.
bool isSamePlace(const FrameEntry& a, const FrameEntry& b)
{
    return (a.address == b.address && a.length == b.length) || overlap(a, b);
}

} // namespace

void WriteTracker::handOver(const DriverFunctions& driver)
{
    while (nextWaiting() != nullptr && mayGo(*nextWaiting())) {
        const Write write = start();
        QByteArray bytes = write.buffer.bytes;
        driver.setRegisterData(write.point.label, 0, QString(), write.point.station, &bytes,
                               write.buffer.count, kWriteCategory, write.tag);
    }
}

bool WriteTracker::mayGo(const Write& write) const
{
    if (!hasUnderWay())
        return true;
    const Write& other = underWay().begin()->second;
    if (isSplit(write) || isSplit(other))
        return false;
    const FrameEntry& piece = write.pieces.first();
    return piece.isBit == other.pieces.first().isBit && piecesUnderWay() < kDriverListLimit &&
           !collides(piece);
}

bool WriteTracker::collides(const FrameEntry& piece) const
{
    return std::any_of(underWay().begin(), underWay().end(), [&piece](const auto& entry) {
        return isSamePlace(piece, entry.second.pieces.first());
    });
}

} // namespace plc

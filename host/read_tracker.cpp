#include "host/read_tracker.h"

#include "host/value_layout.h"

namespace plc {
namespace {

/// Entries that reads may have in the driver's list at a time. Half of its limit, because pieces of
/// reads that failed may still stand in it.
constexpr int kEntriesUnderWay = kDriverListLimit / 2;

RW_VAR oneShotRecord(const OneShotRead& read, int localDeviceNo)
{
    RW_VAR var;
    var.category = kOneShotCategory;
    var.aux1 = read.tag;
    var.deviceNo = localDeviceNo;
    var.label = read.point.label;
    var.station = read.point.station;
    var.length = oneShotCount(read.point);
    return var;
}

} // namespace

QVector<OneShotRead> ReadTracker::handOver(const DriverFunctions& driver, int localDeviceNo)
{
    QVector<OneShotRead> refused;
    while (nextWaiting() != nullptr && hasRoomFor(*nextWaiting())) {
        const OneShotRead read = start();
        RW_VAR var = oneShotRecord(read, localDeviceNo);
        if (driver.addListOnceReadVar(&var, 0) == 0)
            refused += take(read.tag);
    }
    return refused;
}

bool ReadTracker::hasRoomFor(const OneShotRead& read) const
{
    return !hasUnderWay() || piecesUnderWay() + int(read.pieces.size()) <= kEntriesUnderWay;
}

} // namespace plc

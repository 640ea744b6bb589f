#ifndef PLC_HOST_REPORT_SCAN_PLAN_H
#define PLC_HOST_REPORT_SCAN_PLAN_H

#include <QtCore/QVector>

#include <functional>

#include "host/driver/driver_claim.h"
#include "host/points/data_point.h"
#include "host/runtime/runtime_settings.h"
#include "host/runtime/scan_layout.h"
#include "values/export.h"

namespace plc::host {

/// What one pass over all cyclic values takes. Each request costs one round trip: the next one goes
/// out when the reply is there. The driver fills the last request up with entries of the next pass;
/// they count as bytes on the wire only.
struct ScanPlan {
    int maxReadBytes = 0; ///< ComInfo::maxReadBytes that it is made for.
    int entries = 0;      ///< Of the driver's cyclic list.
    int requests = 0;
    qint64 bytesSent = 0; ///< Frames of requests.
    qint64 bytesReceived = 0;
    qint64 memoryBytes = 0; ///< Bytes of PLC memory that the entries read.
    qint64 gapBytes = 0;    ///< Those of them that no value needs, or that are read once more.
};

/// What lies between host and PLC. The time that the PLC itself takes counts as part of the round
/// trip.
struct NetworkModel {
    double roundTrip = 1;   ///< ms
    double bandwidth = 100; ///< Mbit/s
};

/// Time of one pass in milliseconds.
PLC_HOST_EXPORT double scanTime(const ScanPlan& plan, const NetworkModel& network);

/// Share of the memory bytes that are gap, 0 to 1.
PLC_HOST_EXPORT double gapShare(const ScanPlan& plan);

/// Plans scans with the layout that a runtime uses and with the driver itself: hands it the entries
/// and answers its requests with zeros.
///
/// 1. A driver library serves one planner or one runtime at a time, which has taken it.
/// 2. A plan begins with an empty cyclic list and ends without a request under way; the list is
///    empty again when the planner has gone.
/// 3. A plan depends on the values and `maxReadBytes` alone, not on the plans before it.
class PLC_HOST_EXPORT ScanPlanner {
public:
    /// The driver must have the symbols of the values.
    ScanPlanner(DriverClaim driver, const RuntimeSettings& settings,
                const QVector<DataPoint>& points);
    ~ScanPlanner();
    ScanPlanner(const ScanPlanner&) = delete;
    ScanPlanner& operator=(const ScanPlanner&) = delete;

    /// Bytes that the values take together; those of several values count once.
    qint64 valueBytes() const { return m_valueBytes; }
    /// The scan as it is with this setting.
    ScanPlan plan(int maxReadBytes);
    /// The scan with the setting that makes it shortest, of all that make sense for the values.
    /// Among those that are hardly slower it is the one with the fewest bytes on the wire, and
    /// `asItIs` if none has fewer. `planned` is told after each setting how many of how many were
    /// tried.
    ScanPlan best(const NetworkModel& network, const ScanPlan& asItIs,
                  const std::function<void(int done, int total)>& planned = {});

private:
    QVector<int> candidates() const;
    bool hasFewPieces(int maxReadBytes) const;
    void clearList();
    void answer(int replySize);
    void forgetLogin();

    const DriverClaim m_claim;
    const DriverFunctions& m_driver;
    const QVector<DataPoint> m_points;
    ComInfo m_settings;
    qint64 m_valueBytes = 0;
};

} // namespace plc::host

#endif

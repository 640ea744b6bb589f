#ifndef PLC_HOST_DRIVER_REPORT_ROUTE_H
#define PLC_HOST_DRIVER_REPORT_ROUTE_H

#include <vector>

#include "values/export.h"

namespace plc::host {

/// What the driver's callback told of one write or one-shot read.
struct DriverReport {
    int category = 0; ///< RW_VAR::category of the request.
    int tag = 0;      ///< RW_VAR::aux1 of the request.
    int status = 0;   ///< PLC_STATUS_DONE or PLC_STATUS_FAILED.
};

/// The way of a driver's reports to its receiver. The callback is one function for all drivers of
/// the process and has no argument for a receiver but ComInfo::hostTag, which is a number.
///
/// Routes may be made and ended in any thread. The reports of one arrive in the thread that calls
/// DataCom() of its driver.
class PLC_HOST_EXPORT ReportRoute {
public:
    ReportRoute();
    ~ReportRoute();
    ReportRoute(const ReportRoute&) = delete;
    ReportRoute& operator=(const ReportRoute&) = delete;

    /// For ComInfo::hostTag; no two routes have the same at a time.
    int hostTag() const { return m_hostTag; }
    /// What was told since the last call.
    std::vector<DriverReport> take();

    /// For RegistCallBackFuncIntf(). A report for a route that has ended is dropped.
    static void deliver(int hostTag, int category, int tag, int status);

private:
    const int m_hostTag;
    std::vector<DriverReport> m_reports;
};

} // namespace plc::host

#endif

#ifndef PLC_BENCH_COMPARE_HOST_CLIENT_H
#define PLC_BENCH_COMPARE_HOST_CLIENT_H

#include "client.h"
#include "host/driver/driver_functions.h"
#include "project/project.h"

namespace plc::bench {

/// How the host is told to do the work.
struct HostSettings {
    int maxReadBytes;
    /// The block is 10,000 values with labels of their own, and not one value of 10,000 elements.
    bool labelsEach;
};

/// The host of this repository, as `plc run` uses it: driver library, session and value table.
class HostClient : public Client {
public:
    /// The driver must outlive the client.
    HostClient(const host::DriverFunctions& driver, const project::Project& plant,
               const HostSettings& settings);

    void measure(Work work, quint16 port, Recorder* recorder) override;

private:
    const host::DriverFunctions& m_driver;
    project::Project m_project;
    const HostSettings m_settings;
};

} // namespace plc::bench

#endif

#ifndef PLC_BENCH_MANY_PLANT_H
#define PLC_BENCH_MANY_PLANT_H

#include "host/driver/driver_library.h"
#include "host/runtime/runtime.h"
#include "host/tcp/tcp_link.h"

namespace plc::bench {

/// The symbols of the simulated plants.
project::Symbols plantSymbols();

/// One PLC with its copy of the driver; all its values are read once a second.
class Plant {
public:
    /// `symbols` must outlive the plant; `number` is that of its simulator.
    Plant(const host::DriverLibrary& copy, const project::Symbols& symbols, int number,
          quint16 port);

    /// Values that can be relied on and are those of this plant and label.
    int goodValues() const;
    /// Values that are told to be good and are others.
    int wrongValues() const;
    /// Times that the link was lost.
    quint64 losses() const { return m_runtime.counters().linkLosses; }

private:
    QVector<host::DataPoint> points() const;
    bool isGood(int row) const;
    bool isRight(int row) const;

    const int m_number;

    host::RuntimeListener m_listener;
    host::Runtime m_runtime;
    host::TcpLink m_link;
};

} // namespace plc::bench

#endif

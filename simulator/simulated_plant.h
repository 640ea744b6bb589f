#ifndef PLC_SIMULATOR_SIMULATED_PLANT_H
#define PLC_SIMULATOR_SIMULATED_PLANT_H

#include <QtCore/QElapsedTimer>

#include <functional>

#include "simulator/control_commands.h"
#include "simulator/options.h"
#include "simulator/plc_memory.h"
#include "simulator/plc_server.h"
#include "simulator/plc_services.h"
#include "simulator/signals.h"

namespace plc::simulator {

/// One PLC: its memory, what lives in it, and the server through which clients reach it.
class SimulatedPlant {
public:
    /// `number` is that among the plants of this process, from 1 on: the seeds differ by it. The
    /// project must outlive the plant; `stop` ends the simulator.
    SimulatedPlant(const project::Project& project, const Options& options, int number,
                   std::function<void()> stop);
    SimulatedPlant(const SimulatedPlant&) = delete;
    SimulatedPlant& operator=(const SimulatedPlant&) = delete;

    PlcServer& server() { return m_server; }
    ControlCommands& commands() { return m_commands; }
    /// See ConnectionSettings::trace.
    void setTrace(std::function<void(const QString&, char, const QByteArray&)> trace)
    {
        m_settings.trace = std::move(trace);
    }

private:
    ConnectionSettings settings(const Options& options);

    PlcMemory m_memory;
    Signals m_signals;
    PlcServices m_services;
    ReplyFaults m_faults;
    QElapsedTimer m_clock;
    ConnectionSettings m_settings;
    PlcServer m_server;
    ControlCommands m_commands;
};

} // namespace plc::simulator

#endif

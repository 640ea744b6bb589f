#include "simulator/simulated_plant.h"

namespace plc::simulator {

SimulatedPlant::SimulatedPlant(const project::Project& project, const Options& options, int number,
                               std::function<void()> stop)
    : m_memory(project.areas),
      m_signals(project, &m_memory, options.seed + quint32(number) - 1),
      m_services(&m_memory, project.name.toUtf8()),
      m_faults(options.faults),
      m_settings(settings(options)),
      m_server(&m_settings),
      m_commands(project, &m_memory, &m_server, &m_settings, std::move(stop))
{
    m_services.setLoginRefused(options.refuseLogin);
    m_services.setWritesRefused(options.failWrites);
    m_server.setMostClients(options.mostClients);
    m_clock.start();
}

/// How clients are served.
ConnectionSettings SimulatedPlant::settings(const Options& options)
{
    ConnectionSettings settings;
    settings.services = &m_services;
    settings.faults = &m_faults;
    settings.fragment = options.fragment;
    settings.join = options.join;
    settings.beforeAccess = [this] { m_signals.advance(m_clock.elapsed()); };
    return settings;
}

} // namespace plc::simulator

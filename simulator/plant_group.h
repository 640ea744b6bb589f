#ifndef PLC_SIMULATOR_PLANT_GROUP_H
#define PLC_SIMULATOR_PLANT_GROUP_H

#include <functional>
#include <memory>
#include <vector>

#include "simulator/simulated_plant.h"

namespace plc::simulator {

/// The plants of one process: as many as the options say, all of one project, each with memory and
/// port of its own.
class PlantGroup {
public:
    /// The project must outlive the group; `stop` ends the simulator.
    PlantGroup(const project::Project& project, const Options& options, std::function<void()> stop);

    const std::vector<std::unique_ptr<SimulatedPlant>>& plants() const { return m_plants; }

    /// Begins to listen: at the port of the options or the project and those behind it, or each at
    /// a free one.
    Expected<void> listen();

    /// Carries out one line as ControlCommands::execute() does, for the first plant or the one that
    /// "plant N" has chosen.
    QString execute(const QString& line);

private:
    QString choose(const QString& number);

    const Options m_options;
    const quint16 m_projectPort;
    std::vector<std::unique_ptr<SimulatedPlant>> m_plants;
    size_t m_chosen = 0;
};

} // namespace plc::simulator

#endif

#ifndef PLC_PANEL_PLANTS_PLANTS_H
#define PLC_PANEL_PLANTS_PLANTS_H

#include <memory>
#include <vector>

#include "panel/plants/plant.h"

namespace plc::panel {

/// All PLCs of a panel, in the order of its configuration.
class Plants {
public:
    void add(std::unique_ptr<Plant> plant) { m_plants.push_back(std::move(plant)); }

    auto begin() const { return m_plants.begin(); }
    auto end() const { return m_plants.end(); }
    int size() const { return int(m_plants.size()); }
    /// Null: there is none of this name.
    Plant* find(const QString& name) const
    {
        for (const std::unique_ptr<Plant>& plant : m_plants) {
            if (plant->name() == name)
                return plant.get();
        }
        return nullptr;
    }
    /// Takes all out, for an exchange.
    std::vector<std::unique_ptr<Plant>> takeAll() { return std::exchange(m_plants, {}); }

private:
    std::vector<std::unique_ptr<Plant>> m_plants;
};

} // namespace plc::panel

#endif

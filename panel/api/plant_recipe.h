#ifndef PLC_PANEL_API_PLANT_RECIPE_H
#define PLC_PANEL_API_PLANT_RECIPE_H

#include "panel/api/write_desk.h"
#include "panel/recipes/recipe_plc.h"

namespace plc::panel {

/// A PLC as recipes see it: values are read now, and written by the same rules and into the same
/// audit as all others.
class PlantRecipe : public RecipePlc {
public:
    /// Writes get the ids "ID/1", "ID/2" and so on.
    PlantRecipe(Plant* plant, WriteDesk* writes, const WriteRequest& pattern)
        : m_plant(plant), m_writes(writes), m_pattern(pattern)
    {
    }

    void read(const QString& label, ReadSettled settled) override;
    void write(const QString& label, const QVector<values::Value>& values,
               WriteSettled settled) override;

private:
    Plant* const m_plant;
    WriteDesk* const m_writes;
    const WriteRequest m_pattern;
    int m_written = 0;
};

} // namespace plc::panel

#endif

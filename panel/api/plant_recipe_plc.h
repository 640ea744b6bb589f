#ifndef PLC_PANEL_API_PLANT_RECIPE_PLC_H
#define PLC_PANEL_API_PLANT_RECIPE_PLC_H

#include "panel/api/api_context.h"
#include "panel/recipes/recipe_plc.h"

namespace plc::panel {

/// A PLC as recipes see it. What is written goes the way of all writes, with their rules and their
/// audit. May outlive the PLC.
class PlantRecipePlc : public RecipePlc {
public:
    /// Writes are `caller`'s; their ids begin with `writes`.
    PlantRecipePlc(const ApiContext& context, const QString& plc, const Caller& caller,
                   const QString& writes)
        : m_context(context), m_plc(plc), m_caller(caller), m_writes(writes)
    {
    }

    void read(const QString& label, ReadSettled settled) override;
    void write(const QString& label, const QVector<values::Value>& values,
               WriteSettled settled) override;

private:
    const ApiContext m_context;
    const QString m_plc;
    const Caller m_caller;
    const QString m_writes;
    int m_count = 0;
};

} // namespace plc::panel

#endif

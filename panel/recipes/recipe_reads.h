#ifndef PLC_PANEL_RECIPES_RECIPE_READS_H
#define PLC_PANEL_RECIPES_RECIPE_READS_H

#include <QtCore/QStringList>

#include <memory>

#include "panel/recipes/recipe_plc.h"

namespace plc::panel {

/// Asks for all at once, and hands over the readings, in the order of the labels, when the last one
/// has come. Keeps `plc` alive until then.
void readAll(const QStringList& labels, std::shared_ptr<RecipePlc> plc,
             std::function<void(const QVector<RecipePlc::Reading>&)> finished);

} // namespace plc::panel

#endif

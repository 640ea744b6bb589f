#ifndef PLC_PANEL_API_RECIPE_TEXTS_H
#define PLC_PANEL_API_RECIPE_TEXTS_H

#include "panel/recipes/recipe_desk.h"

namespace plc::panel {

// Recipes and what is done with them, as JSON for clients.

QByteArray recipeListText(const QVector<RecipeSummary>& recipes);
QByteArray recipeText(const Recipe& recipe);
QByteArray comparisonText(const Recipe& recipe, const QVector<ComparedValue>& values);
QByteArray reportText(const RestoreReport& report);

} // namespace plc::panel

#endif

#ifndef PLC_PANEL_RECIPES_RECIPE_JSON_H
#define PLC_PANEL_RECIPES_RECIPE_JSON_H

#include <QtCore/QByteArray>

#include "panel/recipes/recipe.h"
#include "values/expected.h"

namespace plc::panel {

/// A recipe as a file has it, which people can read and change:
///
///     {
///       "recipe": 1,
///       "name": "Summer",
///       "plc": "press",
///       "savedAt": 1795305600000,
///       "savedBy": "anna",
///       "values": [
///         {"label": "Plant.level", "type": "REAL", "values": ["1.5"]},
///         …
///
/// Values stand as IEC 61131-3 writes them; a NaN with other bits than the usual ones as
/// "NAN 16#7FC00001".
QByteArray recipeJson(const Recipe& recipe);

/// `name` stands for the file in errors, which say where in it what is wrong.
Expected<Recipe> parseRecipe(const QByteArray& json, const QString& name);

} // namespace plc::panel

#endif

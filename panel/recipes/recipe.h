#ifndef PLC_PANEL_RECIPES_RECIPE_H
#define PLC_PANEL_RECIPES_RECIPE_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include <optional>

#include "values/iec_types.h"
#include "values/value_text.h"

namespace plc::panel {

/// What the bytes of a value mean.
struct RecipeType {
    const values::IecType* type = nullptr;
    int stringLength = 0; ///< Capacity in characters of a text.
    int elements = 1;
};

bool operator==(const RecipeType& a, const RecipeType& b);
inline bool operator!=(const RecipeType& a, const RecipeType& b)
{
    return !(a == b);
}

/// "REAL", "STRING(20)", "INT*3"
QString recipeTypeText(const RecipeType& type);
/// Nothing if it is no such text.
std::optional<RecipeType> parseRecipeType(const QString& text);

/// A value as the PLC holds it: as many as the type has elements.
struct RecipeContent {
    RecipeType type;
    QVector<values::Value> values;
};

/// Whether both have the same type and the same bits, so that -0.0 is not 0.0 and a NaN is itself.
bool isSameContent(const RecipeContent& a, const RecipeContent& b);

struct RecipeEntry {
    QString label;
    RecipeContent content;
};

/// Values of a PLC that were read at one time and can be written again.
struct Recipe {
    QString name;
    QString plc;
    qint64 savedAt = 0; ///< ms since 1970-01-01T00:00:00Z
    QString savedBy;
    QVector<RecipeEntry> entries;
};

constexpr int kMostRecipeEntries = 10000;

/// What is wrong with the name of a recipe; empty: nothing.
QString recipeNameProblem(const QString& name);

} // namespace plc::panel

#endif

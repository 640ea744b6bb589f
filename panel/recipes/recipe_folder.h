#ifndef PLC_PANEL_RECIPES_RECIPE_FOLDER_H
#define PLC_PANEL_RECIPES_RECIPE_FOLDER_H

#include "panel/recipes/recipe.h"
#include "values/expected.h"

namespace plc::panel {

/// What a list of recipes tells of one.
struct RecipeSummary {
    QString name;
    QString plc;
    qint64 savedAt = 0;
    QString savedBy;
    int values = 0;
    QString error; ///< Why it cannot be used; empty: it can.
};

/// Recipes as files in a folder, one each. A name becomes the name of a file in such a way that no
/// name leads out of the folder. Files appear and change as a whole or not at all.
class RecipeFolder {
public:
    static constexpr int kMostRecipes = 1000;

    /// The folder is made when the first recipe is saved.
    explicit RecipeFolder(const QString& path) : m_path(path) {}

    /// In the order of their names.
    QVector<RecipeSummary> list() const;
    bool contains(const QString& name) const;
    Expected<Recipe> load(const QString& name) const;
    /// In place of one of the same name.
    Expected<void> save(const Recipe& recipe) const;
    Expected<void> remove(const QString& name) const;

private:
    QString fileOf(const QString& name) const;

    QString m_path;
};

} // namespace plc::panel

#endif

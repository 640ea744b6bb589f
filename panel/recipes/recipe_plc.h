#ifndef PLC_PANEL_RECIPES_RECIPE_PLC_H
#define PLC_PANEL_RECIPES_RECIPE_PLC_H

#include <QtCore/QString>

#include <functional>
#include <optional>

#include "panel/recipes/recipe.h"

namespace plc::panel {

/// A PLC as recipes see it. Each call is settled exactly once, at once or later.
class RecipePlc {
public:
    virtual ~RecipePlc() = default;

    struct Reading {
        std::optional<RecipeContent> content; ///< Nothing: `reason` says why.
        QString reason;
        bool isLinkLost = false; ///< It makes no sense to ask for more.
    };
    using ReadSettled = std::function<void(const Reading&)>;
    /// Asks the PLC now.
    virtual void read(const QString& label, ReadSettled settled) = 0;

    enum class Outcome {
        Done,
        Refused,
        Unknown, ///< It may or may not have been carried out.
        NotSent
    };
    struct Writing {
        Outcome outcome = Outcome::NotSent;
        QString reason;          ///< Why it is not done.
        bool isLinkLost = false; ///< It makes no sense to send more.
    };
    using WriteSettled = std::function<void(const Writing&)>;
    virtual void write(const QString& label, const QVector<values::Value>& values,
                       WriteSettled settled) = 0;
};

/// "done", "refused", "unknown", "notSent"
QString recipeOutcomeText(RecipePlc::Outcome outcome);

} // namespace plc::panel

#endif

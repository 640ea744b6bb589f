#ifndef PLC_PANEL_RECIPES_RECIPE_RESULT_H
#define PLC_PANEL_RECIPES_RECIPE_RESULT_H

#include <QtCore/QString>

#include <functional>
#include <variant>

namespace plc::panel {

struct RecipeFailure {
    enum Kind {
        Senseless,    ///< What was asked for makes no sense.
        Missing,      ///< There is no such recipe, or its PLC is not there.
        Conflict,     ///< It cannot be done now, or not any more.
        Unreadable,   ///< The PLC did not give a value.
        Storage,      ///< The file cannot be read or written.
        NotPermitted, ///< What has to happen before cannot.
        Forgotten,    ///< It was done; what came of it is not kept any more.
        Busy,         ///< Too much waits for the disk, or the program ends; nothing was done.
        Unanswered    ///< The disk did not answer: what came of it is not known.
    };
    Kind kind = Senseless;
    QString text;
};

template <typename T>
using RecipeResult = std::variant<T, RecipeFailure>;

/// Called once with what came of something.
template <typename T>
using RecipeTold = std::function<void(const RecipeResult<T>&)>;

} // namespace plc::panel

#endif

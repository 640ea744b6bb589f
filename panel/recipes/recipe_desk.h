#ifndef PLC_PANEL_RECIPES_RECIPE_DESK_H
#define PLC_PANEL_RECIPES_RECIPE_DESK_H

#include <QtCore/QHash>
#include <QtCore/QSet>
#include <QtCore/QStringList>

#include <memory>
#include <variant>

#include "panel/recipes/recipe_folder.h"
#include "panel/recipes/recipe_restore.h"

namespace plc::panel {

struct RecipeFailure {
    enum Kind {
        Senseless,    ///< What was asked for makes no sense.
        Missing,      ///< There is no such recipe, or its PLC is not there.
        Conflict,     ///< It cannot be done now, or not any more.
        Unreadable,   ///< The PLC did not give a value.
        Storage,      ///< The file cannot be read or written.
        NotPermitted, ///< What has to happen before cannot.
        Forgotten     ///< It was done; what came of it is not kept any more.
    };
    Kind kind = Senseless;
    QString text;
};

template <typename T>
using RecipeResult = std::variant<T, RecipeFailure>;

struct ComparedValue {
    QString label;
    RecipeContent saved;
    std::optional<RecipeContent> now;
    std::optional<bool> isEqual; ///< Nothing: not known.
    QString reason;              ///< Why it is not known, or cannot be equal.
};

/// Saves, compares and restores recipes. For one thread.
///
/// 1. A set is saved as a whole, as the PLC has it now, or not at all.
/// 2. A PLC is restored by one at a time.
/// 3. The same id restores once: who asks again gets the report of the first.
class RecipeDesk {
public:
    explicit RecipeDesk(const QString& folder);
    ~RecipeDesk();

    const RecipeFolder& folder() const { return m_folder; }
    RecipeResult<Recipe> find(const QString& name) const;
    RecipeResult<bool> remove(const QString& name);

    struct SaveOrder {
        QString name;
        QString plc;
        QStringList labels;
        QString user;
        qint64 time = 0; ///< ms since 1970-01-01T00:00:00Z
    };
    using Saved = std::function<void(const RecipeResult<Recipe>&)>;
    void save(const SaveOrder& order, std::shared_ptr<RecipePlc> plc, Saved saved);

    using Compared = std::function<void(const RecipeResult<QVector<ComparedValue>>&)>;
    static void compare(const Recipe& recipe, std::shared_ptr<RecipePlc> plc, Compared compared);

    using Restored = std::function<void(const RecipeResult<RestoreReport>&)>;
    /// Tells of a restore of this id that was begun before, if there was one, whatever has become
    /// of the recipe and the PLC since. Whether there was; else `restored` is not called.
    bool repeat(const QString& id, const QString& name, const Restored& restored);
    /// Takes why nothing is to be done, or an empty text.
    using Permitted = std::function<void(const QString& obstacle)>;
    /// Called before a restore begins, which does once the function is called, perhaps later. An id
    /// that is not permitted was never there.
    using Before = std::function<void(Permitted)>;
    void restore(const QString& id, const Recipe& recipe, std::shared_ptr<RecipePlc> plc,
                 Restored restored, const Before& before = {});

private:
    struct Restores;

    RecipeFolder m_folder;
    /// Shared with restores that are under way, which may outlive the desk.
    std::shared_ptr<Restores> m_restores;
};

} // namespace plc::panel

#endif

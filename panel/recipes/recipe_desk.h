#ifndef PLC_PANEL_RECIPES_RECIPE_DESK_H
#define PLC_PANEL_RECIPES_RECIPE_DESK_H

#include <QtCore/QHash>
#include <QtCore/QSet>
#include <QtCore/QStringList>

#include <memory>

#include "panel/recipes/recipe_files.h"
#include "panel/recipes/recipe_restore.h"

namespace plc::panel {

struct ComparedValue {
    QString label;
    RecipeContent saved;
    std::optional<RecipeContent> now;
    std::optional<bool> isEqual; ///< Nothing: not known.
    QString reason;              ///< Why it is not known, or cannot be equal.
};

/// Saves, compares and restores recipes. For one thread, which never waits for the disk.
///
/// 1. A set is saved as a whole, as the PLC has it now, or not at all.
/// 2. What was asked for later to be saved under a name, or to be removed, is so behind what was
///    asked for before.
/// 3. A PLC is restored by one at a time.
/// 4. The same id restores once: who asks again gets the report of the first.
class RecipeDesk {
public:
    /// `wake` is called by another thread: deliver() is to be called by this one.
    RecipeDesk(const QString& folder, service::DiskThread::Wake wake);
    ~RecipeDesk();

    void list(const RecipeTold<QVector<RecipeSummary>>& listed) { m_files->list(listed); }
    void find(const QString& name, const RecipeTold<Recipe>& found) { m_files->find(name, found); }
    void remove(const QString& name, const RecipeTold<bool>& removed)
    {
        m_files->remove(name, removed);
    }

    struct SaveOrder {
        QString name;
        QString plc;
        QStringList labels;
        QString user;
        qint64 time = 0; ///< ms since 1970-01-01T00:00:00Z
    };
    using Saved = RecipeTold<Recipe>;
    void save(const SaveOrder& order, std::shared_ptr<RecipePlc> plc, const Saved& saved);

    using Compared = RecipeTold<QVector<ComparedValue>>;
    static void compare(const Recipe& recipe, std::shared_ptr<RecipePlc> plc, Compared compared);

    using Restored = RecipeTold<RestoreReport>;
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

    // As those of RecipeFiles.
    void deliver() { m_files->deliver(); }
    void stop() { m_files->stop(); }
    void finish(std::chrono::milliseconds patience) { m_files->finish(patience); }
    std::optional<qint64> busySince() const { return m_files->busySince(); }

private:
    struct Restores;

    /// Known to saves that wait for the PLC, which may outlive the desk.
    const std::shared_ptr<RecipeFiles> m_files;
    /// Shared with restores that are under way, which may outlive the desk.
    std::shared_ptr<Restores> m_restores;
};

} // namespace plc::panel

#endif

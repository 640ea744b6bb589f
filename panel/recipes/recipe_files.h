#ifndef PLC_PANEL_RECIPES_RECIPE_FILES_H
#define PLC_PANEL_RECIPES_RECIPE_FILES_H

#include <QtCore/QHash>

#include <chrono>
#include <deque>
#include <map>
#include <optional>

#include "panel/recipes/recipe_folder.h"
#include "panel/recipes/recipe_result.h"
#include "service/disk_thread.h"

namespace plc::panel {

/// Recipes on a disk for which nobody waits: a thread of its own reads, writes and removes them,
/// one after the other. Changes of one recipe reach the disk in the order in which they were asked
/// for.
///
/// For one thread. Who asks is told by deliver() or finish(), or at once where it is not taken.
class RecipeFiles {
public:
    static constexpr int kMostWaiting = 64;

    /// `wake` is called by another thread: deliver() is to be called by this one.
    RecipeFiles(const QString& path, service::DiskThread::Wake wake);

    void list(const RecipeTold<QVector<RecipeSummary>>& listed);
    void find(const QString& name, const RecipeTold<Recipe>& found);
    void remove(const QString& name, const RecipeTold<bool>& removed);

    /// A place among the changes of a recipe.
    using Place = quint64;
    /// For a recipe whose values are not known yet: those that are asked for later wait until
    /// save() or giveUp() was called with the place. Nothing, and told why: there is none.
    std::optional<Place> takePlace(const QString& name, const RecipeTold<Recipe>& saved);
    void save(Place place, const Recipe& recipe);
    void giveUp(Place place, const RecipeFailure& failure);

    void deliver() { m_disk.deliver(); }
    /// Nothing is read any more; who waits for that is told so. What changes is still done.
    void stop();
    /// Waits until all is done, for so long at most. Behind it nothing is done any more.
    void finish(std::chrono::milliseconds patience);

    /// Since when the disk has owed an answer, as values::steadyTime() counts; nothing: it owes
    /// none.
    std::optional<qint64> busySince() const { return m_busySince; }

private:
    using Outcome = std::variant<RecipeFailure, Recipe, QVector<RecipeSummary>, bool>;
    using Work = std::function<Outcome(const RecipeFolder&)>;
    struct Errand {
        bool isChange = false;
        QString recipe; ///< That it changes.
        Work work;      ///< Null while it is not known, and once the disk has it.
        std::function<void(const Outcome&)> told;
    };

    template <typename T>
    static Errand reading(const RecipeTold<T>& told, Work work);
    template <typename T>
    static Errand changing(const QString& recipe, const RecipeTold<T>& told, Work work);
    QString obstacle(const Errand& errand) const;
    std::optional<Place> take(Errand errand);
    void read(Errand errand);
    void change(Errand errand);
    void submitChanges(const QString& name);
    void submit(Place place);
    void takeAnswer(Place place, const Outcome& outcome);
    void end(Place place, const Outcome& outcome);

    const RecipeFolder m_folder;
    std::map<Place, Errand> m_errands;
    Place m_last = 0;
    QHash<QString, std::deque<Place>> m_changes; ///< That wait for their turn, by recipe.
    int m_underWay = 0;                          ///< Errands that the disk has.
    std::optional<qint64> m_busySince;
    bool m_isStopping = false;
    bool m_hasEnded = false;
    service::DiskThread m_disk; ///< The last member: it uses the others.
};

} // namespace plc::panel

#endif

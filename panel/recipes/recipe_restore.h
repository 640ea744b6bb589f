#ifndef PLC_PANEL_RECIPES_RECIPE_RESTORE_H
#define PLC_PANEL_RECIPES_RECIPE_RESTORE_H

#include <memory>
#include <vector>

#include "panel/recipes/recipe_plc.h"

namespace plc::panel {

/// What became of one value of a recipe.
struct RestoredValue {
    QString label;
    RecipeContent saved;
    std::optional<RecipeContent> before; ///< Nothing: it could not be read.
    std::optional<RecipeContent> after; ///< As read behind the write; nothing: not written or read.
    RecipePlc::Outcome outcome = RecipePlc::Outcome::NotSent;
    QString reason;       ///< Why it was not written, or is not as it was saved.
    bool isEqual = false; ///< It was as saved, so that nothing was to be written.
    /// Whether the PLC has the saved value, as it was read behind the write, or in its place;
    /// nothing: not known.
    std::optional<bool> isVerified;
};

struct RestoreReport {
    QString id;
    QString recipe;
    QString plc;
    std::vector<RestoredValue> values;
    // Of the values each counts once:
    int written = 0;
    int equal = 0;
    int notWritten = 0; ///< Refused or not sent.
    int notKnown = 0;   ///< May or may not be written.
};

/// Writes the values of a recipe that the PLC has not, one after the other, and reads each back.
/// Behind a lost link nothing more is sent.
class RecipeRestore : public std::enable_shared_from_this<RecipeRestore> {
public:
    using Finished = std::function<void(const RestoreReport&)>;

    /// Keeps itself and `plc` alive until it has called `finished`.
    static void start(const QString& id, const Recipe& recipe, std::shared_ptr<RecipePlc> plc,
                      Finished finished);

private:
    enum class Stage { ReadBefore, Write, ReadAfter };

    RecipeRestore(const QString& id, const Recipe& recipe, std::shared_ptr<RecipePlc> plc,
                  Finished finished);
    void go();
    void step();
    void takeBefore(const RecipePlc::Reading& reading);
    void takeWriting(const RecipePlc::Writing& writing);
    void takeAfter(const RecipePlc::Reading& reading);
    void goOn(Stage stage);
    void goToNext();
    void giveUp(const QString& reason);
    void finish();
    RestoredValue& current() { return m_report.values[std::size_t(m_place)]; }

    const std::shared_ptr<RecipePlc> m_plc;
    const Finished m_finished;
    RestoreReport m_report;
    int m_place = 0;
    Stage m_stage = Stage::ReadBefore;
    bool m_isGoing = false;
    bool m_isToGoOn = false;
};

} // namespace plc::panel

#endif

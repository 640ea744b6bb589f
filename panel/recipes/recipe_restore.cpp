#include "panel/recipes/recipe_restore.h"

#include <utility>

namespace plc::panel {

using Outcome = RecipePlc::Outcome;

QString recipeOutcomeText(RecipePlc::Outcome outcome)
{
    switch (outcome) {
        case Outcome::Done:
            return QStringLiteral("done");
        case Outcome::Refused:
            return QStringLiteral("refused");
        case Outcome::Unknown:
            return QStringLiteral("unknown");
        default:
            return QStringLiteral("notSent");
    }
}

void RecipeRestore::start(const QString& id, const Recipe& recipe, std::shared_ptr<RecipePlc> plc,
                          Finished finished)
{
    std::shared_ptr<RecipeRestore> restore(
        new RecipeRestore(id, recipe, std::move(plc), std::move(finished)));
    restore->go();
}

RecipeRestore::RecipeRestore(const QString& id, const Recipe& recipe,
                             std::shared_ptr<RecipePlc> plc, Finished finished)
    : m_plc(std::move(plc)), m_finished(std::move(finished))
{
    m_report.id = id;
    m_report.recipe = recipe.name;
    m_report.plc = recipe.plc;
    for (const RecipeEntry& entry : recipe.entries) {
        RestoredValue value;
        value.label = entry.label;
        value.saved = entry.content;
        m_report.values.push_back(value);
    }
}

/// A PLC that settles at once would else let the stack grow with each value.
void RecipeRestore::go()
{
    m_isToGoOn = true;
    if (m_isGoing)
        return;
    const std::shared_ptr<RecipeRestore> self = shared_from_this();
    m_isGoing = true;
    while (std::exchange(m_isToGoOn, false))
        step();
    m_isGoing = false;
}

void RecipeRestore::step()
{
    if (m_place == int(m_report.values.size()))
        return finish();
    const std::shared_ptr<RecipeRestore> self = shared_from_this();
    const RestoredValue& value = current();
    switch (m_stage) {
        case Stage::ReadBefore:
            return m_plc->read(value.label, [self](const RecipePlc::Reading& reading) {
                self->takeBefore(reading);
            });
        case Stage::Write:
            return m_plc->write(
                value.label, value.saved.values,
                [self](const RecipePlc::Writing& writing) { self->takeWriting(writing); });
        case Stage::ReadAfter:
            return m_plc->read(value.label, [self](const RecipePlc::Reading& reading) {
                self->takeAfter(reading);
            });
    }
}

void RecipeRestore::takeBefore(const RecipePlc::Reading& reading)
{
    RestoredValue& value = current();
    value.before = reading.content;
    if (!reading.content) {
        value.reason = QStringLiteral("could not be read before: ") + reading.reason;
        return reading.isLinkLost ? giveUp(reading.reason) : goToNext();
    }
    if (reading.content->type != value.saved.type) {
        value.reason =
            QStringLiteral("the value is %1 now and was %2 when it was saved")
                .arg(recipeTypeText(reading.content->type), recipeTypeText(value.saved.type));
        value.isVerified = false;
        return goToNext();
    }
    value.isEqual = isSameContent(*reading.content, value.saved);
    if (!value.isEqual)
        return goOn(Stage::Write);
    value.reason = QStringLiteral("the PLC has the saved value");
    value.isVerified = true;
    goToNext();
}

void RecipeRestore::takeWriting(const RecipePlc::Writing& writing)
{
    RestoredValue& value = current();
    value.outcome = writing.outcome;
    value.reason = writing.reason;
    if (writing.outcome == Outcome::NotSent)
        value.isVerified = false;
    if (writing.isLinkLost)
        return giveUp(writing.reason);
    if (writing.outcome == Outcome::NotSent)
        return goToNext();
    goOn(Stage::ReadAfter);
}

void RecipeRestore::takeAfter(const RecipePlc::Reading& reading)
{
    RestoredValue& value = current();
    value.after = reading.content;
    if (reading.content) {
        value.isVerified = isSameContent(*reading.content, value.saved);
        if (value.outcome == Outcome::Done && !*value.isVerified)
            value.reason = QStringLiteral("the PLC took the write and has another value");
        return goToNext();
    }
    if (value.outcome == Outcome::Done)
        value.reason = QStringLiteral("could not be read back: ") + reading.reason;
    return reading.isLinkLost ? giveUp(reading.reason) : goToNext();
}

void RecipeRestore::goOn(Stage stage)
{
    m_stage = stage;
    go();
}

void RecipeRestore::goToNext()
{
    ++m_place;
    goOn(Stage::ReadBefore);
}

/// What comes behind the current value is not sent.
void RecipeRestore::giveUp(const QString& reason)
{
    for (++m_place; m_place < int(m_report.values.size()); ++m_place)
        current().reason = QStringLiteral("the link was lost before: ") + reason;
    go();
}

void RecipeRestore::finish()
{
    for (const RestoredValue& value : std::as_const(m_report.values)) {
        if (value.isEqual)
            ++m_report.equal;
        else if (value.outcome == Outcome::Done)
            ++m_report.written;
        else if (value.outcome == Outcome::Unknown)
            ++m_report.notKnown;
        else
            ++m_report.notWritten;
    }
    m_finished(m_report);
}

} // namespace plc::panel

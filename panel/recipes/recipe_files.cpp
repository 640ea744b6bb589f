#include "panel/recipes/recipe_files.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "values/steady_time.h"

namespace plc::panel {
namespace {

RecipeFailure missing()
{
    return {RecipeFailure::Missing, QStringLiteral("there is no recipe of that name")};
}

RecipeFailure ending()
{
    return {RecipeFailure::Busy, QStringLiteral("the program ends")};
}

} // namespace

RecipeFiles::RecipeFiles(const QString& path, service::DiskThread::Wake wake)
    : m_folder(path), m_disk(std::move(wake))
{
}

template <typename T>
RecipeFiles::Errand RecipeFiles::reading(const RecipeTold<T>& told, Work work)
{
    return {false, {}, std::move(work), [told](const Outcome& outcome) {
                if (const auto* failure = std::get_if<RecipeFailure>(&outcome))
                    told(*failure);
                else
                    told(std::get<T>(outcome));
            }};
}

template <typename T>
RecipeFiles::Errand RecipeFiles::changing(const QString& recipe, const RecipeTold<T>& told,
                                          Work work)
{
    Errand errand = reading<T>(told, std::move(work));
    errand.isChange = true;
    errand.recipe = recipe;
    return errand;
}

void RecipeFiles::list(const RecipeTold<QVector<RecipeSummary>>& listed)
{
    read(reading<QVector<RecipeSummary>>(
        listed, [](const RecipeFolder& folder) -> Outcome { return folder.list(); }));
}

void RecipeFiles::find(const QString& name, const RecipeTold<Recipe>& found)
{
    read(reading<Recipe>(found, [name](const RecipeFolder& folder) -> Outcome {
        if (!folder.contains(name))
            return missing();
        Expected<Recipe> recipe = folder.load(name);
        if (!recipe)
            return RecipeFailure{RecipeFailure::Storage, recipe.error().text};
        return *std::move(recipe);
    }));
}

void RecipeFiles::remove(const QString& name, const RecipeTold<bool>& removed)
{
    change(changing<bool>(name, removed, [name](const RecipeFolder& folder) -> Outcome {
        if (!folder.contains(name))
            return missing();
        if (const Expected<void> isRemoved = folder.remove(name); !isRemoved)
            return RecipeFailure{RecipeFailure::Storage, isRemoved.error().text};
        return true;
    }));
}

std::optional<RecipeFiles::Place> RecipeFiles::takePlace(const QString& name,
                                                         const RecipeTold<Recipe>& saved)
{
    const std::optional<Place> place = take(changing<Recipe>(name, saved, nullptr));
    if (place)
        m_changes[name].push_back(*place);
    return place;
}

void RecipeFiles::save(Place place, const Recipe& recipe)
{
    const auto found = m_errands.find(place);
    if (found == m_errands.end())
        return; // It was told that the program ends.
    found->second.work = [recipe](const RecipeFolder& folder) -> Outcome {
        if (const Expected<void> isSaved = folder.save(recipe); !isSaved)
            return RecipeFailure{RecipeFailure::Storage, isSaved.error().text};
        return recipe;
    };
    submitChanges(QString(found->second.recipe));
}

void RecipeFiles::giveUp(Place place, const RecipeFailure& failure)
{
    const auto found = m_errands.find(place);
    if (found == m_errands.end())
        return;
    const QString name = found->second.recipe;
    std::deque<Place>& places = m_changes[name];
    places.erase(std::find(places.begin(), places.end(), place));
    submitChanges(name);
    end(place, failure);
}

/// Why it is not taken; empty: it is.
QString RecipeFiles::obstacle(const Errand& errand) const
{
    if (m_hasEnded || (m_isStopping && !errand.isChange))
        return ending().text;
    if (int(m_errands.size()) >= kMostWaiting)
        return QStringLiteral("too many wait for the recipes' disk; ask again later");
    return {};
}

std::optional<RecipeFiles::Place> RecipeFiles::take(Errand errand)
{
    if (const QString problem = obstacle(errand); !problem.isEmpty()) {
        errand.told(RecipeFailure{RecipeFailure::Busy, problem});
        return {};
    }
    m_errands.emplace(++m_last, std::move(errand));
    return m_last;
}

void RecipeFiles::read(Errand errand)
{
    if (const std::optional<Place> place = take(std::move(errand)))
        submit(*place);
}

void RecipeFiles::change(Errand errand)
{
    const QString name = errand.recipe;
    const std::optional<Place> place = take(std::move(errand));
    if (!place)
        return;
    m_changes[name].push_back(*place);
    submitChanges(name);
}

/// Hands the disk what does not wait for an earlier change of the recipe.
void RecipeFiles::submitChanges(const QString& name)
{
    std::deque<Place>& places = m_changes[name];
    while (!places.empty() && m_errands.at(places.front()).work) {
        submit(places.front());
        places.pop_front();
    }
    if (places.empty())
        m_changes.remove(name);
}

void RecipeFiles::submit(Place place)
{
    if (m_underWay++ == 0)
        m_busySince = values::steadyTime();
    Work work = std::exchange(m_errands.at(place).work, nullptr);
    m_disk.submit([this, place, folder = m_folder, work = std::move(work)] {
        const Outcome outcome = work(folder);
        return [this, place, outcome] { takeAnswer(place, outcome); };
    });
}

void RecipeFiles::takeAnswer(Place place, const Outcome& outcome)
{
    m_busySince.reset();
    if (--m_underWay > 0)
        m_busySince = values::steadyTime();
    end(place, outcome);
}

/// Unless it was told before what came of it.
void RecipeFiles::end(Place place, const Outcome& outcome)
{
    const auto found = m_errands.find(place);
    if (found == m_errands.end())
        return;
    const auto told = std::move(found->second.told);
    m_errands.erase(found);
    told(outcome);
}

void RecipeFiles::stop()
{
    m_isStopping = true;
    std::vector<Place> reads;
    for (const auto& [place, errand] : m_errands) {
        if (!errand.isChange)
            reads.push_back(place);
    }
    for (const Place place : reads)
        end(place, ending());
}

void RecipeFiles::finish(std::chrono::milliseconds patience)
{
    stop();
    m_disk.finish(patience);
    m_hasEnded = true;
    std::map<Place, Errand> untold = std::exchange(m_errands, {});
    for (const auto& changes : std::as_const(m_changes)) {
        for (const Place place : changes) {
            untold.at(place).told(ending());
            untold.erase(place);
        }
    }
    m_changes.clear();
    for (const auto& [place, errand] : untold)
        errand.told(
            RecipeFailure{RecipeFailure::Unanswered,
                          QStringLiteral("the disk did not answer before the program ended")});
}

} // namespace plc::panel

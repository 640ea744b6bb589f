#include "panel/recipes/recipe_desk.h"

#include <QtCore/QQueue>

#include <utility>
#include <vector>

#include "panel/recipes/recipe_reads.h"

namespace plc::panel {
namespace {

constexpr int kLongestId = 64;
constexpr int kKeptReports = 200;
constexpr int kKeptIds = 100000;

using Readings = QVector<RecipePlc::Reading>;

/// What is wrong with the labels; empty: nothing.
QString problemOf(const QStringList& labels)
{
    if (labels.isEmpty())
        return QStringLiteral("expected labels of values");
    if (labels.size() > kMostRecipeEntries)
        return QStringLiteral("expected at most %1 labels").arg(kMostRecipeEntries);
    QSet<QString> seen;
    for (const QString& label : labels) {
        if (seen.contains(label))
            return QStringLiteral("%1 stands twice").arg(label);
        seen.insert(label);
    }
    return {};
}

/// Why nothing is saved: the first that could not be read, and how many more there are.
QString unreadableText(const QStringList& labels, const Readings& readings)
{
    QString text;
    int others = -1;
    for (int i = 0; i < int(readings.size()); ++i) {
        if (readings[i].content)
            continue;
        ++others;
        if (text.isEmpty())
            text = QStringLiteral("%1: %2").arg(labels[i], readings[i].reason);
    }
    if (others > 0)
        text += QStringLiteral(" (and %1 more)").arg(others);
    return text.isEmpty() ? text : text + QStringLiteral("; nothing was saved");
}

ComparedValue comparedValue(const RecipeEntry& entry, const RecipePlc::Reading& reading)
{
    ComparedValue compared;
    compared.label = entry.label;
    compared.saved = entry.content;
    compared.now = reading.content;
    if (!reading.content) {
        compared.reason = reading.reason;
        return compared;
    }
    compared.isEqual = isSameContent(entry.content, *reading.content);
    if (reading.content->type != entry.content.type)
        compared.reason =
            QStringLiteral("the value is %1 now and was %2 when it was saved")
                .arg(recipeTypeText(reading.content->type), recipeTypeText(entry.content.type));
    return compared;
}

} // namespace

struct RecipeDesk::Restores {
    struct Restore {
        QString recipe;
        std::optional<RestoreReport> report; ///< Nothing: under way, or not kept any more.
        std::vector<Restored> waiting;       ///< None: it is finished.
    };

    static void begin(const std::shared_ptr<Restores>& restores, const QString& id,
                      const Recipe& recipe, std::shared_ptr<RecipePlc> plc,
                      const QString& obstacle);
    /// As if there had been none of this id.
    void refuse(const QString& id, const RecipeFailure& failure)
    {
        const std::vector<Restored> waiting = byId.take(id).waiting;
        for (const Restored& restored : waiting)
            restored(failure);
    }
    void finish(const QString& id, const RestoreReport& report)
    {
        busyPlcs.remove(report.plc);
        const std::vector<Restored> waiting = std::exchange(byId[id].waiting, {});
        byId[id].report = report;
        reported.enqueue(id);
        if (reported.size() > kKeptReports) {
            forgotten.enqueue(reported.dequeue());
            byId[forgotten.last()].report.reset();
        }
        if (forgotten.size() > kKeptIds)
            byId.remove(forgotten.dequeue());
        for (const Restored& restored : waiting)
            restored(report);
    }

    QHash<QString, Restore> byId;
    QQueue<QString> reported;
    QQueue<QString> forgotten; ///< Finished, and their reports not kept any more.
    QSet<QString> busyPlcs;
};

void RecipeDesk::Restores::begin(const std::shared_ptr<Restores>& restores, const QString& id,
                                 const Recipe& recipe, std::shared_ptr<RecipePlc> plc,
                                 const QString& obstacle)
{
    if (!obstacle.isEmpty())
        return restores->refuse(id, {RecipeFailure::NotPermitted, obstacle});
    if (restores->busyPlcs.contains(recipe.plc))
        return restores->refuse(
            id, {RecipeFailure::Conflict,
                 QStringLiteral("%1 is being restored by somebody else").arg(recipe.plc)});
    restores->busyPlcs.insert(recipe.plc);
    RecipeRestore::start(id, recipe, std::move(plc), [restores, id](const RestoreReport& report) {
        restores->finish(id, report);
    });
}

RecipeDesk::RecipeDesk(const QString& folder, service::DiskThread::Wake wake)
    : m_files(std::make_shared<RecipeFiles>(folder, std::move(wake))),
      m_restores(std::make_shared<Restores>())
{
}

RecipeDesk::~RecipeDesk() = default;

void RecipeDesk::save(const SaveOrder& order, std::shared_ptr<RecipePlc> plc, const Saved& saved)
{
    QString problem = recipeNameProblem(order.name);
    if (problem.isEmpty())
        problem = problemOf(order.labels);
    if (!problem.isEmpty())
        return saved(RecipeFailure{RecipeFailure::Senseless, problem});
    const std::optional<RecipeFiles::Place> place = m_files->takePlace(order.name, saved);
    if (!place)
        return;
    const auto finish = [known = std::weak_ptr<RecipeFiles>(m_files), place = *place,
                         order](const Readings& readings) {
        const std::shared_ptr<RecipeFiles> files = known.lock();
        if (!files)
            return;
        const QString unreadable = unreadableText(order.labels, readings);
        if (!unreadable.isEmpty())
            return files->giveUp(place, {RecipeFailure::Unreadable, unreadable});
        Recipe recipe{order.name, order.plc, order.time, order.user, {}};
        for (int i = 0; i < int(readings.size()); ++i)
            recipe.entries.append({order.labels[i], *readings[i].content});
        files->save(place, recipe);
    };
    readAll(order.labels, std::move(plc), finish);
}

void RecipeDesk::compare(const Recipe& recipe, std::shared_ptr<RecipePlc> plc, Compared compared)
{
    QStringList labels;
    for (const RecipeEntry& entry : recipe.entries)
        labels.append(entry.label);
    readAll(labels, std::move(plc), [recipe, compared](const Readings& readings) {
        QVector<ComparedValue> values;
        for (int i = 0; i < int(readings.size()); ++i)
            values.append(comparedValue(recipe.entries[i], readings[i]));
        compared(values);
    });
}

bool RecipeDesk::repeat(const QString& id, const QString& name, const Restored& restored)
{
    const auto known = m_restores->byId.find(id);
    if (known == m_restores->byId.end())
        return false;
    if (known->recipe != name)
        restored(RecipeFailure{RecipeFailure::Conflict,
                               QStringLiteral("this id restored another recipe")});
    else if (known->report)
        restored(RestoreReport(*known->report));
    else if (known->waiting.empty())
        restored(
            RecipeFailure{RecipeFailure::Forgotten,
                          QStringLiteral("this id was restored; its report is not kept any more")});
    else
        known->waiting.push_back(restored);
    return true;
}

void RecipeDesk::restore(const QString& id, const Recipe& recipe, std::shared_ptr<RecipePlc> plc,
                         Restored restored, const Before& before)
{
    if (id.isEmpty() || id.size() > kLongestId)
        return restored(
            RecipeFailure{RecipeFailure::Senseless,
                          QStringLiteral("expected an id of 1 to %1 characters").arg(kLongestId)});
    if (repeat(id, recipe.name, restored))
        return;
    m_restores->byId.insert(id, {recipe.name, {}, {std::move(restored)}});
    Permitted permitted = [restores = m_restores, id, recipe, plc](const QString& obstacle) {
        Restores::begin(restores, id, recipe, plc, obstacle);
    };
    if (before)
        before(std::move(permitted));
    else
        permitted({});
}

} // namespace plc::panel

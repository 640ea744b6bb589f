#include <QtCore/QCryptographicHash>

#include <algorithm>

#include "exchange/flat_json.h"
#include "panel/api/api_routes.h"
#include "panel/api/audited.h"
#include "panel/api/plant_recipe_plc.h"
#include "panel/api/recipe_texts.h"
#include "panel/api/request_bodies.h"
#include "panel/recipes/recipe_desk.h"

namespace plc::panel {
namespace {

constexpr int kIdLetters = 24;

QString nameOf(const Request& request)
{
    return request.parameters.value(QStringLiteral("name"));
}

Response refusal(const RecipeFailure& failure)
{
    switch (failure.kind) {
        case RecipeFailure::Senseless:
            return badRequest(failure.text);
        case RecipeFailure::Missing:
            return notFound(failure.text);
        case RecipeFailure::Conflict:
            return Response::error(409, failure.text);
        case RecipeFailure::Forgotten:
            return Response::error(410, failure.text);
        case RecipeFailure::Unreadable:
        case RecipeFailure::NotPermitted:
        case RecipeFailure::Busy:
        case RecipeFailure::Unanswered:
            return Response::error(503, failure.text);
        default:
            return Response::error(500, failure.text);
    }
}

/// Whether recipes are kept at all; answers where they are not.
bool hasFolder(const ApiContext& context, const Responder& respond)
{
    if (context.recipes)
        return true;
    respond(notFound(QStringLiteral("no recipes are kept: the configuration names no folder")));
    return false;
}

/// Goes on with the recipe of the path once the disk has given it, and answers where it does not. A
/// disk may take long: who is not logged in any more by then gets nothing, and no PLC is asked.
/// `isAnswered` may answer before it matters what the disk gave.
void withRecipe(
    const ApiContext& context, const Request& request, const Responder& respond,
    std::function<void(const Recipe&)> goOn,
    std::function<bool()> isAnswered = [] { return false; })
{
    if (!hasFolder(context, respond))
        return;
    const auto take = [context, caller = request.caller, respond, goOn = std::move(goOn),
                       isAnswered = std::move(isAnswered)](const RecipeResult<Recipe>& found) {
        if (!context.access->isValid(caller))
            return respond(
                Response::error(401, QStringLiteral("the session is over; log in again")));
        if (isAnswered())
            return;
        if (const auto* failure = std::get_if<RecipeFailure>(&found))
            return respond(refusal(*failure));
        goOn(std::get<Recipe>(found));
    };
    context.recipes->find(nameOf(request), take);
}

/// Null, and answered, where the panel has no such PLC.
std::shared_ptr<RecipePlc> plcOf(const ApiContext& context, const QString& plc,
                                 const Request& request, const Responder& respond,
                                 const QString& writes = {})
{
    if (context.plants->find(plc))
        return std::make_shared<PlantRecipePlc>(context, plc, request.caller, writes);
    respond(notFound(QStringLiteral("there is no PLC %1").arg(plc)));
    return nullptr;
}

void listRecipes(const ApiContext& context, const Request&, const Responder& respond)
{
    if (!context.recipes) {
        respond(Response::json(recipeListText({})));
        return;
    }
    context.recipes->list([respond](const RecipeResult<QVector<RecipeSummary>>& listed) {
        const auto* failure = std::get_if<RecipeFailure>(&listed);
        respond(failure ? refusal(*failure)
                        : Response::json(recipeListText(std::get<QVector<RecipeSummary>>(listed))));
    });
}

void showRecipe(const ApiContext& context, const Request& request, const Responder& respond)
{
    withRecipe(context, request, respond,
               [respond](const Recipe& recipe) { respond(Response::json(recipeText(recipe))); });
}

/// The PLC and the labels of the body.
Expected<RecipeDesk::SaveOrder> orderOf(const ApiContext& context, const Request& request)
{
    const Expected<RecipeOrder> read = readRecipeOrder(request.body);
    if (!read)
        return read.error();
    return RecipeDesk::SaveOrder{nameOf(request), read->plc, read->labels, request.caller.user,
                                 context.time()};
}

/// Answers once it is on record what came of a change.
template <typename T>
void endChange(const ApiContext& context, const AuditRecord& record, const Responder& respond,
               const RecipeResult<T>& changed, const Response& done)
{
    const auto* failure = std::get_if<RecipeFailure>(&changed);
    recordEnd(
        context, record, failure ? failure->text : QString(),
        [respond, response = failure ? refusal(*failure) : done] { respond(response); },
        failure && failure->kind == RecipeFailure::Unanswered ? QStringLiteral("unknown")
                                                              : QStringLiteral("notDone"));
}

void saveRecipe(const ApiContext& context, const Request& request, const Responder& respond)
{
    if (!hasFolder(context, respond))
        return;
    const Expected<RecipeDesk::SaveOrder> order = orderOf(context, request);
    if (!order)
        return respond(badRequest(order.error().text));
    const std::shared_ptr<RecipePlc> plc = plcOf(context, order->plc, request, respond);
    const AuditRecord record =
        recordOf(context, request, "save recipe", order->plc, nameOf(request));
    if (!plc)
        return;
    whenRecorded(context, record, respond, [context, order = *order, plc, record, respond] {
        context.recipes->save(
            order, plc, [context, record, respond](const RecipeResult<Recipe>& saved) {
                const auto* recipe = std::get_if<Recipe>(&saved);
                endChange(context, record, respond, saved,
                          recipe ? Response::json(recipeText(*recipe)) : Response());
            });
    });
}

void removeRecipe(const ApiContext& context, const Request& request, const Responder& respond)
{
    if (!hasFolder(context, respond))
        return;
    const AuditRecord record = recordOf(context, request, "remove recipe", {}, nameOf(request));
    whenRecorded(context, record, respond, [context, name = nameOf(request), record, respond] {
        context.recipes->remove(
            name, [context, record, respond](const RecipeResult<bool>& removed) {
                endChange(context, record, respond, removed, Response::nothing());
            });
    });
}

void compareRecipe(const ApiContext& context, const Request& request, const Responder& respond)
{
    withRecipe(context, request, respond, [context, request, respond](const Recipe& recipe) {
        const std::shared_ptr<RecipePlc> plc = plcOf(context, recipe.plc, request, respond);
        if (!plc)
            return;
        RecipeDesk::compare(
            recipe, plc, [recipe, respond](const RecipeResult<QVector<ComparedValue>>& compared) {
                respond(Response::json(
                    comparisonText(recipe, std::get<QVector<ComparedValue>>(compared))));
            });
    });
}

/// What the ids of a restore's writes begin with: as short as ids are to be.
QString writeIds(const QString& id)
{
    const QByteArray hash = QCryptographicHash::hash(id.toUtf8(), QCryptographicHash::Sha256);
    return QStringLiteral("restore/") + QString::fromLatin1(hash.toHex().left(kIdLetters));
}

QString summaryOf(const RestoreReport& report)
{
    return QStringLiteral("%1 written, %2 equal, %3 not written, %4 not known")
        .arg(report.written)
        .arg(report.equal)
        .arg(report.notWritten)
        .arg(report.notKnown);
}

/// What the audit tells of a restore that came to its end: the worst that became of a value.
QString outcomeOf(const RestoreReport& report)
{
    if (report.notKnown > 0)
        return recipeOutcomeText(RecipePlc::Outcome::Unknown);
    if (report.notWritten == 0)
        return recipeOutcomeText(RecipePlc::Outcome::Done);
    const bool isRefused =
        std::any_of(report.values.begin(), report.values.end(), [](const RestoredValue& value) {
            return !value.isEqual && value.outcome == RecipePlc::Outcome::Refused;
        });
    return recipeOutcomeText(isRefused ? RecipePlc::Outcome::Refused : RecipePlc::Outcome::NotSent);
}

void recordRestore(const ApiContext& context, AuditRecord record,
                   const RecipeResult<RestoreReport>& restored, std::function<void()> answer)
{
    if (const auto* failure = std::get_if<RecipeFailure>(&restored))
        return recordEnd(context, record, failure->text, std::move(answer));
    const auto& report = std::get<RestoreReport>(restored);
    record.newValue = summaryOf(report);
    const bool isDone = report.notKnown == 0 && report.notWritten == 0;
    recordEnd(context, record, isDone ? QString() : record.newValue, std::move(answer),
              outcomeOf(report));
}

Response restoreResponse(const RecipeResult<RestoreReport>& restored)
{
    if (const auto* failure = std::get_if<RecipeFailure>(&restored))
        return refusal(*failure);
    return Response::json(reportText(std::get<RestoreReport>(restored)));
}

void restore(const ApiContext& context, const Request& request, const QString& id,
             const Recipe& recipe, const Responder& respond)
{
    const std::shared_ptr<RecipePlc> plc =
        plcOf(context, recipe.plc, request, respond, writeIds(id));
    AuditRecord record = recordOf(context, request, "restore recipe", recipe.plc, nameOf(request));
    record.id = id;
    if (!plc)
        return;
    const auto finish = [context, record, respond](const RecipeResult<RestoreReport>& restored) {
        recordRestore(context, record, restored,
                      [respond, response = restoreResponse(restored)] { respond(response); });
    };
    context.recipes->restore(
        id, recipe, plc, finish, [context, record](RecipeDesk::Permitted permitted) {
            context.audit(record, [permitted = std::move(permitted)](const Expected<void>& isKept) {
                permitted(isKept ? QString()
                                 : QStringLiteral("the audit cannot be written: %1")
                                       .arg(isKept.error().text));
            });
        });
}

void restoreRecipe(const ApiContext& context, const Request& request, const Responder& respond)
{
    const Expected<exchange::FlatJson> json = exchange::parseFlatJson(request.body);
    const QString* const id = json ? json->text("id") : nullptr;
    if (!id)
        return respond(badRequest(QStringLiteral("\"id\": a text is expected")));
    // Who asks again is told what was done, and nothing is done, also when the recipe is gone.
    const auto isTold = [recipes = context.recipes, id = *id, name = nameOf(request), respond] {
        return recipes &&
               recipes->repeat(id, name, [respond](const RecipeResult<RestoreReport>& report) {
                   respond(restoreResponse(report));
               });
    };
    if (isTold())
        return;
    // The first request of the id may begin while the disk is asked.
    withRecipe(
        context, request, respond,
        [context, request, id = *id, respond](const Recipe& recipe) {
            restore(context, request, id, recipe, respond);
        },
        isTold);
}

} // namespace

QVector<Route> recipeRoutes(const ApiContext& context)
{
    return {
        {Method::Get, "/api/v1/recipes", Role::Viewer, Route::Reads, "Sets of values that are kept",
         onPlants(context, &listRecipes)},
        {Method::Get, "/api/v1/recipes/{name}", Role::Viewer, Route::Reads, "The values of a set",
         onPlants(context, &showRecipe)},
        {Method::Put, "/api/v1/recipes/{name}", Role::Engineer, Route::Changes,
         "Keep the values that a PLC has now", onPlants(context, &saveRecipe)},
        {Method::Delete, "/api/v1/recipes/{name}", Role::Engineer, Route::Changes,
         "Forget a set of values", onPlants(context, &removeRecipe)},
        {Method::Get, "/api/v1/recipes/{name}/comparison", Role::Viewer, Route::Reads,
         "A set beside what the PLC has now", onPlants(context, &compareRecipe)},
        {Method::Post, "/api/v1/recipes/{name}/restore", Role::Operator, Route::Changes,
         "Write what differs and read it back", onPlants(context, &restoreRecipe)},
    };
}

} // namespace plc::panel

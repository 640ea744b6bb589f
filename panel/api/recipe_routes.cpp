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

/// The recipe of the path; answers and gives nothing where there is none.
std::optional<Recipe> recipeOf(const ApiContext& context, const Request& request,
                               const Responder& respond)
{
    if (!hasFolder(context, respond))
        return {};
    RecipeResult<Recipe> found = context.recipes->find(nameOf(request));
    if (const auto* failure = std::get_if<RecipeFailure>(&found)) {
        respond(refusal(*failure));
        return {};
    }
    return std::get<Recipe>(std::move(found));
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

/// Each file is read, for which no PLC waits.
void listRecipes(const ApiContext& context, const Request&, const Responder& respond)
{
    if (!context.recipes) {
        respond(Response::json(recipeListText({})));
        return;
    }
    context.slowly(respond, [folder = context.recipes->folder()] {
        return Response::json(recipeListText(folder.list()));
    });
}

void showRecipe(const ApiContext& context, const Request& request, const Responder& respond)
{
    if (const std::optional<Recipe> recipe = recipeOf(context, request, respond))
        respond(Response::json(recipeText(*recipe)));
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
                const auto* failure = std::get_if<RecipeFailure>(&saved);
                const Response response = failure
                                              ? refusal(*failure)
                                              : Response::json(recipeText(std::get<Recipe>(saved)));
                recordEnd(context, record, failure ? failure->text : QString(),
                          [respond, response] { respond(response); });
            });
    });
}

void removeRecipe(const ApiContext& context, const Request& request, const Responder& respond)
{
    if (!hasFolder(context, respond))
        return;
    const AuditRecord record = recordOf(context, request, "remove recipe", {}, nameOf(request));
    whenRecorded(context, record, respond, [context, request, record, respond] {
        const RecipeResult<bool> removed = context.recipes->remove(nameOf(request));
        const auto* failure = std::get_if<RecipeFailure>(&removed);
        const Response response = failure ? refusal(*failure) : Response::nothing();
        recordEnd(context, record, failure ? failure->text : QString(),
                  [respond, response] { respond(response); });
    });
}

void compareRecipe(const ApiContext& context, const Request& request, const Responder& respond)
{
    const std::optional<Recipe> recipe = recipeOf(context, request, respond);
    if (!recipe)
        return;
    const std::shared_ptr<RecipePlc> plc = plcOf(context, recipe->plc, request, respond);
    if (!plc)
        return;
    RecipeDesk::compare(
        *recipe, plc,
        [recipe = *recipe, respond](const RecipeResult<QVector<ComparedValue>>& compared) {
            respond(
                Response::json(comparisonText(recipe, std::get<QVector<ComparedValue>>(compared))));
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

void restoreRecipe(const ApiContext& context, const Request& request, const Responder& respond)
{
    const Expected<exchange::FlatJson> json = exchange::parseFlatJson(request.body);
    const QString* const id = json ? json->text("id") : nullptr;
    if (!id)
        return respond(badRequest(QStringLiteral("\"id\": a text is expected")));
    // Who asks again is told what was done, and nothing is done, also when the recipe is gone.
    const auto repeat = [respond](const RecipeResult<RestoreReport>& restored) {
        respond(restoreResponse(restored));
    };
    if (context.recipes && context.recipes->repeat(*id, nameOf(request), repeat))
        return;
    const std::optional<Recipe> recipe = recipeOf(context, request, respond);
    if (!recipe)
        return;
    const std::shared_ptr<RecipePlc> plc =
        plcOf(context, recipe->plc, request, respond, writeIds(*id));
    AuditRecord record = recordOf(context, request, "restore recipe", recipe->plc, nameOf(request));
    record.id = *id;
    if (!plc)
        return;
    const auto finish = [context, record, respond](const RecipeResult<RestoreReport>& restored) {
        recordRestore(context, record, restored,
                      [respond, response = restoreResponse(restored)] { respond(response); });
    };
    context.recipes->restore(
        *id, *recipe, plc, finish, [context, record](RecipeDesk::Permitted permitted) {
            context.audit(record, [permitted = std::move(permitted)](const Expected<void>& isKept) {
                permitted(isKept ? QString()
                                 : QStringLiteral("the audit cannot be written: %1")
                                       .arg(isKept.error().text));
            });
        });
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

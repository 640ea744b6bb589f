#include "exchange/flat_json.h"
#include "panel/api/api_routes.h"
#include "panel/api/json_text.h"
#include "panel/api/plant_recipe.h"
#include "panel/recipes/recipe_desk.h"
#include "values/nearest_name.h"

namespace plc::panel {
namespace {

Response failureResponse(const RecipeFailure& failure)
{
    constexpr int kStatus[] = {400, 404, 409, 503, 500};
    return Response::error(kStatus[failure.kind], failure.text);
}

QByteArray contentText(const RecipeContent& content)
{
    host::DataPoint point;
    point.type = content.type.type;
    point.elements = content.type.elements;
    return valueText(point, content.values);
}

void appendContent(const char* key, const std::optional<RecipeContent>& content, QByteArray* json)
{
    appendKey(key, json);
    json->append(content ? contentText(*content) : QByteArray("null"));
}

void appendTruth(const char* key, const std::optional<bool>& truth, QByteArray* json)
{
    appendKey(key, json);
    json->append(!truth ? "null" : *truth ? "true" : "false");
}

QByteArray recipeText(const Recipe& recipe)
{
    QByteArray json = "{";
    appendMember("name", recipe.name, &json);
    appendMember("plc", recipe.plc, &json);
    appendMember("savedAt", recipe.savedAt, &json);
    appendMember("savedBy", recipe.savedBy, &json);
    json.append(",\"values\":[");
    for (const RecipeEntry& entry : recipe.entries) {
        json.append(json.endsWith('[') ? "{" : ",{");
        appendMember("label", entry.label, &json);
        appendMember("type", recipeTypeText(entry.content.type), &json);
        appendContent("value", entry.content, &json);
        json.append('}');
    }
    return json.append("]}\n");
}

QByteArray comparisonText(const QVector<ComparedValue>& values)
{
    QByteArray json = "{\"values\":[";
    for (const ComparedValue& value : values) {
        json.append(json.endsWith('[') ? "{" : ",{");
        appendMember("label", value.label, &json);
        appendContent("saved", value.saved, &json);
        appendContent("now", value.now, &json);
        appendTruth("equal", value.isEqual, &json);
        appendMember("reason", value.reason, &json);
        json.append('}');
    }
    return json.append("]}\n");
}

QByteArray reportText(const RestoreReport& report)
{
    QByteArray json = "{";
    appendMember("id", report.id, &json);
    appendMember("recipe", report.recipe, &json);
    appendMember("plc", report.plc, &json);
    json.append(",\"values\":[");
    for (const RestoredValue& value : report.values) {
        json.append(json.endsWith('[') ? "{" : ",{");
        appendMember("label", value.label, &json);
        appendContent("saved", value.saved, &json);
        appendContent("before", value.before, &json);
        appendContent("after", value.after, &json);
        appendMember("outcome",
                     value.isEqual ? QStringLiteral("equal") : recipeOutcomeText(value.outcome),
                     &json);
        appendMember("reason", value.reason, &json);
        appendTruth("verified", value.isVerified, &json);
        json.append('}');
    }
    json.append(']');
    appendMember("written", report.written, &json);
    appendMember("equal", report.equal, &json);
    appendMember("notWritten", report.notWritten, &json);
    appendMember("notKnown", report.notKnown, &json);
    return json.append("}\n");
}

/// What a recipe is to be sent to or read from; null, and answered, where it is not there.
std::shared_ptr<RecipePlc> plcOf(const ApiContext& context, const Request& request,
                                 const QString& plc, const QString& id, const Responder& respond)
{
    Plant* const plant = context.plants->find(plc);
    if (!plant) {
        respond(notFound(QStringLiteral("there is no PLC %1").arg(values::quoted(plc))));
        return nullptr;
    }
    WriteRequest pattern;
    pattern.id = id;
    pattern.user = request.caller.user;
    pattern.address = request.caller.address;
    return std::make_shared<PlantRecipe>(plant, context.writes, pattern);
}

void listRecipes(const ApiContext& context, const Request&, const Responder& respond)
{
    QByteArray json = "{\"recipes\":[";
    for (const RecipeSummary& recipe : context.recipes->folder().list()) {
        json.append(json.endsWith('[') ? "{" : ",{");
        appendMember("name", recipe.name, &json);
        appendMember("plc", recipe.plc, &json);
        appendMember("values", recipe.values, &json);
        appendMember("savedAt", recipe.savedAt, &json);
        appendMember("savedBy", recipe.savedBy, &json);
        if (!recipe.error.isEmpty())
            appendMember("error", recipe.error, &json);
        json.append('}');
    }
    respond(Response::json(json.append("]}\n")));
}

/// The recipe of the path; nothing, and answered, where it is not there.
std::optional<Recipe> recipeOf(const ApiContext& context, const Request& request,
                               const Responder& respond)
{
    const RecipeResult<Recipe> found =
        context.recipes->find(request.parameters.value(QStringLiteral("name")));
    if (const Recipe* recipe = std::get_if<Recipe>(&found))
        return *recipe;
    respond(failureResponse(std::get<RecipeFailure>(found)));
    return {};
}

void showRecipe(const ApiContext& context, const Request& request, const Responder& respond)
{
    if (const std::optional<Recipe> recipe = recipeOf(context, request, respond))
        respond(Response::json(recipeText(*recipe)));
}

/// What changes on disk alone; a restore's writes have records of their own.
bool auditChange(const ApiContext& context, const Request& request, const QString& action,
                 const QString& plc)
{
    AuditRecord record;
    record.time = context.time();
    record.action = action;
    record.user = request.caller.user;
    record.address = request.caller.address;
    record.plc = plc;
    record.newValue = request.parameters.value(QStringLiteral("name"));
    return bool(context.audit(record));
}

void saveRecipe(const ApiContext& context, const Request& request, const Responder& respond)
{
    const Expected<exchange::FlatJson> json = exchange::parseFlatJson(request.body);
    const exchange::JsonItem* plc = json ? json->member("plc") : nullptr;
    const exchange::JsonItem* labels = json ? json->member("labels") : nullptr;
    RecipeDesk::SaveOrder order;
    bool isGood = plc && labels && labels->isList && plc->values.size() == 1;
    if (isGood) {
        for (const values::Value& label : labels->values) {
            const QString* text = std::get_if<QString>(&label);
            isGood = isGood && text;
            order.labels.append(text ? *text : QString());
        }
        const QString* name = std::get_if<QString>(&plc->values.first());
        isGood = isGood && name;
        order.plc = name ? *name : QString();
    }
    if (!isGood) {
        respond(badRequest(QStringLiteral("\"plc\" and a list \"labels\" are expected")));
        return;
    }
    order.name = request.parameters.value(QStringLiteral("name"));
    order.user = request.caller.user;
    order.time = context.time();
    std::shared_ptr<RecipePlc> target = plcOf(context, request, order.plc, order.name, respond);
    if (!target)
        return;
    if (!auditChange(context, request, QStringLiteral("recipe"), order.plc)) {
        respond(Response::error(503, QStringLiteral("the audit cannot be written")));
        return;
    }
    context.recipes->save(order, target, [respond](const RecipeResult<Recipe>& result) {
        const Recipe* recipe = std::get_if<Recipe>(&result);
        respond(recipe ? Response::json(recipeText(*recipe))
                       : failureResponse(std::get<RecipeFailure>(result)));
    });
}

void removeRecipe(const ApiContext& context, const Request& request, const Responder& respond)
{
    if (!auditChange(context, request, QStringLiteral("recipe removed"), QString())) {
        respond(Response::error(503, QStringLiteral("the audit cannot be written")));
        return;
    }
    const RecipeResult<bool> removed =
        context.recipes->remove(request.parameters.value(QStringLiteral("name")));
    const RecipeFailure* failure = std::get_if<RecipeFailure>(&removed);
    respond(failure ? failureResponse(*failure) : Response::nothing());
}

void compareRecipe(const ApiContext& context, const Request& request, const Responder& respond)
{
    const std::optional<Recipe> recipe = recipeOf(context, request, respond);
    if (!recipe)
        return;
    const auto target = plcOf(context, request, recipe->plc, recipe->name, respond);
    if (!target)
        return;
    RecipeDesk::compare(*recipe, target,
                        [respond](const RecipeResult<QVector<ComparedValue>>& result) {
                            const auto* values = std::get_if<QVector<ComparedValue>>(&result);
                            respond(values ? Response::json(comparisonText(*values))
                                           : failureResponse(std::get<RecipeFailure>(result)));
                        });
}

void restoreRecipe(const ApiContext& context, const Request& request, const Responder& respond)
{
    const Expected<exchange::FlatJson> json = exchange::parseFlatJson(request.body);
    const exchange::JsonItem* item = json ? json->member("id") : nullptr;
    const QString* id = item && !item->isList && item->values.size() == 1
                            ? std::get_if<QString>(&item->values.first())
                            : nullptr;
    constexpr int kLongestId = 50;
    if (!id || id->isEmpty() || id->size() > kLongestId) {
        respond(badRequest(
            QStringLiteral("\"id\": a text of 1 to %1 characters is expected").arg(kLongestId)));
        return;
    }
    const std::optional<Recipe> recipe = recipeOf(context, request, respond);
    if (!recipe)
        return;
    const auto target = plcOf(context, request, recipe->plc, *id, respond);
    if (!target)
        return;
    context.recipes->restore(*id, *recipe, target,
                             [respond](const RecipeResult<RestoreReport>& result) {
                                 const auto* report = std::get_if<RestoreReport>(&result);
                                 respond(report ? Response::json(reportText(*report))
                                                : failureResponse(std::get<RecipeFailure>(result)));
                             });
}

} // namespace

QVector<Route> recipeRoutes(const ApiContext& context)
{
    if (!context.recipes)
        return {};
    return {
        {Method::Get, "/api/v1/recipes", Role::Viewer, Route::Reads, "Saved sets of values",
         onPlants(context, &listRecipes)},
        {Method::Get, "/api/v1/recipes/{name}", Role::Viewer, Route::Reads, "One of them",
         onPlants(context, &showRecipe)},
        {Method::Put, "/api/v1/recipes/{name}", Role::Engineer, Route::Changes,
         "Read values from a PLC and save them", onPlants(context, &saveRecipe)},
        {Method::Delete, "/api/v1/recipes/{name}", Role::Engineer, Route::Changes,
         "Remove a saved set", onPlants(context, &removeRecipe)},
        {Method::Get, "/api/v1/recipes/{name}/comparison", Role::Viewer, Route::Reads,
         "Compare with what the PLC has now", onPlants(context, &compareRecipe)},
        {Method::Post, "/api/v1/recipes/{name}/restore", Role::Operator, Route::Changes,
         "Write what differs, and read it back", onPlants(context, &restoreRecipe)},
    };
}

} // namespace plc::panel

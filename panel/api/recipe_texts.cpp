#include "panel/api/recipe_texts.h"

#include "panel/api/json_text.h"

namespace plc::panel {
namespace {

void appendContent(const char* key, const std::optional<RecipeContent>& content, QByteArray* json)
{
    appendKey(key, json);
    if (!content) {
        json->append("null");
        return;
    }
    host::DataPoint point;
    point.type = content->type.type;
    point.stringLength = content->type.stringLength;
    point.elements = content->type.elements;
    json->append(valueText(point, content->values));
}

/// What both the list and a recipe itself have, without the values.
void appendHead(const QString& name, const QString& plc, qint64 savedAt, const QString& savedBy,
                QByteArray* json)
{
    appendMember("name", name, json);
    appendMember("plc", plc, json);
    appendKey("savedAt", json);
    appendTime(savedAt, json);
    appendMember("savedBy", savedBy, json);
}

void separate(QByteArray* json)
{
    json->append(json->endsWith('[') ? "{" : ",{");
}

void appendRestored(const RestoredValue& value, QByteArray* json)
{
    separate(json);
    appendMember("label", value.label, json);
    appendMember("type", QLatin1String(value.saved.type.type->name), json);
    appendContent("saved", value.saved, json);
    appendContent("before", value.before, json);
    appendContent("after", value.after, json);
    appendMember("outcome", recipeOutcomeText(value.outcome), json);
    appendMember("reason", value.reason, json);
    appendTruth("equal", value.isEqual, json);
    appendTruth("verified", value.isVerified, json);
    json->append('}');
}

} // namespace

QByteArray recipeListText(const QVector<RecipeSummary>& recipes)
{
    QByteArray json = "{\"recipes\":[";
    for (const RecipeSummary& recipe : recipes) {
        separate(&json);
        appendHead(recipe.name, recipe.plc, recipe.savedAt, recipe.savedBy, &json);
        appendMember("values", recipe.values, &json);
        if (!recipe.error.isEmpty())
            appendMember("error", recipe.error, &json);
        json.append('}');
    }
    return json.append("]}\n");
}

QByteArray recipeText(const Recipe& recipe)
{
    QByteArray json = "{";
    appendHead(recipe.name, recipe.plc, recipe.savedAt, recipe.savedBy, &json);
    json.append(",\"values\":[");
    for (const RecipeEntry& entry : recipe.entries) {
        separate(&json);
        appendMember("label", entry.label, &json);
        appendMember("type", QLatin1String(entry.content.type.type->name), &json);
        appendContent("saved", entry.content, &json);
        json.append('}');
    }
    return json.append("]}\n");
}

QByteArray comparisonText(const Recipe& recipe, const QVector<ComparedValue>& values)
{
    QByteArray json = "{";
    appendHead(recipe.name, recipe.plc, recipe.savedAt, recipe.savedBy, &json);
    json.append(",\"values\":[");
    for (const ComparedValue& value : values) {
        separate(&json);
        appendMember("label", value.label, &json);
        appendMember("type", QLatin1String(value.saved.type.type->name), &json);
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
    appendMember("written", report.written, &json);
    appendMember("equal", report.equal, &json);
    appendMember("notWritten", report.notWritten, &json);
    appendMember("notKnown", report.notKnown, &json);
    json.append(",\"values\":[");
    for (const RestoredValue& value : report.values)
        appendRestored(value, &json);
    return json.append("]}\n");
}

} // namespace plc::panel

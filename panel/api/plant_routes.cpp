#include "exchange/shown_unit.h"
#include "panel/api/api_routes.h"
#include "panel/api/json_text.h"
#include "panel/api/link_json.h"
#include "panel/api/symbol_list.h"
#include "panel/api/value_reads.h"
#include "project/symbol_tree.h"
#include "values/nearest_name.h"

namespace plc::panel {
namespace {

constexpr int kUsualFound = 200;
constexpr int kMostFound = 2000;
constexpr int kMostAsked = 2000;

/// The PLC of the query; answers and gives null where there is none.
Plant* plantOf(const ApiContext& context, const Request& request, const Responder& respond)
{
    const std::optional<QString> name = request.first(QStringLiteral("plc"));
    if (!name && context.plants->size() == 1)
        return context.plants->begin()->get();
    if (!name) {
        respond(badRequest(QStringLiteral("\"plc\" is missing")));
        return nullptr;
    }
    Plant* const plant = context.plants->find(*name);
    if (!plant)
        respond(notFound(QStringLiteral("there is no PLC %1").arg(values::quoted(*name))));
    return plant;
}

void appendPlant(const Plant& plant, qint64 now, QByteArray* json)
{
    json->append('{');
    appendMember("name", plant.name(), json);
    appendMember("title", plant.project().name.isEmpty() ? plant.name() : plant.project().name,
                 json);
    appendMember("address", plant.address(), json);
    appendTruth("readOnly", plant.isReadOnly(), json);
    json->append(",\"link\":{");
    appendLinkMembers(plant.link(), now, json);
    json->append('}');
    appendMember("values", plant.wanted(), json);
    appendMember("passTime", plant.passTime(), json);
    json->append('}');
}

void listPlants(const ApiContext& context, const Request&, const Responder& respond)
{
    const qint64 now = context.time();
    QByteArray json = "{";
    appendMember("time", now, &json);
    json.append(",\"plcs\":[");
    for (const std::unique_ptr<Plant>& plant : *context.plants) {
        if (!json.endsWith('['))
            json.append(',');
        appendPlant(*plant, now, &json);
    }
    respond(Response::json(json.append("]}\n")));
}

/// What is asked of the symbols of a PLC, for any thread: what it shares with the PLC never
/// changes.
struct SymbolQuestion {
    project::Symbols symbols;
    std::shared_ptr<const WriteRules> writable; ///< Null: nothing may be written.
    std::optional<QString> search;
    QString under;
    int most = kUsualFound; ///< Of a search.
};

void appendSymbol(const SymbolQuestion& question, const ListedSymbol& symbol, QByteArray* json)
{
    host::DataPoint named; // rules look at no more of it
    named.text = symbol.label;
    const bool isWritable = symbol.kind == ListedSymbol::Value && question.writable &&
                            question.writable->isWritable(named);
    json->append(json->endsWith('[') ? "{" : ",{");
    appendMember("name", symbol.name, json);
    appendMember("label", symbol.label, json);
    appendMember("kind", QLatin1String(kindWord(symbol.kind)), json);
    appendMember("type", symbol.type, json);
    appendMember("unit", symbol.unit, json);
    appendMember("description", symbol.description, json);
    appendMember("children", symbol.children, json);
    json->append(",\"writable\":").append(isWritable ? "true}" : "false}");
}

Response symbolResponse(const SymbolQuestion& question)
{
    const Expected<SymbolList> list =
        question.search ? searchSymbols(*question.search, question.most, question.symbols)
                        : symbolsUnder(question.under, question.symbols);
    if (!list)
        return notFound(list.error().text);
    QByteArray json = "{";
    appendMember("under", question.under, &json);
    appendTruth("complete", list->isComplete, &json);
    json.append(",\"symbols\":[");
    for (const ListedSymbol& symbol : list->symbols)
        appendSymbol(question, symbol, &json);
    return Response::json(json.append("]}\n"));
}

/// A search goes through many symbols, for which no PLC waits.
void listSymbols(const ApiContext& context, const Request& request, const Responder& respond)
{
    const Plant* const plant = plantOf(context, request, respond);
    if (!plant)
        return;
    SymbolQuestion question;
    question.symbols = plant->project();
    question.writable = plant->writable();
    question.search = request.first(QStringLiteral("search"));
    question.under = request.first(QStringLiteral("under")).value_or(QString());
    bool ok = true;
    if (const std::optional<QString> limit = request.first(QStringLiteral("limit")))
        question.most = limit->toInt(&ok);
    if (question.search && (!ok || question.most < 1 || question.most > kMostFound)) {
        respond(badRequest(
            QStringLiteral("\"limit\": a number from 1 to %1 is expected").arg(kMostFound)));
        return;
    }
    context.slowly(respond, [question] { return symbolResponse(question); });
}

void appendFound(const QString& plc, const FoundValue& found, QByteArray* json)
{
    json->append(json->endsWith('[') ? "{" : ",{");
    appendMember("plc", plc, json);
    appendMember("label", found.label, json);
    json->append(",\"value\":");
    if (found.error.isEmpty())
        appendValue(found.point, found.value.bytes, json);
    else
        json->append("null");
    appendMember("quality", QLatin1String(qualityWord(found.value.quality)), json);
    json->append(",\"time\":");
    appendTime(found.value.time, json);
    if (found.error.isEmpty()) {
        appendMember("type", QLatin1String(found.point.type->name), json);
        appendMember("unit", exchange::shownUnit(found.point), json);
    } else {
        appendMember("error", found.error, json);
    }
    json->append('}');
}

void readSomeValues(const ApiContext& context, const Request& request, const Responder& respond)
{
    Plant* const plant = plantOf(context, request, respond);
    if (!plant)
        return;
    const QStringList labels = request.all(QStringLiteral("label"));
    if (labels.isEmpty() || labels.size() > kMostAsked) {
        respond(badRequest(QStringLiteral("1 to %1 times \"label\" is expected").arg(kMostAsked)));
        return;
    }
    const QString name = plant->name();
    readValues(plant, labels, context.time,
               [time = context.time, name, respond](const QVector<FoundValue>& found) {
                   QByteArray json = "{";
                   appendMember("time", time(), &json);
                   json.append(",\"values\":[");
                   for (const FoundValue& each : found)
                       appendFound(name, each, &json);
                   respond(Response::json(json.append("]}\n")));
               });
}

} // namespace

QVector<Route> plantRoutes(const ApiContext& context)
{
    return {
        {Method::Get, "/api/v1/plcs", Role::Viewer, Route::Reads, "PLCs and their links",
         onPlants(context, &listPlants)},
        {Method::Get, "/api/v1/symbols", Role::Viewer, Route::Reads,
         "Symbols below a label, or found by words", onPlants(context, &listSymbols)},
        {Method::Get, "/api/v1/values", Role::Viewer, Route::Reads,
         "Values now; those that are not read all the time are read once",
         onPlants(context, &readSomeValues)},
    };
}

} // namespace plc::panel

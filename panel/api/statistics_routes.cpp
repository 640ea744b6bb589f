#include "panel/api/api_routes.h"
#include "panel/api/json_text.h"
#include "panel/plants/value_recorder.h"
#include "recorder/handover.h"
#include "service/process_usage.h"
#include "values/prometheus_label.h"

namespace plc::panel {
namespace {

void appendPlant(const Plant& plant, QByteArray* json)
{
    const host::TrafficCounters& traffic = plant.counters();
    json->append('{');
    appendMember("name", plant.name(), json);
    appendMember("requests", qint64(traffic.requests), json);
    appendMember("accepted", qint64(traffic.accepted), json);
    appendMember("refused", qint64(traffic.refused), json);
    appendMember("linkLosses", qint64(traffic.linkLosses), json);
    appendMember("values", plant.wanted(), json);
    appendMember("passTime", plant.passTime(), json);
    json->append('}');
}

void appendServer(const ServerStatistics& server, QByteArray* json)
{
    json->append(",\"server\":{");
    appendMember("connections", server.connections, json);
    appendMember("streams", server.streams, json);
    appendMember("requests", server.requests, json);
    appendMember("refused", server.refused, json);
    appendMember("cutOff", server.cutOff, json);
    json->append('}');
}

void appendRecorder(const std::optional<recorder::RecorderStatus>& status, QByteArray* json)
{
    if (!status) {
        json->append(",\"recorder\":null");
        return;
    }
    json->append(",\"recorder\":{");
    appendMember("recorded", status->recorded, json);
    appendMember("waiting", status->waiting, json);
    appendMember("dropped", status->dropped, json);
    appendMember("bytes", status->usedBytes, json);
    appendMember("changedFiles", status->changedFiles, json);
    appendMember("error", status->error, json);
    json->append('}');
}

void showStatistics(const ApiContext& context, const Request&, const Responder& respond)
{
    QByteArray json = "{";
    appendMember("time", context.time(), &json);
    appendMember("memory", service::processUsage().residentBytes, &json);
    json.append(",\"plcs\":[");
    for (const std::unique_ptr<Plant>& plant : *context.plants) {
        if (!json.endsWith('['))
            json.append(',');
        appendPlant(*plant, &json);
    }
    json.append("],\"writes\":{");
    for (const WriteOutcome::Kind kind :
         {WriteOutcome::Done, WriteOutcome::Refused, WriteOutcome::Unknown, WriteOutcome::NotSent})
        appendMember(outcomeWord(kind), qint64(context.writes->count(kind)), &json);
    json.append('}');
    appendServer(context.server(), &json);
    appendRecorder(context.recorder(), &json);
    respond(Response::json(json.append("}\n")));
}

/// The values that are read always, and whether their PLCs are there.
void showMetrics(const ApiContext& context, const Request&, const Responder& respond)
{
    QVector<recorder::LastValue> values;
    QByteArray links = "# HELP plc_up 1 while there is a link to the PLC.\n# TYPE plc_up gauge\n";
    for (const std::unique_ptr<Plant>& plant : *context.plants) {
        const bool isUp = plant->link().state == PlcLink::Up;
        links += "plc_up{source=\"" + values::prometheusLabel(plant->name()) + "\"} " +
                 (isUp ? "1\n" : "0\n");
        for (int slot : plant->recorded()) {
            const LiveValue& value = plant->value(slot);
            recorder::LastValue last;
            last.series = recorder::describe(plant->point(slot), plant->name());
            last.sample.time = value.time;
            last.sample.quality = recordedQuality(value.quality);
            last.sample.bytes = value.bytes;
            values.append(last);
        }
    }
    Response response;
    response.contentType = "text/plain; version=0.0.4; charset=utf-8";
    response.body = links + recorder::expositionText(values, nullptr);
    respond(response);
}

} // namespace

QVector<Route> statisticsRoutes(const ApiContext& context)
{
    return {
        {Method::Get, "/api/v1/statistics", Role::Viewer, Route::Reads,
         "Figures of links, recorder, streams and memory", onPlants(context, &showStatistics)},
        {Method::Get, "/metrics", Role::Viewer, Route::Reads,
         "Figures and last values for Prometheus", onPlants(context, &showMetrics)},
    };
}

} // namespace plc::panel

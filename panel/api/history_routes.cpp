#include "panel/api/api_routes.h"
#include "panel/api/history_queries.h"
#include "panel/api/query_numbers.h"

namespace plc::panel {
namespace {

constexpr int kUsualPoints = 2000;
constexpr int kMostPoints = 20000;
constexpr int kMostSeries = 1000;

/// A time of the query that must be there.
Expected<qint64> requiredTime(const Request& request, const char* name)
{
    if (!request.first(QLatin1String(name)))
        return Error{QStringLiteral("\"%1\": a number of milliseconds since 1970 is expected")
                         .arg(QLatin1String(name))};
    return timeOf(request, name, 0);
}

/// What the PLCs have, by their names. It never changes, and is shared with other threads.
using Programs = QMap<QString, project::Symbols>;

Programs programsOf(const Plants* plants)
{
    Programs programs;
    if (!plants)
        return programs;
    for (const std::unique_ptr<Plant>& plant : *plants)
        programs.insert(plant->name(), plant->project());
    return programs;
}

Expected<AskedLabels> labelsOf(const Request& request, const Programs& programs)
{
    AskedLabels asked;
    const std::optional<QString> plc = request.first(QStringLiteral("plc"));
    asked.plc = plc.value_or(QString()); // empty: of what was recorded without the name of a PLC
    asked.labels = request.all(QStringLiteral("label"));
    if (!plc || asked.labels.isEmpty() || asked.labels.size() > kMostSeries)
        return Error{
            QStringLiteral("\"plc\" and 1 to %1 times \"label\" are expected").arg(kMostSeries)};
    asked.plcs = programs.keys();
    if (const auto program = programs.constFind(asked.plc); program != programs.constEnd())
        asked.program = *program;
    return asked;
}

Expected<HistoryQuestion> questionOf(const Request& request, const Programs& programs)
{
    HistoryQuestion question;
    const Expected<qint64> from = requiredTime(request, "from");
    const Expected<qint64> to = requiredTime(request, "to");
    if (!from)
        return from.error();
    if (!to)
        return to.error();
    if (*to <= *from)
        return Error{QStringLiteral("\"to\" has to be behind \"from\"")};
    question.from = *from;
    question.to = *to;
    const Expected<AskedLabels> asked = labelsOf(request, programs);
    if (!asked)
        return asked.error();
    question.asked = *asked;
    const Expected<qint64> points = numberOf(request, "points", kUsualPoints, 1, kMostPoints);
    if (!points)
        return points.error();
    question.points = int(*points);
    return question;
}

using Query = void (HistoryQueries::*)(const HistoryQuestion&, const Responder&);

Route historyRoute(const ApiContext& context, const char* pattern, const char* summary, Query query)
{
    Route route{Method::Get, pattern, Role::Viewer, Route::Reads, summary, {}};
    route.handler = [context, query, programs = programsOf(context.plants)](
                        const Request& request, const Responder& respond) {
        const Expected<HistoryQuestion> question = questionOf(request, programs);
        if (!question)
            respond(badRequest(question.error().text));
        else if (!context.history)
            respond(notFound(QStringLiteral("nothing is recorded here; see --record")));
        else
            (context.history->*query)(*question, respond);
    };
    return route;
}

} // namespace

QVector<Route> historyRoutes(const ApiContext& context)
{
    return {historyRoute(context, "/api/v1/history",
                         "What values were: their changes, or averages weighted by time",
                         &HistoryQueries::readSeries),
            historyRoute(context, "/api/v1/history.csv", "Each change as CSV",
                         &HistoryQueries::readCsv)};
}

} // namespace plc::panel

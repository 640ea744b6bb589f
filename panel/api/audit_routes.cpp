#include "panel/access/audit_reading.h"
#include "panel/api/api_routes.h"
#include "panel/api/json_text.h"

namespace plc::panel {
namespace {

constexpr int kUsualLines = 200;

Response auditResponse(const QString& file, qint64 from, int limit)
{
    const Expected<AuditPage> page = readAudit(file, from, limit);
    if (!page)
        return Response::error(503, page.error().text);
    const AuditVerification& verified = page->verification;
    QByteArray json = "{";
    appendMember("total", verified.lines, &json);
    appendTruth("intact", verified.flaw == AuditVerification::None, &json);
    appendMember("flaw", verified.sentence, &json);
    appendMember("head", QString::fromLatin1(verified.head), &json);
    json.append(",\"lines\":[");
    for (const QByteArray& line : page->lines) {
        if (!json.endsWith('['))
            json.append(',');
        // A line that was altered need not be JSON any more.
        appendText(QString::fromUtf8(line), &json);
    }
    return Response::json(json.append("]}\n"));
}

} // namespace

QVector<Route> auditRoutes(const ApiContext& context)
{
    Route route{Method::Get,
                "/api/v1/audit",
                Role::Engineer,
                Route::Reads,
                "Who wrote what, and whether that was altered",
                {}};
    route.handler = [context](const Request& request, const Responder& respond) {
        bool isFrom = true;
        bool isLimit = true;
        const std::optional<QString> from = request.first(QStringLiteral("from"));
        const std::optional<QString> limit = request.first(QStringLiteral("limit"));
        const qint64 first = from ? from->toLongLong(&isFrom, 10) : -kUsualLines;
        const int most = limit ? limit->toInt(&isLimit, 10) : kUsualLines;
        if (!isFrom || !isLimit || most < 1 || most > kMostAuditLines) {
            respond(badRequest(QStringLiteral("\"from\" counts lines, \"limit\" is from 1 to %1")
                                   .arg(kMostAuditLines)));
        } else if (context.auditFile.isEmpty()) {
            respond(notFound(QStringLiteral("there is no audit; see --audit")));
        } else {
            context.slowly(respond, [file = context.auditFile, first, most] {
                return auditResponse(file, first, most);
            });
        }
    };
    return {route};
}

} // namespace plc::panel

#include "panel/access/role_name.h"
#include "panel/api/api_routes.h"
#include "panel/api/audited.h"
#include "panel/api/json_text.h"
#include "panel/api/request_bodies.h"

namespace plc::panel {
namespace {

/// Bytes: whoever comes may send one.
constexpr int kLongestLogin = 4096;

void appendTextOrNull(const char* key, const QString& text, QByteArray* json)
{
    if (!text.isEmpty())
        appendMember(key, text, json);
    else
        json->append(",\"").append(key).append("\":null");
}

QByteArray sessionText(const ApiContext& context, const Caller& caller)
{
    QByteArray json = "{";
    appendMember("time", context.time(), &json);
    appendTextOrNull("user", caller.user, &json);
    appendTextOrNull("role", roleName(caller.role), &json);
    appendTruth("loginRequired", context.access->isLoginRequired(), &json);
    appendTruth("readOnly", context.isReadOnly, &json);
    appendTruth("audit", !context.auditFile.isEmpty(), &json);
    appendMember("version", context.version, &json);
    appendMember("instance", QString::fromLatin1(context.instance), &json);
    return json;
}

Response loginResponse(const ApiContext& context, const LoginResult& result)
{
    if (result.kind == LoginResult::Wrong)
        return Response::error(401, QStringLiteral("the user or the password is wrong"));
    if (result.kind == LoginResult::TooOften) {
        Response response =
            Response::error(429, QStringLiteral("too many attempts; wait a little"));
        response.addHeader("Retry-After", QByteArray::number((result.wait + 999) / 1000));
        return response;
    }
    QByteArray json = sessionText(context, result.caller);
    appendMember("token", QString::fromLatin1(result.token), &json);
    Response response = Response::json(json.append("}\n"));
    response.addHeader("Set-Cookie", context.access->cookie(result.token));
    return response;
}

/// What is recorded is on the disk before the answer goes. A disk that takes none keeps nobody from
/// looking.
void answerLogin(const ApiContext& context, const LoginResult& result, const QString& user,
                 const QString& address, const Responder& respond)
{
    std::optional<AuditRecord> record =
        context.logins->attempted(user, address, result, values::steadyTime());
    if (!record) {
        respond(loginResponse(context, result));
        return;
    }
    record->time = context.time();
    context.post([context, result, record = *record, respond] {
        context.audit(record, [context, result, respond](const Expected<void>&) {
            respond(loginResponse(context, result));
        });
    });
}

void logIn(const ApiContext& context, const Request& request, const Responder& respond)
{
    const Expected<Login> login = readLogin(request.body);
    if (!login) {
        respond(badRequest(login.error().text));
        return;
    }
    if (!context.access->isLoginRequired()) {
        respond(badRequest(QStringLiteral("this panel has no users")));
        return;
    }
    const QString address = request.caller.address;
    context.access->login(
        login->user, login->password, address,
        [context, respond, name = login->user, address](const LoginResult& result) {
            answerLogin(context, result, name, address, respond);
        });
}

void logOut(const ApiContext& context, const Request& request, const Responder& respond)
{
    Response response = Response::nothing();
    response.addHeader("Set-Cookie", context.access->clearedCookie());
    if (!context.access->logout(request.caller)) {
        respond(response);
        return;
    }
    context.post([context, request, respond, response] {
        recordEnd(context, recordOf(context, request, "logout", {}, {}), {},
                  [respond, response] { respond(response); });
    });
}

} // namespace

QVector<Route> sessionRoutes(const ApiContext& context)
{
    Route show{Method::Get,
               "/api/v1/session",
               Role::None,
               Route::Reads,
               "Who the caller is, and what he may do",
               {}};
    show.handler = [context](const Request& request, const Responder& respond) {
        respond(Response::json(sessionText(context, request.caller) + "}\n"));
    };
    Route open{Method::Post, "/api/v1/session", Role::None, Route::Reads, "Log in", {}};
    open.mostBodyBytes = kLongestLogin;
    open.handler = [context](const Request& request, const Responder& respond) {
        logIn(context, request, respond);
    };
    Route close{Method::Delete, "/api/v1/session", Role::Viewer, Route::Reads, "Log out", {}};
    close.handler = [context](const Request& request, const Responder& respond) {
        logOut(context, request, respond);
    };
    return {show, open, close};
}

} // namespace plc::panel

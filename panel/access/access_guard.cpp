#include "panel/access/access_guard.h"

#include "panel/access/role_name.h"

namespace plc::panel {
namespace {

constexpr int kUnsupportedMediaType = 415;

Response tooOften(qint64 wait)
{
    Response response = Response::error(429, QStringLiteral("too often; wait a little"));
    response.addHeader("Retry-After", QByteArray::number((wait + 999) / 1000));
    return response;
}

/// A page of another server, or a frame or a link in one, sends it.
bool isFromElsewhere(const QByteArray& fetchSite)
{
    return !fetchSite.isEmpty() && fetchSite != "same-origin" && fetchSite != "none";
}

} // namespace

Decision AccessGuard::decide(const RequestHead& head)
{
    Decision decision;
    if (!m_names.contains(head.host)) {
        decision.refusal = Response::error(
            421, QStringLiteral("this server does not go by the name of the request"));
        return decision;
    }
    // What is no route is told so by the server, to whoever asks.
    if (!head.route)
        return decision;
    decision.caller = m_access->identify(head.cookie, head.authorization, head.address);
    decision.refusal = refusal(head, decision.caller);
    return decision;
}

std::optional<Response> AccessGuard::refusal(const RequestHead& head, const Caller& caller)
{
    if (std::optional<Response> refused = checkSender(head))
        return refused;
    if (std::optional<Response> refused = checkInstance(head))
        return refused;
    if (std::optional<Response> refused = checkCaller(*head.route, caller))
        return refused;
    return checkChange(*head.route, caller);
}

/// Browsers send what any page tells them to, with the cookie of whoever sits before them. They do
/// say which page it was, and they ask first before they send JSON elsewhere.
std::optional<Response> AccessGuard::checkSender(const RequestHead& head) const
{
    const bool isGet = head.route->method == Method::Get;
    const bool isPage = isGet && head.route->least == Role::None;
    if (isFromElsewhere(head.fetchSite) && !isPage)
        return Response::error(403, QStringLiteral("a page of another server sends this"));
    if (isGet)
        return std::nullopt;
    if (!head.origin.isEmpty() && !isSameOrigin(head.origin, head.host, head.isEncrypted))
        return Response::error(403, QStringLiteral("a page of another server sends this"));
    if (head.hasBody && head.contentType != "application/json")
        return Response::error(kUnsupportedMediaType,
                               QStringLiteral("the body has to be application/json"));
    return std::nullopt;
}

/// Browsers repeat a request by themselves when a connection breaks before its answer. What another
/// run of the program was asked, and may have done, is not done once more.
std::optional<Response> AccessGuard::checkInstance(const RequestHead& head) const
{
    if (head.route->kind != Route::Changes || head.instance.isEmpty() ||
        head.instance == m_instance)
        return std::nullopt;
    return Response::error(
        412,
        QStringLiteral("the panel was started again meanwhile; whether it had carried this out "
                       "before is not known"));
}

std::optional<Response> AccessGuard::checkCaller(const Route& route, const Caller& caller) const
{
    if (caller.role >= route.least)
        return std::nullopt;
    if (caller.role != Role::None)
        return Response::error(403,
                               QStringLiteral("this takes the role %1 or more; %2 is %3")
                                   .arg(roleName(route.least), caller.user, roleName(caller.role)));
    Response response = Response::error(401, QStringLiteral("log in first"));
    response.addHeader("WWW-Authenticate", "Bearer");
    return response;
}

std::optional<Response> AccessGuard::checkChange(const Route& route, const Caller& caller)
{
    if (route.kind != Route::Changes)
        return std::nullopt;
    if (m_isReadOnly)
        return Response::error(403, QStringLiteral("nothing can be changed: read-only mode"));
    const qint64 wait = m_access->waitToChange(caller.address);
    return wait > 0 ? std::optional<Response>(tooOften(wait)) : std::nullopt;
}

} // namespace plc::panel

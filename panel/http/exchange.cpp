#include "panel/http/exchange.h"

#include <cstring>
#include <utility>

#include "panel/http/sent_response.h"
#include "panel/http/target.h"

namespace plc::panel {

namespace {

constexpr char kRetryAfter[] = "5"; // s
/// Bytes that are read of a body that is not taken.
constexpr qint64 kMostSkipped = qint64(16) * 1024 * 1024;

/// Answers 500 when the last of a handler's copies goes without an answer.
class Answer {
public:
    explicit Answer(std::weak_ptr<Exchange> exchange) : m_exchange(std::move(exchange)) {}
    ~Answer() { give(Response::error(500, QStringLiteral("the request was not carried out"))); }
    Answer(const Answer&) = delete;
    Answer& operator=(const Answer&) = delete;

    void give(Response response) const
    {
        if (const std::shared_ptr<Exchange> exchange = m_exchange.lock())
            exchange->give(std::move(response));
        else if (response.stream)
            response.stream->abandon();
    }

private:
    const std::weak_ptr<Exchange> m_exchange;
};

MHD_Result takeField(void* fields, MHD_ValueKind, const char* name, const char* value)
{
    static_cast<RequestFields*>(fields)->take(name, value);
    return MHD_YES;
}

} // namespace

Exchange::Exchange(ServerCore* core, std::shared_ptr<Connection> connection, MHD_Connection* handle,
                   const QByteArray& target)
    : m_core(core), m_connection(std::move(connection)), m_handle(handle), m_target(target)
{
}

MHD_Result Exchange::step(const char* version, const char* method, const char* upload,
                          std::size_t* uploadSize)
{
    if (!m_hasBegun) {
        m_takesChunks = std::strcmp(version, MHD_HTTP_VERSION_1_1) == 0;
        return begin(method);
    }
    if (*uploadSize > 0) {
        // By its fields it has no body: who reads them in two ways is not served.
        if (!m_hasBody)
            return MHD_NO;
        const std::size_t size = std::exchange(*uploadSize, 0);
        if (!m_late)
            receive(upload, int(size));
        return m_late ? skip(size) : MHD_YES;
    }
    if (!m_isDispatched)
        dispatch();
    return answerOrWait();
}

MHD_Result Exchange::begin(const QByteArray& method)
{
    m_hasBegun = true;
    ++m_core->requests;
    m_core->enter(m_connection.get(), Phase::Receiving);
    RequestFields fields;
    ::MHD_get_connection_values(m_handle, MHD_HEADER_KIND, &takeField, &fields);
    m_hasBody = fields.hasBody();
    std::optional<Response> refused = refusal(method, fields);
    if (!refused)
        return MHD_YES;
    if (!m_hasBody) {
        // An answer before the end of the request would cost the connection.
        m_isDispatched = true;
        give(std::move(*refused));
        return MHD_YES;
    }
    // What follows the head is not looked at, and must not be taken for the next request.
    m_connection->isSentTo = true;
    refused->addHeader("Connection", "close");
    return send(std::move(*refused));
}

std::optional<Response> Exchange::refusal(const QByteArray& method, const RequestFields& fields)
{
    if (std::optional<Response> refused = checkHead())
        return refused;
    if (std::optional<Response> refused = fields.refusal())
        return refused;
    if (std::optional<Response> refused = find(method, fields))
        return refused;
    if (std::optional<Response> refused = fields.bodyRefusal(mostBodyBytes()))
        return refused;
    return roomRefusal(fields.contentLength.toLongLong());
}

std::optional<Response> Exchange::checkHead() const
{
    const int most = m_core->settings().mostHeadBytes;
    if (m_target.size() > most)
        return Response::error(
            414, QStringLiteral("the target of the request has more than %1 bytes").arg(most));
    const MHD_ConnectionInfo* info =
        ::MHD_get_connection_info(m_handle, MHD_CONNECTION_INFO_REQUEST_HEADER_SIZE);
    if (!info || info->header_size > std::size_t(most))
        return Response::error(
            431, QStringLiteral("the head of the request has more than %1 bytes").arg(most));
    return std::nullopt;
}

/// The route, and whether the guard lets the caller through to it.
std::optional<Response> Exchange::find(const QByteArray& method, const RequestFields& fields)
{
    const std::optional<Target> target = parseTarget(m_target);
    if (target)
        m_match = m_core->routes().find(target->parts, findMethod(method));
    RequestHead head;
    head.route = m_match.route;
    head.host = fields.host;
    head.origin = fields.origin;
    head.fetchSite = fields.fetchSite;
    head.cookie = fields.cookie;
    head.authorization = fields.authorization;
    head.instance = fields.instance;
    head.contentType = fields.mediaType();
    head.hasBody = m_hasBody;
    head.address = m_connection->address;
    head.isEncrypted = m_connection->isEncrypted;
    Decision decision = m_core->decide(head);
    if (decision.refusal)
        return decision.refusal;
    if (!target)
        return Response::error(400, QStringLiteral("the path is malformed"));
    if (m_match.allowed.isEmpty())
        return Response::error(404, QStringLiteral("there is nothing of this name"));
    if (!m_match.route) {
        Response response =
            Response::error(405, QStringLiteral("this method is not for this path"));
        response.addHeader("Allow", m_match.allowed);
        return response;
    }
    m_request.method = m_match.route->method;
    m_request.path = target->path();
    m_request.parameters = m_match.parameters;
    m_request.query = target->query;
    m_request.contentType = head.contentType;
    m_request.ifNoneMatch = fields.ifNoneMatch;
    m_request.caller = decision.caller;
    return std::nullopt;
}

int Exchange::mostBodyBytes() const
{
    const int ofRoute = m_match.route->mostBodyBytes;
    return ofRoute > 0 ? ofRoute : m_core->settings().mostBodyBytes;
}

void Exchange::receive(const char* upload, int size)
{
    const int most = mostBodyBytes();
    if (size > most - int(m_request.body.size()))
        m_late = RequestFields::tooLong(most);
    else
        m_late = roomRefusal(size);
    if (m_late) {
        m_request.body = QByteArray();
        giveBack();
        return;
    }
    m_held += size;
    m_core->bytesOfBodies += size;
    m_request.body.append(upload, size);
}

/// Clients that have sent nothing yet hold no room: only what has come counts.
std::optional<Response> Exchange::roomRefusal(qint64 bytes) const
{
    if (bytes == 0 || bytes <= m_core->settings().mostBytesOfBodies - m_core->bytesOfBodies)
        return std::nullopt;
    Response refused = Response::error(
        503, QStringLiteral("too many long requests are under way; ask again later"));
    refused.addHeader("Retry-After", kRetryAfter);
    return refused;
}

/// Until the request is over its handler may hold the body.
void Exchange::giveBack()
{
    m_core->bytesOfBodies -= std::exchange(m_held, 0);
}

/// The library sends nothing before a body has ended. One that goes on for long has no answer.
MHD_Result Exchange::skip(std::size_t size)
{
    m_skipped += qint64(size);
    return m_skipped <= kMostSkipped ? MHD_YES : MHD_NO;
}

void Exchange::dispatch()
{
    m_isDispatched = true;
    if (m_late)
        return give(*std::move(m_late));
    m_core->enter(m_connection.get(), Phase::Answering);
    const auto answer = std::make_shared<Answer>(weak_from_this());
    m_core->handle(*m_match.route, m_request,
                   [answer](Response response) { answer->give(std::move(response)); });
    m_request = Request();
}

MHD_Result Exchange::answerOrWait()
{
    for (;;) {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_response)
                break;
        }
        if (m_connection->suspension->suspend())
            return MHD_YES;
        if (m_connection->suspension->hasEnded())
            return MHD_NO;
    }
    return send(std::move(*m_response));
}

void Exchange::give(Response response)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_isAnswered) {
            if (response.stream)
                response.stream->abandon();
            return;
        }
        m_isAnswered = true;
        m_response = std::move(response);
    }
    m_connection->suspension->wake();
}

void Exchange::complete()
{
    m_core->enter(m_connection.get(), Phase::Idle);
    giveBack();
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isAnswered = true;
    if (m_response && m_response->stream)
        m_response->stream->abandon();
}

MHD_Result Exchange::send(Response response)
{
    if (response.status >= 400)
        ++m_core->refused;
    if (response.stream)
        m_core->enterStreaming(m_connection.get(), response.stream);
    else
        m_core->enter(m_connection.get(), Phase::Sending);
    return sendResponse(m_handle, std::move(response), m_takesChunks, m_core, m_connection);
}

} // namespace plc::panel

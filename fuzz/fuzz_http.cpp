// What anyone can send to a panel: targets, fields of a head, hosts, origins, cookies, numbers of a
// query, bodies, and lines of an audit that somebody has changed, as far as our own code takes them
// apart.

#include <cctype>

#include "fuzz_input.h"
#include "panel/access/audit_chain.h"
#include "panel/access/request_origin.h"
#include "panel/access/request_token.h"
#include "panel/api/query_numbers.h"
#include "panel/api/request_bodies.h"
#include "panel/http/request_fields.h"
#include "panel/http/route_table.h"
#include "panel/http/target.h"
#include "promise.h"

namespace {

using plc::fuzz::FuzzInput;
using plc::fuzz::require;
using namespace plc::panel;

Route route(Method method, const char* pattern)
{
    return {method, pattern, Role::None, Route::Reads, "", [](const Request&, const Responder&) {}};
}

const RouteTable& routes()
{
    static const RouteTable kTable = *RouteTable::make(
        {route(Method::Get, "/"), route(Method::Get, "/api/v1/recipes/{name}"),
         route(Method::Put, "/api/v1/recipes/{name}"), route(Method::Get, "/api/v1/recipes/all"),
         route(Method::Post, "/api/v1/recipes/{name}/restore")});
    return kTable;
}

bool hasControl(const QString& text)
{
    for (const QChar character : text) {
        if (character.unicode() < 0x20 || character.unicode() == 0x7F)
            return true;
    }
    return false;
}

void checkTarget(const QByteArray& text)
{
    const std::optional<Target> target = parseTarget(text);
    if (!target)
        return;
    require(text.startsWith('/'), "a target is a path from the root");
    for (const QString& part : target->parts)
        require(!hasControl(part), "a path has no control characters");
    for (const auto& [name, value] : target->query)
        require(!hasControl(name) && !hasControl(value), "a query has no control characters");
    const RouteMatch match = routes().find(target->parts, Method::Get);
    require(!match.route || match.route->method == Method::Get, "a method leads to its own route");
    require(!match.route || match.allowed.contains("GET"), "what is found is allowed");
    for (const QString& value : match.parameters)
        require(target->parts.contains(value), "a parameter is a part of the path");
}

void checkSender(const QByteArray& host, const QByteArray& origin)
{
    const std::optional<HostAndPort> parsed = parseHost(host);
    require(!parsed || (parsed->port >= -1 && parsed->port <= 65535), "a port is a port");
    static const HostNames kNames({QStringLiteral("panel.example")});
    if (!kNames.contains(host))
        return;
    require(parsed.has_value(), "what is no host is no name of ours");
    if (!isSameOrigin(origin, host, true))
        return;
    require(origin.startsWith("https://"), "a page came over TLS");
    require(kNames.contains(origin.mid(8)), "a page is of a server of our name");
}

void checkToken(const QByteArray& cookie, const QByteArray& authorization)
{
    const QByteArray token = requestToken(cookieName(0), cookie, authorization);
    require(token.size() <= 128, "a token is short");
    for (const char character : token)
        require(std::isalnum(static_cast<unsigned char>(character)) || character == '-' ||
                    character == '_',
                "a token has no odd characters");
}

void checkAudit(FuzzInput* input, const QByteArray& bytes)
{
    const std::optional<AuditLink> changed = parseAuditLine(bytes);
    require(!changed || (changed->number >= 0 && changed->previous.size() == 64),
            "a line has a place in its chain");
    AuditRecord record;
    record.user = QString::fromUtf8(input->bytes(20));
    record.label = QString::fromUtf8(bytes);
    record.newValue = record.label;
    const QByteArray line = recordLine(record, 7, QByteArray(64, 'a'));
    require(!line.contains('\n'), "a record is a line");
    const std::optional<AuditLink> link = parseAuditLine(line);
    require(link && link->number == 7 && !link->isBeginning && link->cut.isEmpty(),
            "what a caller says does not change the place of a record");
}

/// Fields as they come: names and values between line ends.
void checkFields(const QByteArray& head)
{
    RequestFields fields;
    int count = 0;
    for (const QByteArray& line : head.split('\n')) {
        const int colon = int(line.indexOf(':'));
        fields.take(line.left(colon), colon < 0 ? QByteArray() : line.mid(colon + 1));
        ++count;
    }
    require(!fields.hasTwice || count > 1, "one field comes once");
    require(fields.refusal() || !fields.host.isNull(), "a request names the server");
    const QByteArray type = fields.mediaType();
    require(!type.contains(';') && type == type.toLower(), "a type has no parameters");
    constexpr int kMost = 1000;
    if (fields.bodyRefusal(kMost))
        return;
    require(fields.transferEncoding.isNull() || fields.contentLength.isNull(),
            "the length of a body is clear");
    require(fields.contentLength.isNull() || fields.contentLength.toLongLong() <= kMost,
            "a body is not too long");
    require(fields.hasBody() || fields.transferEncoding.isNull(), "a body in parts is a body");
}

void checkNumbers(const QByteArray& query)
{
    const std::optional<Target> target = parseTarget("/?points=" + query);
    if (!target)
        return;
    Request request;
    request.query = target->query;
    const plc::Expected<qint64> number = numberOf(request, "points", 7, -5, 20000);
    require(!number || (*number >= -5 && *number <= 20000), "a number is within its bounds");
    const plc::Expected<qint64> time = timeOf(request, "points", 0);
    require(!time || (*time >= 0 && *time <= qint64(1) << 53), "a time is one");
}

void checkBodies(const QByteArray& body)
{
    if (const auto names = readValueNames(body))
        require(names->size() <= Subscriptions::kMostValues, "a list has an end");
    if (const auto write = readWrite(body)) {
        require(!write->values.isEmpty(), "a write has a value");
        require(write->user.isEmpty() && write->address.isEmpty(), "nobody says who he is");
        require(write->isList || write->values.size() == 1, "one value is one");
    }
    if (const auto order = readRecipeOrder(body))
        require(order->labels.size() <= body.size(), "labels are those of the body");
    if (const auto login = readLogin(body))
        require(login->user.size() + login->password.size() <= body.size(),
                "a login is that of the body");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    switch (input.below(7)) {
        case 0:
            checkTarget(input.bytes(int(size)));
            break;
        case 1: {
            const QByteArray host = input.bytes(input.byte());
            checkSender(host, input.bytes(int(size)));
            break;
        }
        case 2: {
            const QByteArray cookie = input.bytes(input.byte());
            checkToken(cookie, input.bytes(int(size)));
            break;
        }
        case 3:
            checkFields(input.bytes(int(size)));
            break;
        case 4:
            checkNumbers(input.bytes(int(size)));
            break;
        case 5:
            checkBodies(input.bytes(int(size)));
            break;
        default:
            checkAudit(&input, input.bytes(int(size)));
    }
    return 0;
}

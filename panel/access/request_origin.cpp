#include "panel/access/request_origin.h"

#include <arpa/inet.h>

#include <algorithm>

namespace plc::panel {
namespace {

constexpr int kLongestHost = 255;
constexpr int kHttpPort = 80;
constexpr int kHttpsPort = 443;

bool isHostCharacter(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9') ||
           character == '-' || character == '.' || character == '_';
}

bool isAddressCharacter(char character)
{
    return (character >= 'a' && character <= 'f') || (character >= '0' && character <= '9') ||
           character == ':' || character == '.';
}

std::optional<int> parsePort(const QByteArray& text)
{
    const bool isDigits = std::all_of(text.begin(), text.end(),
                                      [](char digit) { return digit >= '0' && digit <= '9'; });
    const int port = text.toInt();
    if (text.isEmpty() || text.size() > 5 || !isDigits || port < 1 || port > 65535)
        return std::nullopt;
    return port;
}

/// The number of bytes that the host takes, with brackets; 0: there is none.
int hostLength(const QByteArray& text)
{
    if (!text.startsWith('[')) {
        const int colon = int(text.indexOf(':'));
        return colon < 0 ? int(text.size()) : colon;
    }
    return int(text.indexOf(']')) + 1;
}

bool isHost(const QByteArray& host, bool hasBrackets)
{
    return !host.isEmpty() && host.size() <= kLongestHost &&
           std::all_of(host.begin(), host.end(),
                       hasBrackets ? isAddressCharacter : isHostCharacter);
}

bool isAddress(const QByteArray& host)
{
    in6_addr address = {};
    return ::inet_pton(AF_INET, host.constData(), &address) == 1 ||
           ::inet_pton(AF_INET6, host.constData(), &address) == 1;
}

} // namespace

std::optional<HostAndPort> parseHost(const QByteArray& text)
{
    const QByteArray small = text.toLower();
    const bool hasBrackets = small.startsWith('[');
    const int length = hostLength(small);
    HostAndPort parsed;
    parsed.host = hasBrackets ? small.mid(1, length - 2) : small.left(length);
    if (!hasBrackets && parsed.host.endsWith('.'))
        parsed.host.chop(1);
    if (length == 0 || !isHost(parsed.host, hasBrackets))
        return std::nullopt;
    if (length == int(small.size()))
        return parsed;
    const std::optional<int> port =
        small[length] == ':' ? parsePort(small.mid(length + 1)) : std::nullopt;
    if (!port)
        return std::nullopt;
    parsed.port = *port;
    return parsed;
}

HostNames::HostNames(const QStringList& names) : m_names{"localhost", "127.0.0.1", "::1"}
{
    for (const QString& name : names) {
        QByteArray host = name.toLower().toUtf8();
        if (host.endsWith('.'))
            host.chop(1);
        m_names += host;
    }
    m_takesAddresses = m_names.contains("0.0.0.0") || m_names.contains("::");
}

bool HostNames::contains(const QByteArray& host) const
{
    const std::optional<HostAndPort> parsed = parseHost(host);
    if (!parsed)
        return false;
    return m_names.contains(parsed->host) || (m_takesAddresses && isAddress(parsed->host));
}

bool isSameOrigin(const QByteArray& origin, const QByteArray& host, bool isEncrypted)
{
    const bool isHttps = origin.startsWith("https://");
    if (!isHttps && (isEncrypted || !origin.startsWith("http://")))
        return false;
    const auto page = parseHost(origin.mid(isHttps ? 8 : 7));
    const auto server = parseHost(host);
    if (!page || !server || page->host != server->host)
        return false;
    const int standard = isHttps ? kHttpsPort : kHttpPort;
    return (page->port < 0 ? standard : page->port) == (server->port < 0 ? standard : server->port);
}

} // namespace plc::panel

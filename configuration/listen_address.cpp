#include "configuration/listen_address.h"

#include <arpa/inet.h>

namespace plc::configuration {
namespace {

constexpr int kLoopbackNet = 127;

} // namespace

std::optional<ListenAddress> parseListenAddress(const QString& text)
{
    const int colon = int(text.lastIndexOf(QLatin1Char(':')));
    if (colon < 1)
        return {};
    QString address = text.left(colon);
    if (address.startsWith(QLatin1Char('[')) && address.endsWith(QLatin1Char(']')))
        address = address.mid(1, address.size() - 2);
    else if (address.contains(QLatin1Char(':')))
        return {};
    bool ok = false;
    const ushort port = text.mid(colon + 1).toUShort(&ok, 10);
    if (!ok || address.isEmpty())
        return {};
    return ListenAddress{address, port};
}

bool isLoopback(const QString& address)
{
    const QByteArray text = address.toLatin1();
    in_addr v4 = {};
    in6_addr v6 = {};
    if (::inet_pton(AF_INET, text.constData(), &v4) == 1)
        return (ntohl(v4.s_addr) >> 24) == kLoopbackNet;
    return ::inet_pton(AF_INET6, text.constData(), &v6) == 1 && IN6_IS_ADDR_LOOPBACK(&v6) != 0;
}

} // namespace plc::configuration

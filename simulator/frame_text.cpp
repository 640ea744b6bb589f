#include "simulator/frame_text.h"

#include "simulator/big_endian.h"
#include "simulator/plc_services.h"

namespace plc::simulator {
namespace {

QString withEntryCount(const char* what, const QByteArray& request)
{
    constexpr int kCountSize = 4;
    if (request.size() < kRequestDataPosition + kCountSize)
        return QString::fromLatin1(what);
    return QStringLiteral("%1, %2 entries")
        .arg(QLatin1String(what))
        .arg(bigEndianAt(request, kRequestDataPosition, kCountSize));
}

} // namespace

QString requestText(const QByteArray& request)
{
    switch (Service(quint8(request[kServicePosition]))) {
        case Service::Identification:
            return QStringLiteral("identification");
        case Service::FileRequest:
            return QStringLiteral("file request");
        case Service::ReadVariables:
            return withEntryCount("read", request);
        case Service::WriteVariables:
            return withEntryCount("write", request);
    }
    return QStringLiteral("unknown service");
}

QString replyText(const QByteArray& reply)
{
    if (reply.isEmpty())
        return QStringLiteral("lost");
    if (reply.size() < kRequestDataPosition)
        return QStringLiteral("cut short");
    return QString::fromLatin1(statusName(replyStatus(reply)));
}

} // namespace plc::simulator

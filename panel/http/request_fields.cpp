#include "panel/http/request_fields.h"

#include <QtCore/QList>

#include <utility>

namespace plc::panel {

void RequestFields::take(const QByteArray& name, const QByteArray& value)
{
    const std::pair<const char*, QByteArray*> places[] = {{"host", &host},
                                                          {"origin", &origin},
                                                          {"sec-fetch-site", &fetchSite},
                                                          {"cookie", &cookie},
                                                          {"authorization", &authorization},
                                                          {"panel-instance", &instance},
                                                          {"content-type", &contentType},
                                                          {"content-length", &contentLength},
                                                          {"transfer-encoding", &transferEncoding},
                                                          {"if-none-match", &ifNoneMatch}};
    const QByteArray folded = name.toLower();
    for (const auto& [known, place] : places) {
        if (folded != known)
            continue;
        if (!place->isNull())
            hasTwice = true;
        *place = value.isNull() ? QByteArray("") : value;
        return;
    }
}

/// Of what is not clear libmicrohttpd may take something for a body.
bool RequestFields::hasBody() const
{
    if (contentLength.isNull())
        return !transferEncoding.isNull();
    bool isNumber = false;
    const bool isEmpty = contentLength.toLongLong(&isNumber) == 0 && isNumber;
    return !transferEncoding.isNull() || hasTwice || !isEmpty;
}

QByteArray RequestFields::mediaType() const
{
    return contentType.split(';').value(0).trimmed().toLower();
}

std::optional<Response> RequestFields::refusal() const
{
    if (host.isNull())
        return Response::error(400, QStringLiteral("the request does not name the server (Host)"));
    if (hasTwice)
        return Response::error(400, QStringLiteral("a header came twice"));
    return std::nullopt;
}

std::optional<Response> RequestFields::bodyRefusal(int mostBytes) const
{
    if (!transferEncoding.isNull()) {
        if (transferEncoding.toLower() != "chunked" || !contentLength.isNull())
            return Response::error(400, QStringLiteral("the length of the body is not clear"));
    } else if (!contentLength.isNull()) {
        bool isNumber = false;
        const qint64 length = contentLength.toLongLong(&isNumber);
        if (!isNumber || length > mostBytes)
            return tooLong(mostBytes);
    }
    return std::nullopt;
}

Response RequestFields::tooLong(int mostBytes)
{
    return Response::error(413, QStringLiteral("the body has more than %1 bytes").arg(mostBytes));
}

} // namespace plc::panel

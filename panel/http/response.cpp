#include "panel/http/response.h"

#include <QtCore/QJsonDocument>

namespace plc::panel {

Response Response::json(const QByteArray& text, int status)
{
    Response response;
    response.status = status;
    response.contentType = "application/json";
    response.body = text;
    return response;
}

Response Response::json(const QJsonObject& object, int status)
{
    return json(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n', status);
}

Response Response::error(int status, const QString& sentence)
{
    return json(QJsonObject{{QStringLiteral("error"), sentence}}, status);
}

Response Response::text(const QString& text, int status)
{
    Response response;
    response.status = status;
    response.contentType = "text/plain; charset=utf-8";
    response.body = text.toUtf8();
    return response;
}

Response Response::nothing()
{
    Response response;
    response.status = 204;
    return response;
}

Response Response::events(std::shared_ptr<EventStream> stream)
{
    Response response;
    response.contentType = "text/event-stream";
    response.stream = std::move(stream);
    return response;
}

} // namespace plc::panel

#ifndef PLC_PANEL_HTTP_RESPONSE_H
#define PLC_PANEL_HTTP_RESPONSE_H

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QPair>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <functional>
#include <memory>

#include "panel/http/event_stream.h"

namespace plc::panel {

/// What a client gets. The server adds the headers that all responses have.
struct Response {
    int status = 200;
    QByteArray contentType; ///< Empty: there is no body.
    QByteArray body;        ///< Shared by all whom it is sent to.
    QVector<QPair<QByteArray, QByteArray>> headers;
    std::shared_ptr<EventStream> stream; ///< In place of a body.

    void addHeader(const QByteArray& name, const QByteArray& value)
    {
        headers.append(qMakePair(name, value));
    }

    static Response json(const QByteArray& text, int status = 200);
    static Response json(const QJsonObject& object, int status = 200);
    /// {"error": sentence}
    static Response error(int status, const QString& sentence);
    static Response text(const QString& text, int status = 200);
    /// 204
    static Response nothing();
    static Response events(std::shared_ptr<EventStream> stream);
};

/// Sends the response, from any thread. Only the first call counts; when the last copy goes without
/// one, the client is told 500.
using Responder = std::function<void(Response)>;

} // namespace plc::panel

#endif

#ifndef PLC_PANEL_HTTP_REQUEST_FIELDS_H
#define PLC_PANEL_HTTP_REQUEST_FIELDS_H

#include <QtCore/QByteArray>

#include <optional>

#include "panel/http/response.h"

namespace plc::panel {

/// What is looked at of the fields in the head of a request. Null: not there.
struct RequestFields {
    QByteArray host;
    QByteArray origin;
    QByteArray fetchSite;
    QByteArray cookie;
    QByteArray authorization;
    QByteArray instance;
    QByteArray contentType;
    QByteArray contentLength;
    QByteArray transferEncoding;
    QByteArray ifNoneMatch;
    bool hasTwice = false; ///< One that may come once came again.

    void take(const QByteArray& name, const QByteArray& value);
    bool hasBody() const;
    /// Of the content, without parameters, in small letters.
    QByteArray mediaType() const;
    /// Why the head makes no sense by itself; nothing: it does.
    std::optional<Response> refusal() const;
    /// Why the body cannot be taken, of which there may be so many bytes; nothing: it can.
    std::optional<Response> bodyRefusal(int mostBytes) const;
    static Response tooLong(int mostBytes);
};

} // namespace plc::panel

#endif

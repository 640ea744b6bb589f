#ifndef PLC_PANEL_HTTP_REQUEST_H
#define PLC_PANEL_HTTP_REQUEST_H

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QPair>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <optional>

#include "panel/http/caller.h"

namespace plc::panel {

enum class Method { Get, Post, Put, Delete };

/// "GET" and so on.
const char* methodName(Method method);
/// The method of a name; HEAD is a GET of which only the beginning is sent. Nothing for others.
std::optional<Method> findMethod(const QByteArray& name);

using Query = QVector<QPair<QString, QString>>;

/// What a client asks for: whole, within all limits and allowed when a handler sees it.
struct Request {
    Method method = Method::Get;
    QString path;                       ///< Decoded, without the query.
    QHash<QString, QString> parameters; ///< By the names in braces of the route's pattern.
    Query query;                        ///< Decoded, in the order of the request.
    QByteArray body;
    QByteArray contentType; ///< Without parameters, in small letters: "application/json".
    QByteArray ifNoneMatch; ///< The tag of what the client has; empty: none.
    Caller caller;

    /// The first value of a name in the query.
    std::optional<QString> first(const QString& name) const;
    /// All values of a name in the query.
    QStringList all(const QString& name) const;
};

} // namespace plc::panel

#endif

#include "panel/http/request.h"

namespace plc::panel {

const char* methodName(Method method)
{
    switch (method) {
        case Method::Get:
            return "GET";
        case Method::Post:
            return "POST";
        case Method::Put:
            return "PUT";
        case Method::Delete:
            break;
    }
    return "DELETE";
}

std::optional<Method> findMethod(const QByteArray& name)
{
    for (const Method method : {Method::Get, Method::Post, Method::Put, Method::Delete}) {
        if (name == methodName(method))
            return method;
    }
    return name == "HEAD" ? std::optional<Method>(Method::Get) : std::nullopt;
}

std::optional<QString> Request::first(const QString& name) const
{
    for (const auto& [key, value] : query) {
        if (key == name)
            return value;
    }
    return std::nullopt;
}

QStringList Request::all(const QString& name) const
{
    QStringList values;
    for (const auto& [key, value] : query) {
        if (key == name)
            values += value;
    }
    return values;
}

} // namespace plc::panel

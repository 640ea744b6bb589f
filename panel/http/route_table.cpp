#include "panel/http/route_table.h"

namespace plc::panel {
namespace {

bool isName(const QString& part)
{
    return part.size() > 2 && part.startsWith(QLatin1Char('{')) && part.endsWith(QLatin1Char('}'));
}

QStringList partsOf(const QByteArray& pattern)
{
    return QString::fromUtf8(pattern.mid(1)).split(QLatin1Char('/'));
}

/// The number of parts that are spelt out; -1 when the path does not fit.
int fit(const QStringList& pattern, const QStringList& path)
{
    if (pattern.size() != path.size())
        return -1;
    int spelt = 0;
    for (int i = 0; i < int(path.size()); ++i) {
        if (pattern[i] == path[i])
            ++spelt;
        else if (!isName(pattern[i]) || path[i].isEmpty())
            return -1;
    }
    return spelt;
}

QHash<QString, QString> parametersOf(const QStringList& pattern, const QStringList& path)
{
    QHash<QString, QString> parameters;
    for (int i = 0; i < int(path.size()); ++i) {
        if (isName(pattern[i]))
            parameters.insert(pattern[i].mid(1, pattern[i].size() - 2), path[i]);
    }
    return parameters;
}

QByteArray allowedText(const QVector<Method>& methods)
{
    QByteArray text;
    for (const Method method : {Method::Get, Method::Post, Method::Put, Method::Delete}) {
        if (!methods.contains(method))
            continue;
        text += text.isEmpty() ? "" : ", ";
        text += methodName(method);
        text += method == Method::Get ? ", HEAD" : "";
    }
    return text;
}

const char* flawOf(const Route& route)
{
    if (!route.pattern.startsWith('/'))
        return "a pattern begins with a slash";
    if (route.kind == Route::Changes && route.method == Method::Get)
        return "nothing is changed by GET";
    return route.handler ? nullptr : "nothing carries it out";
}

} // namespace

Expected<RouteTable> RouteTable::make(const QVector<Route>& routes)
{
    RouteTable table;
    for (const Route& route : routes) {
        const char* flaw = flawOf(route);
        for (const Entry& other : table.m_entries) {
            if (other.route.method == route.method && other.route.pattern == route.pattern)
                flaw = "there are two of it";
        }
        if (flaw)
            return Error{QStringLiteral("%1 %2: %3")
                             .arg(QLatin1String(methodName(route.method)),
                                  QString::fromUtf8(route.pattern), QLatin1String(flaw))};
        table.m_entries.push_back({route, partsOf(route.pattern)});
    }
    return table;
}

RouteMatch RouteTable::find(const QStringList& parts, std::optional<Method> method) const
{
    int best = -1;
    for (const Entry& entry : m_entries)
        best = std::max(best, fit(entry.parts, parts));
    RouteMatch match;
    if (best < 0)
        return match;
    QVector<Method> methods;
    for (const Entry& entry : m_entries) {
        if (fit(entry.parts, parts) != best)
            continue;
        methods += entry.route.method;
        if (entry.route.method != method)
            continue;
        match.route = &entry.route;
        match.parameters = parametersOf(entry.parts, parts);
    }
    match.allowed = allowedText(methods);
    return match;
}

} // namespace plc::panel

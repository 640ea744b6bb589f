#ifndef PLC_PANEL_HTTP_ROUTE_TABLE_H
#define PLC_PANEL_HTTP_ROUTE_TABLE_H

#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <vector>

#include "panel/http/route.h"
#include "values/expected.h"

namespace plc::panel {

/// What a path and a method lead to.
struct RouteMatch {
    const Route* route = nullptr; ///< Null: nothing.
    QHash<QString, QString> parameters;
    QByteArray allowed; ///< Methods that the path has: "GET, HEAD, POST"; empty: no such path.
};

/// All that a server serves. Where a path fits several patterns, the one that spells it out wins.
class RouteTable {
public:
    /// An error names a route that makes no sense: a change by GET, a pattern that is no path, two
    /// of the same, none to carry it out.
    static Expected<RouteTable> make(const QVector<Route>& routes);

    /// No method: one that no route has.
    RouteMatch find(const QStringList& parts, std::optional<Method> method) const;

private:
    struct Entry {
        Route route;
        QStringList parts;
    };

    std::vector<Entry> m_entries;
};

} // namespace plc::panel

#endif

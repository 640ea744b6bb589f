#ifndef PLC_PANEL_HTTP_ROUTE_H
#define PLC_PANEL_HTTP_ROUTE_H

#include <functional>

#include "panel/http/request.h"
#include "panel/http/response.h"

namespace plc::panel {

/// One thing that clients may ask for.
struct Route {
    enum Kind { Reads, Changes };

    Method method = Method::Get;
    QByteArray pattern;      ///< "/api/v1/recipes/{name}": a name stands for one part of a path.
    Role least = Role::None; ///< None: whoever comes.
    Kind kind = Reads;       ///< What changes something in a PLC or on disk; never a GET.
    QByteArray summary;      ///< One line for people.
    /// Called on the server's thread, one call at a time: it must not wait.
    std::function<void(const Request&, Responder)> handler;
    int mostBodyBytes = 0; ///< Of a request; 0: the server's own bound.
};

} // namespace plc::panel

#endif

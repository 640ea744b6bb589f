#ifndef PLC_PANEL_HTTP_GUARD_H
#define PLC_PANEL_HTTP_GUARD_H

#include <optional>

#include "panel/http/response.h"
#include "panel/http/route.h"

namespace plc::panel {

/// What is known of a request before its body is read.
struct RequestHead {
    const Route* route = nullptr; ///< Null: nothing has this path and method.
    QByteArray host;              ///< As the client names this server.
    QByteArray origin;            ///< Of the page that sends it; empty: not said.
    QByteArray fetchSite;         ///< Sec-Fetch-Site; empty: not said.
    QByteArray cookie;
    QByteArray authorization;
    QByteArray
        instance; ///< Panel-Instance: the run of the program that the client means; empty: any.
    QByteArray contentType; ///< Of the body, without parameters, in small letters.
    bool hasBody = false;
    QString address; ///< As Caller::address.
    bool isEncrypted = false;
};

/// Who sends a request, or what is answered in place of it.
struct Decision {
    Caller caller;
    std::optional<Response> refusal;
};

/// Decides of each request whether it is carried out. Called once for each, before anything else
/// is done about it, also for those that lead nowhere.
class Guard {
public:
    virtual ~Guard() = default;
    /// Called by the server's threads, one call at a time.
    virtual Decision decide(const RequestHead& head) = 0;
};

} // namespace plc::panel

#endif

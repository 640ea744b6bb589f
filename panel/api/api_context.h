#ifndef PLC_PANEL_API_API_CONTEXT_H
#define PLC_PANEL_API_API_CONTEXT_H

#include <functional>
#include <memory>
#include <optional>

#include "panel/access/login_audit.h"
#include "panel/api/subscriptions.h"
#include "panel/api/write_desk.h"
#include "panel/http/route.h"
#include "panel/http/server.h"
#include "panel/plants/plants.h"
#include "recorder/recorder_thread.h"

namespace plc::panel {

class AlarmWatch;
class HistoryQueries;
class RecipeDesk;

/// What the routes work on. All of it outlives them.
struct ApiContext {
    Plants* plants = nullptr;
    Subscriptions* subscriptions = nullptr;
    WriteDesk* writes = nullptr;
    Access* access = nullptr;
    LoginAudit* logins = nullptr;
    HistoryQueries* history = nullptr; ///< Null: nothing is recorded.
    AlarmWatch* alarms = nullptr;
    RecipeDesk* recipes = nullptr; ///< Null: none are kept.
    WriteDesk::Audit audit;        ///< For the thread of the PLCs.
    std::function<ServerStatistics()> server;
    std::function<std::optional<recorder::RecorderStatus>()> recorder; ///< Nothing is recorded.
    /// Has another thread work out a response, one of a few; for any thread.
    std::function<void(const Responder&, std::function<Response()>)> slowly;
    std::function<qint64()> time; ///< Milliseconds since 1970-01-01T00:00:00Z; for any thread.
    /// Has the thread of the PLCs do something; for any thread.
    std::function<void(std::function<void()>)> post;
    QString version;
    QByteArray instance; ///< Another one in each run of the program.
    bool isReadOnly = false;
    QString auditFile; ///< Empty: there is none.
};

/// What a client did wrong, or what there is not: told instead of an answer.
inline Response badRequest(const QString& sentence)
{
    return Response::error(400, sentence);
}
inline Response notFound(const QString& sentence)
{
    return Response::error(404, sentence);
}

using PlantHandler = void (*)(const ApiContext&, const Request&, const Responder&);

/// A handler that is called in the thread of the PLCs.
inline std::function<void(const Request&, Responder)> onPlants(const ApiContext& context,
                                                               PlantHandler handle)
{
    return [context, handle](const Request& request, Responder respond) {
        context.post([context, handle, request, respond = std::move(respond)] {
            handle(context, request, respond);
        });
    };
}

} // namespace plc::panel

#endif

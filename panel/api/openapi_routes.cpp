#include "panel/api/api_routes.h"
#include "panel/api/openapi_text.h"

namespace plc::panel {

QVector<Route> openApiRoutes()
{
    Route route{Method::Get,
                "/api/v1/openapi.json",
                Role::Viewer,
                Route::Reads,
                "The description of this interface (OpenAPI 3.1)",
                {}};
    route.handler = [](const Request&, const Responder& respond) {
        respond(Response::json(openApiText()));
    };
    return {route};
}

} // namespace plc::panel

#include "panel/api/api_routes.h"

namespace plc::panel {

QVector<Route> apiRoutes(const ApiContext& context)
{
    return sessionRoutes(context) + plantRoutes(context) + eventRoutes(context) +
           writeRoutes(context) + historyRoutes(context) + alarmRoutes(context) +
           recipeRoutes(context) + auditRoutes(context) + statisticsRoutes(context) +
           openApiRoutes();
}

} // namespace plc::panel

#ifndef PLC_PANEL_API_API_ROUTES_H
#define PLC_PANEL_API_API_ROUTES_H

#include "panel/api/api_context.h"

namespace plc::panel {

// The interface for programs and for the page, in parts.

QVector<Route> sessionRoutes(const ApiContext& context);
/// PLCs, their symbols and values.
QVector<Route> plantRoutes(const ApiContext& context);
/// Subscriptions and their events.
QVector<Route> eventRoutes(const ApiContext& context);
QVector<Route> writeRoutes(const ApiContext& context);
QVector<Route> historyRoutes(const ApiContext& context);
QVector<Route> alarmRoutes(const ApiContext& context);
QVector<Route> recipeRoutes(const ApiContext& context);
QVector<Route> auditRoutes(const ApiContext& context);
QVector<Route> statisticsRoutes(const ApiContext& context);
/// The description of all others.
QVector<Route> openApiRoutes();

/// All of them.
QVector<Route> apiRoutes(const ApiContext& context);

} // namespace plc::panel

#endif

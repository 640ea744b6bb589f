#ifndef PLC_PANEL_SERVICE_PAGE_ROUTES_H
#define PLC_PANEL_SERVICE_PAGE_ROUTES_H

#include "panel/http/route.h"

namespace plc::panel {

/// The files of the page, which hold no data and are for whoever comes.
QVector<Route> pageRoutes();

} // namespace plc::panel

#endif

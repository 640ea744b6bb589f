#ifndef PLC_PANEL_HTTP_SENT_RESPONSE_H
#define PLC_PANEL_HTTP_SENT_RESPONSE_H

#include <microhttpd.h>

#include <memory>

#include "panel/http/response.h"
#include "panel/http/server_core.h"

namespace plc::panel {

/// Hands a response to the library, with the headers that all have, and tells the core what of it
/// is on its way. `takesChunks`: whether the client takes chunks. The core outlives the connection.
MHD_Result sendResponse(MHD_Connection* handle, Response response, bool takesChunks,
                        ServerCore* core, const std::shared_ptr<Connection>& connection);

} // namespace plc::panel

#endif

#ifndef PLC_PANEL_HTTP_SENT_RESPONSE_H
#define PLC_PANEL_HTTP_SENT_RESPONSE_H

#include <microhttpd.h>

#include <atomic>
#include <memory>

#include "panel/http/response.h"
#include "panel/http/suspension.h"

namespace plc::panel {

/// Hands a response to the library, with the headers that all have. `streams` counts the streams
/// that are being sent.
MHD_Result sendResponse(MHD_Connection* connection, Response response,
                        const std::shared_ptr<Suspension>& suspension, std::atomic<int>* streams);

} // namespace plc::panel

#endif

#ifndef PLC_PANEL_API_OPENAPI_TEXT_H
#define PLC_PANEL_API_OPENAPI_TEXT_H

#include <QtCore/QByteArray>

namespace plc::panel {

/// docs/openapi.json
QByteArray openApiText();

} // namespace plc::panel

#endif

#ifndef PLC_PANEL_CONFIG_PLC_READER_H
#define PLC_PANEL_CONFIG_PLC_READER_H

#include "panel/config/plc_settings.h"
#include "project/json_node.h"

namespace plc::panel {

/// The list `plcs` of a configuration. Reports what does not fit.
QVector<PlcSettings> readPlcs(const project::JsonNode& list);

} // namespace plc::panel

#endif

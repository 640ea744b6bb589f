#ifndef PLC_PANEL_SERVICE_START_CHECK_H
#define PLC_PANEL_SERVICE_START_CHECK_H

#include "panel/config/settings.h"
#include "values/expected.h"

namespace plc::panel {

/// Whether all paths are known: one in a folder of the service manager's is only where that has
/// given the folder to this process.
Expected<void> checkFolders(const PanelSettings& settings);

/// Whether what the start would make or go on with can be there: looks at files, folders and the
/// address, and changes nothing, also while a panel of the same configuration runs. What only that
/// one has (the port, the files) is no error.
Expected<void> checkPlaces(const PanelSettings& settings);

} // namespace plc::panel

#endif

#ifndef PLC_GATEWAY_SERVICE_SPLIT_FILES_H
#define PLC_GATEWAY_SERVICE_SPLIT_FILES_H

#include "gateway/config/unit_split.h"

namespace plc::gateway {

/// What of a list of PLCs, and where to, configurations are made.
struct SplitFiles {
    QString pattern;
    QString list;
    QString folder;
    int devices = kUsualDevices;
    bool replaces = false;
};

/// Writes the configurations, see splitUnits(). Returns what became of each, one line for each.
Expected<QString> splitFiles(const SplitFiles& files);

} // namespace plc::gateway

#endif

#ifndef PLC_DRIVER_LABEL_ACCESS_H
#define PLC_DRIVER_LABEL_ACCESS_H

#include "symbols/label_resolution.h"

/// Resolves `label` against the symbol table into `info`. Returns a plc::ResolutionResult.
PLC_DRIVER_EXPORT int get_label_address_info(const QString& label, ControlInformationM& info);

/// Address of `label` within its area, or -1. The first argument is not used.
PLC_DRIVER_EXPORT int StringAddressToInt(int reserved, QString label);

/// Returns 0, always.
PLC_DRIVER_EXPORT int get_label_address_query(const QStringList& parts, int index);

#endif

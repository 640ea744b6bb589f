#ifndef PLC_SYMBOLS_ADDRESS_CONVERSION_H
#define PLC_SYMBOLS_ADDRESS_CONVERSION_H

#include "driver/plc_driver.h"

/// Address of `label` within its area, or -1. The first argument is not used.
PLC_DRIVER_EXPORT int StringAddressToInt(int reserved, QString label);

/// Returns 0, always.
PLC_DRIVER_EXPORT int get_label_address_query(const QStringList& parts, int index);

#endif

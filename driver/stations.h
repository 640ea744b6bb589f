#ifndef PLC_DRIVER_STATIONS_H
#define PLC_DRIVER_STATIONS_H

#include "driver/plc_driver.h"

/// 1 when `station` is switched off, else 0.
PLC_DRIVER_EXPORT int Ethernetcontains(int station);

#endif

#ifndef PLC_DRIVER_IMAGE_ACCESS_H
#define PLC_DRIVER_IMAGE_ACCESS_H

#include "driver/plc_driver.h"

/// Image key of a byte, which exists afterwards. Takes no lock.
PLC_DRIVER_EXPORT quint64 ExtendFindSameVar(const unsigned int& areaIndex,
                                            const unsigned int& address);

/// Stores the data blocks of a read reply at the places of the current batch, as far as the reply
/// reaches. Takes no lock.
PLC_DRIVER_EXPORT void SaveToLocalDataErea(QByteArray* reply);

/// Writes `var->data` into the image at the place of `var`; missing bytes count as 0.
PLC_DRIVER_EXPORT void WriteDataToLocal(RW_VAR* var);

#endif

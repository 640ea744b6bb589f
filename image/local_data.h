#ifndef PLC_IMAGE_LOCAL_DATA_H
#define PLC_IMAGE_LOCAL_DATA_H

#include "driver/plc_driver.h"

/// Image key of a byte, which exists afterwards. Takes no lock.
PLC_DRIVER_EXPORT quint64 ExtendFindSameVar(const unsigned int& areaIndex,
                                            const unsigned int& address);

/// Stores the data blocks of a read reply at the places of the current batch, as far as the reply
/// reaches. Takes no lock.
PLC_DRIVER_EXPORT void SaveToLocalDataErea(QByteArray* reply);

/// Judge the reply to the request at the head of the queue and store its data. `received` is the
/// number of bytes that arrived. Return a number of GetDriverReturnValue().
PLC_DRIVER_EXPORT int DealDataOfLocalArea(QByteArray* reply, int received);
PLC_DRIVER_EXPORT int DealDataOfRemoteArea(QByteArray* reply, int received);

/// Writes `var->data` into the image at the place of `var`; missing bytes count as 0.
PLC_DRIVER_EXPORT void WriteDataToLocal(RW_VAR* var);

#endif

#ifndef PLC_DRIVER_REPLY_JUDGING_H
#define PLC_DRIVER_REPLY_JUDGING_H

#include "driver/plc_driver.h"

/// Judges a read or write reply: 0 invalid, 1 valid with data to store, 2 valid with nothing to
/// store (the `aux2` of the request at the head of the queue decides). `size` is not used.
PLC_DRIVER_EXPORT int CheckGetData(const QByteArray* reply, int size);

/// Judges the reply to the login frame at the head of the queue: 0 good, else a plc::LoginCheck.
/// Captures `plcInfo1` and `plcInfo2` from the second reply.
PLC_DRIVER_EXPORT int handshake_data_check(QByteArray* reply);

/// Judge the reply to the request at the head of the queue and store its data. `received` is the
/// number of bytes that arrived. Return a number of GetDriverReturnValue().
PLC_DRIVER_EXPORT int DealDataOfLocalArea(QByteArray* reply, int received);
PLC_DRIVER_EXPORT int DealDataOfRemoteArea(QByteArray* reply, int received);

#endif

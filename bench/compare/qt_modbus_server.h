#ifndef PLC_BENCH_COMPARE_QT_MODBUS_SERVER_H
#define PLC_BENCH_COMPARE_QT_MODBUS_SERVER_H

namespace plc::bench {

/// Serves the plant's registers with Qt's own Modbus server. Needs an application object; returns
/// when its event loop ends.
int runQtModbusServer();

} // namespace plc::bench

#endif

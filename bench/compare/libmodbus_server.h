#ifndef PLC_BENCH_COMPARE_LIBMODBUS_SERVER_H
#define PLC_BENCH_COMPARE_LIBMODBUS_SERVER_H

namespace plc::bench {

/// Serves the plant's registers with libmodbus, one client at a time. Never returns.
[[noreturn]] void runLibmodbusServer();

} // namespace plc::bench

#endif

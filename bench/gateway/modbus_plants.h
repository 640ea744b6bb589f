#ifndef PLC_BENCH_GATEWAY_MODBUS_PLANTS_H
#define PLC_BENCH_GATEWAY_MODBUS_PLANTS_H

namespace plc::bench {

/// The 32-bit clock whose low and high half each value of a plant has: seconds since 1970.
unsigned clockNow();

/// Serves plants of so many registers at ports that follow one another, until the process is
/// killed.
[[noreturn]] void serveModbusPlants(int firstPort, int plants, int registers);

} // namespace plc::bench

#endif

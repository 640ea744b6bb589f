#ifndef PLC_BENCH_COMPARE_DELAYING_PROXY_H
#define PLC_BENCH_COMPARE_DELAYING_PROXY_H

#include <QtCore/QtGlobal>

#include <chrono>

namespace plc::bench {

/// Relays one client at a time to a server, byte for byte and in both directions at once, and holds
/// back what goes each way for half of the round-trip time. Never returns.
[[noreturn]] void runDelayingProxy(quint16 serverPort, std::chrono::microseconds roundTrip);

} // namespace plc::bench

#endif

#ifndef PLC_BENCH_COMPARE_QT_MODBUS_CLIENT_H
#define PLC_BENCH_COMPARE_QT_MODBUS_CLIENT_H

#include "client.h"

namespace plc::bench {

/// Requests that a Modbus server is to take at a time at most, by the Modbus messaging guide; many
/// take one.
constexpr int kMostRequestsUnderWay = 16;

/// Qt's own Modbus client, which does not wait for an answer before it sends the next request.
class QtModbusClient : public Client {
public:
    explicit QtModbusClient(int requestsUnderWay) : m_requestsUnderWay(requestsUnderWay) {}

    void measure(Work work, quint16 port, Recorder* recorder) override;

private:
    const int m_requestsUnderWay;
};

} // namespace plc::bench

#endif

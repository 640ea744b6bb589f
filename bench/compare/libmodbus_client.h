#ifndef PLC_BENCH_COMPARE_LIBMODBUS_CLIENT_H
#define PLC_BENCH_COMPARE_LIBMODBUS_CLIENT_H

#include "client.h"

namespace plc::bench {

/// libmodbus as its interface is meant: each call sends a request and waits for its answer.
class LibmodbusClient : public Client {
public:
    void measure(Work work, quint16 port, Recorder* recorder) override;
};

} // namespace plc::bench

#endif

#ifndef PLC_BENCH_COMPARE_CLIENT_H
#define PLC_BENCH_COMPARE_CLIENT_H

#include "plant.h"
#include "recorder.h"

namespace plc::bench {

/// One of those that are compared.
class Client {
public:
    virtual ~Client() = default;

    /// Connects, does the work over and over until the recorder has seen enough, checks what it got
    /// and disconnects.
    virtual void measure(Work work, quint16 port, Recorder* recorder) = 0;
};

/// No client takes longer than this for an answer, in milliseconds.
constexpr int kAnswerTimeout = 30000;

} // namespace plc::bench

#endif

#ifndef PLC_BENCH_COMPARE_RECORDER_H
#define PLC_BENCH_COMPARE_RECORDER_H

#include <chrono>
#include <vector>

#include "sockets.h"

namespace plc::bench {

/// What one client showed while it did a work again and again.
struct Measurement {
    double seconds = 0;
    double processorSeconds = 0; ///< Of the client's process.
    double values = 0;
    double passes = 0;
    double requests = 0;
    Traffic traffic;
    /// From the moment in which the application asks for all values of a pass to the one in which
    /// it has the value, or the write's confirmation, in milliseconds.
    double medianLatency = 0;
    double latency99 = 0; ///< 99 of 100 values are not later.
};

/// Measures a client. The client tells what happens; the recorder tells when it has seen enough.
class Recorder {
public:
    /// For a client whose connection leads to the port, to see passes for at least so long.
    Recorder(quint16 port, std::chrono::milliseconds shortest) : m_port(port), m_shortest(shortest)
    {
    }

    /// All that came before was preparation. The first pass begins.
    void begin();
    void requestSent() { m_result.requests += m_isMeasuring ? 1 : 0; }
    /// The application has got so many values of the pass.
    void arrived(int values);
    /// It has got the last one, and the next pass begins, unless this returns true.
    bool passDone();

    /// To be called once, when passDone() has returned true.
    Measurement result();

private:
    using Clock = std::chrono::steady_clock;
    struct Arrival {
        Clock::duration latency;
        int values;
    };

    double latencyOf(double share) const;

    const quint16 m_port;
    const std::chrono::milliseconds m_shortest;
    bool m_isMeasuring = false;
    Clock::time_point m_start;
    Clock::time_point m_passStart;
    double m_processorStart = 0;
    Traffic m_trafficStart;
    std::vector<Arrival> m_arrivals;
    Measurement m_result;
};

} // namespace plc::bench

#endif

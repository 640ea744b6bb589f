#include "recorder.h"

#include <algorithm>
#include <ctime>

namespace plc::bench {
namespace {

double processorSeconds()
{
    timespec time = {};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) * 1e-9;
}

Traffic operator-(const Traffic& end, const Traffic& start)
{
    return {end.bytesSent - start.bytesSent, end.bytesReceived - start.bytesReceived,
            end.segments - start.segments};
}

} // namespace

void Recorder::begin()
{
    m_isMeasuring = true;
    m_trafficStart = trafficTo(m_port);
    m_processorStart = processorSeconds();
    m_start = Clock::now();
    m_passStart = m_start;
}

void Recorder::arrived(int values)
{
    if (!m_isMeasuring)
        return;
    m_arrivals.push_back({Clock::now() - m_passStart, values});
    m_result.values += values;
}

bool Recorder::passDone()
{
    const Clock::time_point now = Clock::now();
    m_passStart = now;
    m_result.passes += 1;
    if (now - m_start < m_shortest)
        return false;
    m_result.seconds = std::chrono::duration<double>(now - m_start).count();
    m_result.processorSeconds = processorSeconds() - m_processorStart;
    m_result.traffic = trafficTo(m_port) - m_trafficStart;
    m_isMeasuring = false;
    return true;
}

Measurement Recorder::result()
{
    std::sort(m_arrivals.begin(), m_arrivals.end(),
              [](const Arrival& a, const Arrival& b) { return a.latency < b.latency; });
    m_result.medianLatency = latencyOf(0.5);
    m_result.latency99 = latencyOf(0.99);
    return m_result;
}

/// The latency that this share of the values does not exceed.
double Recorder::latencyOf(double share) const
{
    double values = 0;
    for (const Arrival& arrival : m_arrivals) {
        values += arrival.values;
        if (values >= share * m_result.values)
            return std::chrono::duration<double, std::milli>(arrival.latency).count();
    }
    return 0;
}

} // namespace plc::bench

#ifndef PLC_GATEWAY_SERVICE_BROKER_CHOICE_H
#define PLC_GATEWAY_SERVICE_BROKER_CHOICE_H

#include <random>

#include "host/link/backoff.h"

namespace plc::gateway {

/// Which broker to try, and when.
///
/// 1. After a failure, and after the loss of a connection, comes the next in the list, nearly at
///    once.
/// 2. When all have failed since the last success, there is a pause; it doubles from round to round
///    up to a limit.
/// 3. Pauses differ by chance, so that many gateways do not come back at the same moment.
class BrokerChoice {
public:
    /// `brokers` is above 0.
    BrokerChoice(int brokers, unsigned seed);

    int current() const { return m_current; }
    /// The current broker could not be reached or was lost; another one is current now. Returns
    /// after how many milliseconds it is to be tried.
    int failed();
    void succeeded();

private:
    const int m_brokers;
    int m_current = 0;
    int m_failures = 0; ///< Since the last success.
    host::Backoff m_backoff;
    std::mt19937 m_random;
};

} // namespace plc::gateway

#endif

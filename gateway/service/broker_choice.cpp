#include "gateway/service/broker_choice.h"

namespace plc::gateway {
namespace {

constexpr int kPauseBetween = 100;   // ms
constexpr int kFirstPause = 1000;    // ms
constexpr int kLongestPause = 30000; // ms
constexpr int kSpread = 4;           // The part of a pause that differs by chance is one of these.

} // namespace

BrokerChoice::BrokerChoice(int brokers, unsigned seed)
    : m_brokers(brokers), m_backoff(kFirstPause, kLongestPause), m_random(seed)
{
}

int BrokerChoice::failed()
{
    m_current = (m_current + 1) % m_brokers;
    if (++m_failures % m_brokers != 0)
        return kPauseBetween;
    const int pause = m_backoff.next();
    return pause - int(m_random() % unsigned(pause / kSpread + 1));
}

void BrokerChoice::succeeded()
{
    m_failures = 0;
    m_backoff.reset();
}

} // namespace plc::gateway

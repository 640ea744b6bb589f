#include "cli/link_observer.h"

namespace plc::cli {

void LinkObservers::linkChanged(host::LinkState state, const QString& reason, int retryDelay)
{
    for (host::RuntimeListener* observer : m_observers)
        observer->linkChanged(state, reason, retryDelay);
}

void LinkObservers::requestSent(const host::SentRequest& request)
{
    for (host::RuntimeListener* observer : m_observers)
        observer->requestSent(request);
}

void LinkObservers::requestAnswered(const host::SentRequest& request, const host::Answer& answer,
                                    const QByteArray& reply)
{
    for (host::RuntimeListener* observer : m_observers)
        observer->requestAnswered(request, answer, reply);
}

void LinkObservers::requestSettled()
{
    for (host::RuntimeListener* observer : m_observers)
        observer->requestSettled();
}

void LinkObservers::valueRefused(int row)
{
    for (host::RuntimeListener* observer : m_observers)
        observer->valueRefused(row);
}

void LinkObservers::valueGivenAgain(int row)
{
    for (host::RuntimeListener* observer : m_observers)
        observer->valueGivenAgain(row);
}

} // namespace plc::cli

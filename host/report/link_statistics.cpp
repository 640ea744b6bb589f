#include "host/report/link_statistics.h"

namespace plc::host {

void LinkStatistics::requestSent(qint64 now)
{
    ++m_requests;
    m_isAwaiting = true;
    m_sentAt = now;
}

void LinkStatistics::requestAnswered(const SentRequest& request, const Answer& answer, qint64 now)
{
    m_isAwaiting = false;
    m_roundTrips.add(now - m_sentAt);
    countTripToValues(request, answer);
    ++(answer.kind == Answer::Accepted ? m_accepted : m_refused);
    switch (answer.kind) {
        case Answer::Accepted:
            if (request.content.service == Service::File)
                ++m_logins;
            break;
        case Answer::Refused:
            ++m_refusals[answer.status];
            break;
        case Answer::Retried:
            ++m_retries;
            break;
        case Answer::Abandoned:
        case Answer::LoginRefused:
            ++m_failures[answer.result];
            break;
        case Answer::Misfit: // the driver was not asked
            break;
    }
}

void LinkStatistics::countTripToValues(const SentRequest& request, const Answer& answer)
{
    if (!m_awaitsValues || request.content.isLogin())
        return;
    ++m_tripsSinceLogin;
    m_awaitsValues = request.content.service != Service::Read || answer.kind != Answer::Accepted;
    if (!m_awaitsValues)
        m_tripsToValues = qMax(m_tripsToValues, m_tripsSinceLogin);
}

void LinkStatistics::linkChanged(LinkState state, const QString& reason, int retryDelay)
{
    if (state == LinkState::Up) {
        ++m_connections;
        m_awaitsValues = true;
        m_tripsSinceLogin = 0;
    }
    // Without another attempt the host has closed the link.
    if (state != LinkState::Down || retryDelay < 0)
        return;
    if (m_isAwaiting)
        ++m_unanswered;
    m_isAwaiting = false;
    const bool isNamed = m_lossReasons.contains(reason) || m_lossReasons.size() < kMostReasons;
    ++m_lossReasons[isNamed ? reason : QStringLiteral("other reasons")];
}

} // namespace plc::host

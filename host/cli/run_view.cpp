#include "host/cli/run_view.h"

namespace plc {

QString linkText(LinkState state, const QString& peer, const QString& reason, int retryDelay)
{
    switch (state) {
        case LinkState::Connecting:
            return QStringLiteral("connecting to %1").arg(peer);
        case LinkState::Up:
            return QStringLiteral("connected to %1").arg(peer);
        case LinkState::Down:
            break;
    }
    if (retryDelay < 0)
        return QStringLiteral("closed the link to %1").arg(peer);
    return QStringLiteral("link to %1 lost: %2; next attempt in %3 ms")
        .arg(peer, reason)
        .arg(retryDelay);
}

QString summaryText(const TrafficCounters& counters, qint64 duration)
{
    return QStringLiteral("%1 requests, %2 accepted, %3 refused, link lost %4 times, in %5 s")
        .arg(counters.requests)
        .arg(counters.accepted)
        .arg(counters.refused)
        .arg(counters.linkLosses)
        .arg(double(duration) / 1000, 0, 'f', 1);
}

} // namespace plc

#include "cli/run_view.h"

#include "cli/value_lines.h"
#include "host/transfers/result_text.h"

namespace plc::cli {

QString linkText(host::LinkState state, const QString& peer, const QString& reason, int retryDelay)
{
    switch (state) {
        case host::LinkState::Connecting:
            return QStringLiteral("connecting to %1").arg(peer);
        case host::LinkState::Up:
            return QStringLiteral("connected to %1").arg(peer);
        case host::LinkState::Down:
            break;
    }
    if (retryDelay < 0)
        return QStringLiteral("closed the link to %1").arg(peer);
    return QStringLiteral("link to %1 lost: %2; next attempt in %3 ms")
        .arg(peer, reason)
        .arg(retryDelay);
}

QString refusedValueText(const host::DataPoint& point, int status)
{
    return QStringLiteral(
               "the PLC refuses %1 (%2) with %3: it does not give this address; all "
               "others are read, this one is tried now and then")
        .arg(point.text, addressText(point), host::statusText(status));
}

QString summaryText(const host::TrafficCounters& counters, qint64 duration)
{
    return QStringLiteral("%1 requests, %2 accepted, %3 refused, link lost %4 times, in %5 s")
        .arg(counters.requests)
        .arg(counters.accepted)
        .arg(counters.refused)
        .arg(counters.linkLosses)
        .arg(double(duration) / 1000, 0, 'f', 1);
}

} // namespace plc::cli

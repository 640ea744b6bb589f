#include "cli/once_command.h"

#include "cli/value_lines.h"

namespace plc::cli {

bool OnceCommand::prepare()
{
    if (!readCyclically(m_options.stationsOff))
        return false;
    m_patience.setSingleShot(true);
    QObject::connect(&m_patience, &QTimer::timeout, &m_patience, [this] {
        report(host::TransferOutcome::notSent(QStringLiteral("its turn did not come within %1 s")
                                                  .arg(double(m_options.duration) / 1000)));
    });
    if (m_options.duration > 0)
        m_patience.start(m_options.duration);
    return true;
}

void OnceCommand::begin()
{
    // Of stations that are switched off the PLC is asked nothing.
    if (isComplete())
        report(host::TransferOutcome());
    else
        startLink();
}

void OnceCommand::interrupted()
{
    report(host::TransferOutcome::notSent(QStringLiteral("interrupted")));
}

void OnceCommand::linkChanged(host::LinkState state, const QString& reason, int retryDelay)
{
    complainOfLoss(state, reason, retryDelay);
    if (state != host::LinkState::Down)
        return;
    const bool wasSent = runtime().counters().requests > 0;
    report(wasSent ? host::TransferOutcome::lost(reason) : host::TransferOutcome::notSent(reason));
}

void OnceCommand::requestSettled()
{
    if (isComplete())
        report(host::TransferOutcome());
}

host::TransferOutcome OnceCommand::outcome(int row, const host::TransferOutcome& missing)
{
    const host::ValueTable& values = runtime().values();
    const int station = values.point(row).station;
    if (values.wasRead(row))
        return host::TransferOutcome();
    if (values.isRefused(row))
        return host::TransferOutcome::refused(values.refusalStatus(row));
    if (runtime().isStationOff(station))
        return host::TransferOutcome::notSent(
            QStringLiteral("station %1 is switched off").arg(station));
    return missing;
}

bool OnceCommand::isComplete()
{
    const host::ValueTable& values = runtime().values();
    const auto isOpen = [&](int row) {
        return !values.wasRead(row) && !values.isRefused(row) &&
               !runtime().isStationOff(values.point(row).station);
    };
    while (m_settledRows < values.size() && !isOpen(m_settledRows))
        ++m_settledRows;
    return m_settledRows == values.size();
}

void OnceCommand::report(const host::TransferOutcome& missing)
{
    if (isFinished())
        return;
    const host::ValueTable& values = runtime().values();
    bool allDone = true;
    for (int row = 0; row < values.size(); ++row) {
        const host::TransferOutcome itsOutcome = outcome(row, missing);
        printRead({values.point(row), itsOutcome, values.bytes(row), values.isPieced(row)},
                  m_options.json);
        allDone = allDone && itsOutcome.isDone();
    }
    finish(allDone ? kExitDone : kExitRefused);
}

} // namespace plc::cli

#include "host/cli/once_command.h"

#include "host/cli/value_lines.h"

namespace plc {
bool OnceCommand::prepare()
{
    if (!readCyclically())
        return false;
    m_patience.setSingleShot(true);
    QObject::connect(&m_patience, &QTimer::timeout, &m_patience, [this] {
        report(TransferOutcome::notSent(QStringLiteral("its turn did not come within %1 s")
                                            .arg(double(options().duration) / 1000)));
    });
    if (options().duration > 0)
        m_patience.start(options().duration);
    return true;
}

void OnceCommand::begin()
{
    // Of stations that are switched off the PLC is asked nothing.
    if (isComplete())
        report(TransferOutcome());
    else
        LinkCommand::begin();
}

void OnceCommand::interrupted()
{
    report(TransferOutcome::notSent(QStringLiteral("interrupted")));
}

void OnceCommand::linkChanged(LinkState state, const QString& reason, int retryDelay)
{
    LinkCommand::linkChanged(state, reason, retryDelay);
    complainOfLoss(state, reason, retryDelay);
    if (state != LinkState::Down)
        return;
    const bool wasSent = runtime().counters().requests > 0;
    report(wasSent ? TransferOutcome::lost(reason) : TransferOutcome::notSent(reason));
}

void OnceCommand::requestSettled()
{
    if (isComplete())
        report(TransferOutcome());
}

TransferOutcome OnceCommand::outcome(int row, const TransferOutcome& missing)
{
    const ValueTable& values = runtime().values();
    const int station = values.point(row).station;
    if (values.wasRead(row))
        return TransferOutcome();
    if (values.isRefused(row))
        return TransferOutcome::refused(values.refusalStatus(row));
    if (runtime().isStationOff(station))
        return TransferOutcome::notSent(QStringLiteral("station %1 is switched off").arg(station));
    return missing;
}

bool OnceCommand::isComplete()
{
    const ValueTable& values = runtime().values();
    const auto isOpen = [&](int row) {
        return !values.wasRead(row) && !values.isRefused(row) &&
               !runtime().isStationOff(values.point(row).station);
    };
    while (m_settledRows < values.size() && !isOpen(m_settledRows))
        ++m_settledRows;
    return m_settledRows == values.size();
}

void OnceCommand::report(const TransferOutcome& missing)
{
    if (isFinished())
        return;
    const ValueTable& values = runtime().values();
    bool allDone = true;
    for (int row = 0; row < values.size(); ++row) {
        const TransferOutcome itsOutcome = outcome(row, missing);
        printRead(values.point(row), values.bytes(row), itsOutcome, options().json);
        allDone = allDone && itsOutcome.isDone();
    }
    finish(allDone ? kExitDone : kExitRefused);
}

} // namespace plc

#include "host/cli/once_command.h"

#include "host/cli/value_lines.h"

namespace plc {
namespace {

/// Passes after which a value that the PLC still does not give is given up. A refusal may have come
/// from a neighbour in the same request, which differs from pass to pass.
constexpr int kPasses = 2;

} // namespace

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

void OnceCommand::interrupted()
{
    report(TransferOutcome::notSent(QStringLiteral("interrupted")));
}

void OnceCommand::linkChanged(LinkState state, const QString& reason, int retryDelay)
{
    LinkCommand::linkChanged(state, reason, retryDelay);
    complainOfLoss(state, reason, retryDelay);
    if (state == LinkState::Down)
        report(TransferOutcome::lost(reason));
}

void OnceCommand::requestAnswered(const SentRequest& request, const Answer& answer,
                                  const QByteArray& reply)
{
    LinkCommand::requestAnswered(request, answer, reply);
    if (answer.kind == Answer::Abandoned)
        m_refusal = transferOutcome(answer);
}

void OnceCommand::requestSettled()
{
    if (allRead() || runtime().session().passes() >= kPasses)
        report(m_refusal);
}

bool OnceCommand::allRead()
{
    const ValueTable& values = runtime().values();
    for (int row = 0; row < values.size(); ++row) {
        if (!values.wasRead(row))
            return false;
    }
    return true;
}

void OnceCommand::report(const TransferOutcome& missing)
{
    if (isFinished())
        return;
    const ValueTable& values = runtime().values();
    for (int row = 0; row < values.size(); ++row) {
        printRead(values.point(row), values.bytes(row),
                  values.wasRead(row) ? TransferOutcome() : missing, options().json);
    }
    finish(allRead() ? kExitDone : kExitRefused);
}

} // namespace plc

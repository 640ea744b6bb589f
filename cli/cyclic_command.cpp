#include "cli/cyclic_command.h"

namespace plc::cli {

void CyclicCommand::begin()
{
    aboutToBegin();
    m_duration.setSingleShot(true);
    m_duration.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_duration, &QTimer::timeout, &m_duration,
                     [this] { end(wasServed() ? kExitDone : kExitRefused); });
    if (m_options.duration > 0)
        m_duration.start(m_options.duration);
    startLink();
}

/// Whether the PLC answered with success, or was not asked since all stations are off.
bool CyclicCommand::wasServed()
{
    return m_served.hasAny() || (runtime().session().linkState() == host::LinkState::Up &&
                                 runtime().counters().requests == 0);
}

void CyclicCommand::end(ExitCode code)
{
    if (isFinished() || m_end)
        return;
    m_end = code;
    settled();
}

void CyclicCommand::settled()
{
    // What settled the last one may still be told; the link is closed behind that.
    if (m_end && !hasOpenTransfers())
        QTimer::singleShot(0, &m_duration, [this] { endNow(); });
}

void CyclicCommand::endNow()
{
    if (isFinished() || m_isClosing)
        return;
    m_isClosing = true;
    aboutToEnd();
    link().stop();
    ended();
    finish(hasFailed() ? kExitRefused : *m_end);
}

void CyclicCommand::ServedReads::requestAnswered(const host::SentRequest& request,
                                                 const host::Answer& answer, const QByteArray&)
{
    if (answer.kind == host::Answer::Accepted && !request.content.isLogin())
        m_hasAny = true;
}

} // namespace plc::cli

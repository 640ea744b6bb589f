#include "host/runtime/runtime_front.h"

#include <utility>

namespace plc::host {
namespace {

TransferOutcome endedUnsent()
{
    return TransferOutcome::notSent(QStringLiteral("the host has ended"));
}

} // namespace

RuntimeFront::RuntimeFront(Runtime* runtime, std::function<void()> wake)
    : m_runtime(runtime), m_wake(wake ? std::move(wake) : [] {})
{
}

RuntimeFront::~RuntimeFront()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    for (const PostedWrite& write : takePosted())
        write.settled(endedUnsent());
}

void RuntimeFront::write(const DataPoint& point, const QVector<values::Value>& values,
                         WriteSettled settled)
{
    if (!settled)
        settled = [](const TransferOutcome&) {};
    bool isEnding = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        isEnding = m_isEnding;
        if (!isEnding)
            m_posted.push_back({point, values, settled});
    }
    // Posted from inside a settling at the end.
    if (isEnding)
        settled(endedUnsent());
    else
        m_wake();
}

void RuntimeFront::carryOut(qint64 now)
{
    for (PostedWrite& write : takePosted())
        m_runtime->write(write.point, write.values, now, std::move(write.settled));
}

std::deque<RuntimeFront::PostedWrite> RuntimeFront::takePosted()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_posted, {});
}

} // namespace plc::host

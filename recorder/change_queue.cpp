#include "recorder/change_queue.h"

#include <algorithm>
#include <utility>

namespace plc::recorder {
namespace {

/// Of a change besides its value.
constexpr qint64 kChangeOverhead = 64;
/// Changes that go into one transaction.
constexpr int kMostAtOnce = 100000;

} // namespace

void ChangeQueue::add(const QVector<Change>& changes, qint64 now, qint64 steady)
{
    if (m_isDropping ? !isHalfEmpty() : isFullFor(changes)) {
        drop(changes);
        return;
    }
    Portion portion;
    portion.changes = changes;
    portion.now = now;
    portion.steady = steady;
    portion.isBehindPause = std::exchange(m_isInterrupted, false);
    if (m_isDropping) {
        portion.isBehindLoss = true;
        for (auto lost = m_lost.constBegin(); lost != m_lost.constEnd(); ++lost)
            portion.lost.append({lost.key(), *lost});
        m_lost.clear();
        m_isDropping = false;
    }
    m_changes += portion.changes.size() + portion.lost.size();
    m_bytes += bytesOf(portion.changes) + bytesOf(portion.lost);
    const bool tellsTimeOnly = changes.isEmpty() && !portion.beginsAnew();
    if (tellsTimeOnly && !m_portions.empty() && m_portions.back().now <= now) {
        m_portions.back().now = now;
        m_portions.back().steady = steady;
    } else {
        m_portions.push_back(portion);
    }
}

std::optional<ChangeQueue::Portion> ChangeQueue::take()
{
    if (m_portions.empty())
        return {};
    Portion first = m_portions.front();
    m_portions.pop_front();
    m_changes -= first.changes.size() + first.lost.size();
    m_bytes -= bytesOf(first.changes) + bytesOf(first.lost);
    // What holds behind a loss or a pause does so from that portion's time on.
    while (!first.beginsAnew() && !m_portions.empty() && goesAlong(first)) {
        const Portion& next = m_portions.front();
        m_changes -= next.changes.size();
        m_bytes -= bytesOf(next.changes);
        first.changes += next.changes;
        first.now = next.now;
        first.steady = next.steady;
        m_portions.pop_front();
    }
    return first;
}

qint64 ChangeQueue::bytesOf(const QVector<Change>& changes)
{
    qint64 bytes = 0;
    for (const Change& change : changes)
        bytes += kChangeOverhead + change.sample.bytes.size();
    return bytes;
}

/// A portion that is larger than the whole queue may be goes in while the queue is empty.
bool ChangeQueue::isFullFor(const QVector<Change>& changes) const
{
    return m_changes > 0 && (m_changes + changes.size() > m_limits.changes ||
                             m_bytes + bytesOf(changes) > m_limits.bytes);
}

bool ChangeQueue::isHalfEmpty() const
{
    return m_changes <= m_limits.changes / 2 && m_bytes <= m_limits.bytes / 2;
}

void ChangeQueue::drop(const QVector<Change>& changes)
{
    // Also what only told the time: until then nothing is known any more.
    m_isDropping = true;
    m_dropped += changes.size();
    for (const Change& change : changes)
        m_lost.insert(change.series, change.sample);
}

/// The clock may have been set back, which the recorder has to see.
bool ChangeQueue::goesAlong(const Portion& first) const
{
    const Portion& next = m_portions.front();
    return !next.beginsAnew() && next.now >= first.now &&
           first.changes.size() + next.changes.size() <= kMostAtOnce;
}

} // namespace plc::recorder

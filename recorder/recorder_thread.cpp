#include "recorder/recorder_thread.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "recorder/series_table.h"
#include "values/steady_time.h"

namespace plc::recorder {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kAttemptInterval(1);

} // namespace

class RecorderThread::Implementation {
public:
    Implementation(std::unique_ptr<Recorder> recorder, const QueueLimits& limits)
        : m_recorder(std::move(recorder)), m_queue(limits)
    {
    }

    /// The thread.
    void run();
    Expected<void> drain(std::chrono::milliseconds patience);
    /// False: the disk does not answer, and the thread lasts on.
    bool end(const LastPatience& patience);

    int series(const SeriesDescription& description)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_series.find(description);
    }
    void append(const QVector<Change>& changes, qint64 now)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_queue.add(changes, now, values::steadyTime());
        m_wake.notify_one();
    }
    void interrupt()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_queue.interrupt();
    }
    RecorderStatus status() const;

private:
    using Lock = std::unique_lock<std::mutex>;

    void record(Lock* lock, ChangeQueue::Portion portion);
    bool waitForRetry(Lock* lock);
    void translate(QVector<Change>* changes);
    void tell(const Expected<void>& outcome, qint64 usedBytes);

    std::unique_ptr<Recorder> m_recorder; ///< Of the thread, without the lock.

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    SeriesTable m_series;
    QHash<int, int> m_ids; ///< By the numbers of m_series; of the thread.
    ChangeQueue m_queue;
    bool m_isBusy = false; ///< The thread has taken something from the queue:
    qint64 m_underWay = 0; ///< so many changes.
    RecorderStatus m_status;
    bool m_isAwaited = false;          ///< By drain(): the next attempt is not put off.
    qint64 m_attempts = 0;             ///< Begun.
    qint64 m_failedAttempt = 0;        ///< The number of the last one that failed.
    std::condition_variable m_settled; ///< All is recorded, or an attempt has failed.
    bool m_isEnding = false;
    Clock::time_point m_deadline; ///< Of the attempts.
    bool m_isLeftAlone = false;   ///< Nothing more is begun.
    bool m_hasEnded = false;
    std::condition_variable m_ended;
};

Expected<void> RecorderThread::Implementation::drain(std::chrono::milliseconds patience)
{
    Lock lock(m_mutex);
    // One that was begun before says nothing of what the disk takes now.
    const qint64 earlier = m_attempts;
    m_isAwaited = true;
    m_wake.notify_one();
    const auto isIdle = [this] { return m_queue.isEmpty() && !m_isBusy; };
    const bool isInTime =
        m_settled.wait_for(lock, patience, [&] { return isIdle() || m_failedAttempt > earlier; });
    m_isAwaited = false;
    if (isInTime && isIdle())
        return {};
    return Error{isInTime ? m_status.error : QStringLiteral("the disk does not answer")};
}

bool RecorderThread::Implementation::end(const LastPatience& patience)
{
    Lock lock(m_mutex);
    m_isEnding = true;
    m_deadline = Clock::now() + patience.attempts;
    m_wake.notify_one();
    m_isLeftAlone =
        !m_ended.wait_until(lock, m_deadline + patience.answer, [this] { return m_hasEnded; });
    return m_hasEnded;
}

RecorderStatus RecorderThread::Implementation::status() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    RecorderStatus status = m_status;
    status.waiting = m_queue.waiting() + m_underWay;
    status.dropped += m_queue.dropped();
    return status;
}

void RecorderThread::Implementation::run()
{
    Lock lock(m_mutex);
    for (;;) {
        if (m_isLeftAlone)
            break;
        std::optional<ChangeQueue::Portion> portion = m_queue.take();
        if (portion) {
            record(&lock, std::move(*portion));
            continue;
        }
        if (m_isEnding)
            break;
        m_wake.wait(lock);
    }
    if (m_queue.hasUntoldLoss() || m_queue.waiting() > 0)
        m_recorder->giveUp({});
    // Which writes, and nobody may wait for the disk under the lock.
    lock.unlock();
    m_recorder.reset();
    lock.lock();
    m_hasEnded = true;
    m_ended.notify_all();
}

/// Tries until it succeeds, or it is given up at the end.
void RecorderThread::Implementation::record(Lock* lock, ChangeQueue::Portion portion)
{
    m_isBusy = true;
    m_underWay = portion.changes.size() + portion.lost.size();
    translate(&portion.changes);
    translate(&portion.lost);
    if (portion.isBehindLoss)
        m_recorder->giveUp(portion.lost);
    if (portion.isBehindPause)
        m_recorder->interrupt();
    for (;;) {
        const qint64 attempt = ++m_attempts;
        m_isAwaited = false;
        lock->unlock();
        const Expected<void> outcome =
            m_recorder->append(portion.changes, portion.now, portion.steady);
        // The database is asked without the lock, which append() waits for.
        const qint64 usedBytes = m_recorder->usedBytes();
        lock->lock();
        tell(outcome, usedBytes);
        if (outcome)
            break;
        m_failedAttempt = attempt;
        m_settled.notify_all();
        if (!waitForRetry(lock)) {
            m_recorder->giveUp(portion.changes);
            m_status.dropped += portion.changes.size();
            break;
        }
    }
    m_underWay = 0;
    m_isBusy = false;
    m_settled.notify_all();
}

bool RecorderThread::Implementation::waitForRetry(Lock* lock)
{
    if (!m_isEnding)
        m_wake.wait_for(*lock, kAttemptInterval, [this] { return m_isEnding || m_isAwaited; });
    else
        m_wake.wait_for(*lock, kAttemptInterval / 10);
    return !m_isEnding || Clock::now() < m_deadline;
}

/// From the numbers of append() to those of the recorder.
void RecorderThread::Implementation::translate(QVector<Change>* changes)
{
    for (Change& change : *changes) {
        auto id = m_ids.find(change.series);
        if (id == m_ids.end()) {
            const SeriesDescription* const description = m_series.description(change.series);
            id = m_ids.insert(change.series, description ? m_recorder->series(*description) : 0);
        }
        change.series = *id;
    }
}

void RecorderThread::Implementation::tell(const Expected<void>& outcome, qint64 usedBytes)
{
    m_status.error = outcome ? m_recorder->maintenanceError() : outcome.error().text;
    m_status.changedFiles = m_recorder->changedFiles();
    m_status.recorded = m_recorder->recordedChanges();
    m_status.usedBytes = usedBytes;
}

Expected<std::unique_ptr<RecorderThread>> RecorderThread::start(const QString& path,
                                                                const Limits& limits, qint64 now,
                                                                const QueueLimits& queue,
                                                                bool* isMediumFailing)
{
    Expected<std::unique_ptr<Recorder>> recorder =
        Recorder::open(path, limits, now, isMediumFailing);
    if (!recorder)
        return recorder.error();
    return std::unique_ptr<RecorderThread>(
        new RecorderThread(std::make_shared<Implementation>(std::move(*recorder), queue)));
}

RecorderThread::RecorderThread(std::shared_ptr<Implementation> implementation)
    : m_implementation(std::move(implementation)),
      m_thread([shared = m_implementation] { shared->run(); })
{
}

RecorderThread::~RecorderThread()
{
    finish();
}

Expected<void> RecorderThread::drain(std::chrono::milliseconds patience)
{
    return m_implementation->drain(patience);
}

RecorderStatus RecorderThread::finish(const LastPatience& patience)
{
    if (m_thread.joinable()) {
        if (m_implementation->end(patience))
            m_thread.join();
        else
            m_thread.detach();
    }
    return status();
}

int RecorderThread::series(const SeriesDescription& description)
{
    return m_implementation->series(description);
}

void RecorderThread::append(const QVector<Change>& changes, qint64 now)
{
    m_implementation->append(changes, now);
}

void RecorderThread::interrupt()
{
    m_implementation->interrupt();
}

RecorderStatus RecorderThread::status() const
{
    return m_implementation->status();
}

} // namespace plc::recorder

#include "recorder/recorder_thread.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "recorder/series_table.h"
#include "values/steady_time.h"

namespace plc::recorder {
namespace {

constexpr std::chrono::seconds kAttemptInterval(1);
/// How long it is tried at the end to record what waits.
constexpr std::chrono::seconds kLastPatience(5);

} // namespace

class RecorderThread::Implementation {
public:
    Implementation(std::unique_ptr<Recorder> recorder, const QueueLimits& limits)
        : m_recorder(std::move(recorder)), m_queue(limits), m_thread([this] { run(); })
    {
    }
    ~Implementation();

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

    void run();
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
    qint64 m_underWay = 0; ///< Changes that the thread has taken from the queue.
    RecorderStatus m_status;
    bool m_isEnding = false;
    std::chrono::steady_clock::time_point m_deadline;

    std::thread m_thread; ///< The last member: it uses the others.
};

RecorderThread::Implementation::~Implementation()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
        m_deadline = std::chrono::steady_clock::now() + kLastPatience;
        m_wake.notify_one();
    }
    m_thread.join();
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
        std::optional<ChangeQueue::Portion> portion = m_queue.take();
        if (portion) {
            record(&lock, std::move(*portion));
            continue;
        }
        if (m_isEnding)
            break;
        m_wake.wait(lock);
    }
    if (m_queue.hasUntoldLoss())
        m_recorder->giveUp({});
    m_recorder.reset();
}

/// Tries until it succeeds, or it is given up at the end.
void RecorderThread::Implementation::record(Lock* lock, ChangeQueue::Portion portion)
{
    const qint64 count = portion.changes.size() + portion.lost.size();
    m_underWay = count;
    translate(&portion.changes);
    translate(&portion.lost);
    if (portion.isBehindLoss)
        m_recorder->giveUp(portion.lost);
    if (portion.isBehindPause)
        m_recorder->interrupt();
    for (;;) {
        lock->unlock();
        const Expected<void> outcome =
            m_recorder->append(portion.changes, portion.now, portion.steady);
        // The database is asked without the lock, which append() waits for.
        const qint64 usedBytes = m_recorder->usedBytes();
        lock->lock();
        tell(outcome, usedBytes);
        if (outcome)
            break;
        if (!waitForRetry(lock)) {
            m_recorder->giveUp(portion.changes);
            m_status.dropped += portion.changes.size();
            break;
        }
    }
    m_underWay = 0;
}

bool RecorderThread::Implementation::waitForRetry(Lock* lock)
{
    if (!m_isEnding)
        m_wake.wait_for(*lock, kAttemptInterval, [this] { return m_isEnding; });
    else
        m_wake.wait_for(*lock, kAttemptInterval / 10);
    return !m_isEnding || std::chrono::steady_clock::now() < m_deadline;
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
    m_status.recorded = m_recorder->recordedChanges();
    m_status.usedBytes = usedBytes;
}

Expected<std::unique_ptr<RecorderThread>> RecorderThread::start(const QString& path,
                                                                const Limits& limits, qint64 now,
                                                                const QueueLimits& queue)
{
    Expected<std::unique_ptr<Recorder>> recorder = Recorder::open(path, limits, now);
    if (!recorder)
        return recorder.error();
    return std::unique_ptr<RecorderThread>(
        new RecorderThread(std::make_unique<Implementation>(std::move(*recorder), queue)));
}

RecorderThread::RecorderThread(std::unique_ptr<Implementation> implementation)
    : m_implementation(std::move(implementation))
{
}

RecorderThread::~RecorderThread() = default;

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

#ifndef PLC_HOST_RUNTIME_RUNTIME_FRONT_H
#define PLC_HOST_RUNTIME_RUNTIME_FRONT_H

#include <QtCore/QVector>

#include <deque>
#include <functional>
#include <mutex>

#include "host/runtime/runtime.h"
#include "values/export.h"

namespace plc::host {

/// The side of a runtime that threads other than its owner use: a user interface, for example.
///
/// 1. The owner makes the front, calls carryOut(), and ends the front before the runtime.
/// 2. Any thread may call write() and snapshot(), until the owner begins to end the front.
/// 3. Each posted write is settled exactly once, in the owner's thread: when its outcome is known,
///    or when the front or the runtime ends.
/// 4. The owner never waits for longer than another thread takes to copy the values.
class PLC_HOST_EXPORT RuntimeFront {
public:
    /// `wake` is called in the thread that posts a write; it has the owner call carryOut() soon. It
    /// is empty if the owner does so by itself.
    RuntimeFront(Runtime* runtime, std::function<void()> wake);
    /// Writes that were posted and not carried out end unsent.
    ~RuntimeFront();
    RuntimeFront(const RuntimeFront&) = delete;
    RuntimeFront& operator=(const RuntimeFront&) = delete;

    /// Posts a write. `settled` is called in the owner's thread; it may be empty.
    void write(const DataPoint& point, const QVector<values::Value>& values, WriteSettled settled);
    /// The values and the state of the link at one moment. `now` is the owner's clock.
    RuntimeSnapshot snapshot(qint64 now) const { return m_runtime->snapshot(now); }

    /// The owner only: hands the posted writes to the runtime. The session may have actions
    /// afterwards.
    void carryOut(qint64 now);

private:
    struct PostedWrite {
        DataPoint point;
        QVector<values::Value> values;
        WriteSettled settled;
    };

    std::deque<PostedWrite> takePosted();

    Runtime* const m_runtime;
    const std::function<void()> m_wake;
    std::mutex m_mutex;
    // Under m_mutex:
    std::deque<PostedWrite> m_posted;
    bool m_isEnding = false;
};

} // namespace plc::host

#endif

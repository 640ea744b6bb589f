#ifndef PLC_TESTS_SUPPORT_GATE_H
#define PLC_TESTS_SUPPORT_GATE_H

#include <condition_variable>
#include <mutex>

namespace plc::test {

/// Rung by one thread, heard by another one.
class Bell {
public:
    void ring()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isRung = true;
        m_changed.notify_all();
    }
    /// Until it was rung since the last call.
    void await()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_isRung; });
        m_isRung = false;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isRung = false;
};

/// What threads wait at while it is closed.
class Gate {
public:
    void pass()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_hasArrived = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_isOpen; });
        m_hasArrived = false;
    }
    /// Until a thread stands before it.
    void awaitArrival()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_hasArrived; });
    }
    void setOpen(bool isOpen)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isOpen = isOpen;
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isOpen = true;
    bool m_hasArrived = false;
};

} // namespace plc::test

#endif

#ifndef PLC_SERVICE_DISK_THREAD_H
#define PLC_SERVICE_DISK_THREAD_H

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

namespace plc::service {

/// A thread that waits for the disk in the place of another one, its owner: it does what it is
/// given, one after the other, and what is to follow is done in the thread of the owner, in the
/// same order.
///
/// Thread safety: all functions are called by the owner's thread alone.
class DiskThread {
public:
    using Completion = std::function<void()>;
    /// Done in the thread of the disk. It must hold all that it uses: a disk that does not answer
    /// lets it outlast the owner.
    using Work = std::function<Completion()>;
    /// Called by the thread of the disk when deliver() is to be called.
    using Wake = std::function<void()>;

    explicit DiskThread(Wake wake);
    /// Nothing that waits is begun any more, and nothing is completed. Waits for what is under way,
    /// for some seconds at most.
    ~DiskThread();
    DiskThread(const DiskThread&) = delete;
    DiskThread& operator=(const DiskThread&) = delete;

    /// Nothing is done behind finish().
    void submit(Work work);
    /// Does what follows what has been done.
    void deliver();
    /// Waits until all is done, with what is submitted meanwhile, and delivers it. False: that
    /// takes longer than `patience`.
    bool drain(std::chrono::milliseconds patience);
    /// The same, and the thread ends. Where it takes longer, what waits is not begun any more, and
    /// what is under way is not completed. `wake` is not called any more.
    bool finish(std::chrono::milliseconds patience);

private:
    struct State;

    static void run(const std::shared_ptr<State>& state);
    void end(std::chrono::steady_clock::time_point deadline);

    const std::shared_ptr<State> m_state; ///< Of the thread as well, which may last longer.
    std::thread m_thread;
};

} // namespace plc::service

#endif

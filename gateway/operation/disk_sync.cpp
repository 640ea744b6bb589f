#include "gateway/operation/disk_sync.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace plc::gateway {

DiskSync::DiskSync(Sync sync) : m_sync(std::move(sync)), m_thread([this] { run(); }) {}

DiskSync::~DiskSync()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void DiskSync::begin(int file)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_files.push_back(file);
    }
    m_changed.notify_all();
}

int DiskSync::running() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return int(m_files.size());
}

std::optional<int> DiskSync::takeResult()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_result, std::nullopt);
}

void DiskSync::run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_isEnding || !m_files.empty(); });
        if (m_files.empty())
            return;
        const int file = m_files.front();
        lock.unlock();
        const int error = m_sync(file);
        ::close(file);
        lock.lock();
        m_files.pop_front();
        if (m_result.value_or(0) == 0)
            m_result = error;
    }
}

int bringOntoDisk(int file)
{
    if (::fdatasync(file) == 0 || errno == EINVAL || errno == EROFS)
        return 0;
    return errno;
}

} // namespace plc::gateway

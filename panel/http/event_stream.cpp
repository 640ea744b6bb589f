#include "panel/http/event_stream.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace plc::panel {

bool EventStream::push(std::shared_ptr<const QByteArray> events)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_state != State::Open)
        return false;
    const int size = int(events->size());
    const bool isOpening = !m_wake;
    if (!isOpening && m_waiting + size > m_mostWaiting) {
        end();
        wake(std::move(lock));
        return false;
    }
    (isOpening ? m_opening : m_waiting) += size;
    if (size > 0)
        m_events.push_back(std::move(events));
    wake(std::move(lock));
    return true;
}

bool EventStream::isOpen() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_state == State::Open;
}

void EventStream::close()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_state == State::Open)
        m_state = State::Closing;
    wake(std::move(lock));
}

int EventStream::waiting() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return int(m_waiting);
}

void EventStream::begin(std::function<void()> wake)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_wake = std::move(wake);
}

EventStream::Reading EventStream::read(char* buffer, std::size_t most, std::size_t* count)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    *count = 0;
    if (m_state == State::Ended)
        return Reading::CutOff;
    while (*count < most && !m_events.empty()) {
        const QByteArray& event = *m_events.front();
        const std::size_t step =
            std::min(most - *count, std::size_t(event.size()) - std::size_t(m_read));
        std::memcpy(buffer + *count, event.constData() + m_read, step);
        *count += step;
        takeFront(int(step));
    }
    if (*count > 0)
        return Reading::Bytes;
    return m_state == State::Closing ? Reading::End : Reading::Nothing;
}

void EventStream::abandon()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    end();
}

void EventStream::end()
{
    m_state = State::Ended;
    m_events.clear();
    m_opening = 0;
    m_waiting = 0;
    m_read = 0;
}

void EventStream::takeFront(int count)
{
    m_read += count;
    (m_opening > 0 ? m_opening : m_waiting) -= count;
    if (m_read < int(m_events.front()->size()))
        return;
    m_events.pop_front();
    m_read = 0;
}

/// Not under the lock: who is woken may read at once.
void EventStream::wake(std::unique_lock<std::mutex> lock)
{
    const std::function<void()> wake = m_wake;
    lock.unlock();
    if (wake)
        wake();
}

} // namespace plc::panel

#ifndef PLC_PANEL_HTTP_EVENT_STREAM_H
#define PLC_PANEL_HTTP_EVENT_STREAM_H

#include <QtCore/QByteArray>

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace plc::panel {

/// Events to one client (text/event-stream). What waits for the client is shared with other
/// streams, and bounded: a client that does not keep up is cut off, and has to begin anew.
///
/// Thread safety: all functions may be called by any thread.
class EventStream {
public:
    static constexpr int kMostWaiting = 256 * 1024; ///< Bytes.

    explicit EventStream(int mostWaiting = kMostWaiting) : m_mostWaiting(mostWaiting) {}
    EventStream(const EventStream&) = delete;
    EventStream& operator=(const EventStream&) = delete;

    /// Sends one or more whole events as they are, with their empty lines. What is pushed before
    /// the response was given is the opening, which may be of any size; of what comes behind it
    /// no more than the bound may wait. Returns false, and cuts the stream off, beyond that; also
    /// when it has ended already.
    bool push(std::shared_ptr<const QByteArray> events);
    /// False once the stream was closed or cut off, or the client was found to be gone. That shows
    /// only when something is sent to it.
    bool isOpen() const;
    /// Ends the stream when the client has read what waits.
    void close();
    /// Bytes that wait, without the opening.
    int waiting() const;

    /// What is read of a stream: so many bytes, nothing yet, or one of the ends.
    enum class Reading { Bytes, Nothing, End, CutOff };

    /// For the server: the opening is complete. `wake` is called, by any thread, when there is
    /// something to read after there was nothing.
    void begin(std::function<void()> wake);
    /// For the server: copies at most so many bytes of what waits.
    Reading read(char* buffer, std::size_t most, std::size_t* count);
    /// For the server: the client is gone.
    void abandon();

private:
    enum class State { Open, Closing, Ended };

    void end();
    void takeFront(int count);
    void wake(std::unique_lock<std::mutex> lock);

    const int m_mostWaiting;
    mutable std::mutex m_mutex; ///< Guards all below.
    std::deque<std::shared_ptr<const QByteArray>> m_events;
    std::function<void()> m_wake;
    State m_state = State::Open;
    qint64 m_opening = 0; ///< Bytes of the opening that were not read.
    qint64 m_waiting = 0; ///< Bytes behind it.
    int m_read = 0;       ///< Bytes of the first event that were read.
};

} // namespace plc::panel

#endif

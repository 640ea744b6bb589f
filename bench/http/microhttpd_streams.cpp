// Sends a frame of about 20 KB every second to whoever connects, by libmicrohttpd.

#include <microhttpd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>

namespace {

struct Stream {
    MHD_Connection* connection = nullptr;
    std::shared_ptr<const std::string> frame;
    std::size_t sent = 0;
    bool isSuspended = false;
};

std::mutex mutex;
std::set<Stream*> streams;

ssize_t read(void* cls, std::uint64_t, char* buffer, std::size_t most)
{
    const std::lock_guard<std::mutex> lock(mutex);
    Stream* stream = static_cast<Stream*>(cls);
    if (!stream->frame) {
        stream->isSuspended = true;
        MHD_suspend_connection(stream->connection);
        return 0;
    }
    const std::size_t count = std::min(most, stream->frame->size() - stream->sent);
    std::memcpy(buffer, stream->frame->data() + stream->sent, count);
    stream->sent += count;
    if (stream->sent == stream->frame->size())
        stream->frame.reset();
    return ssize_t(count);
}

void end(void* cls)
{
    const std::lock_guard<std::mutex> lock(mutex);
    streams.erase(static_cast<Stream*>(cls));
    delete static_cast<Stream*>(cls);
}

MHD_Result answer(void*, MHD_Connection* connection, const char*, const char*, const char*,
                  const char*, std::size_t*, void**)
{
    Stream* stream = new Stream;
    stream->connection = connection;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        streams.insert(stream);
    }
    MHD_Response* response =
        MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, 16384, &read, stream, &end);
    MHD_add_response_header(response, "Content-Type", "text/event-stream");
    const MHD_Result queued = MHD_queue_response(connection, 200, response);
    MHD_destroy_response(response);
    return queued;
}

} // namespace

int main(int, char** arguments)
{
    const auto frame =
        std::make_shared<const std::string>("data: ~" + std::string(20000, 'x') + "\n\n");
    if (!MHD_start_daemon(MHD_USE_EPOLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME,
                          std::uint16_t(std::stoi(arguments[1])), nullptr, nullptr, &answer,
                          nullptr, MHD_OPTION_CONNECTION_MEMORY_LIMIT, std::size_t(16384),
                          MHD_OPTION_END))
        return 1;
    for (;;) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        const std::lock_guard<std::mutex> lock(mutex);
        for (Stream* stream : streams) {
            if (stream->frame)
                continue; // has not read the one before
            stream->frame = frame;
            stream->sent = 0;
            if (stream->isSuspended)
                MHD_resume_connection(stream->connection);
            stream->isSuspended = false;
        }
    }
}

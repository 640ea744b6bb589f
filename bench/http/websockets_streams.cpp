// Sends a frame of about 20 KB every second to whoever connects, by libwebsockets.

#include <libwebsockets.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kBlock = 16384;

struct Stream {
    const std::string* frame;
    std::size_t sent;
};

const std::string kFrame = "data: ~" + std::string(20000, 'x') + "\n\n";

int begin(lws* connection)
{
    std::vector<unsigned char> buffer(LWS_PRE + 1024);
    unsigned char* start = buffer.data() + LWS_PRE;
    unsigned char* at = start;
    unsigned char* last = buffer.data() + buffer.size() - 1;
    if (lws_add_http_common_headers(connection, 200, "text/event-stream",
                                    LWS_ILLEGAL_HTTP_CONTENT_LEN, &at, last) ||
        lws_finalize_write_http_header(connection, start, &at, last))
        return 1;
    lws_set_timeout(connection, NO_PENDING_TIMEOUT, 0);
    lws_set_timer_usecs(connection, LWS_USEC_PER_SEC);
    return 0;
}

/// What is written needs room before it, and so is copied.
int send(lws* connection, Stream* stream)
{
    if (!stream->frame)
        return 0;
    unsigned char buffer[LWS_PRE + kBlock];
    const std::size_t count = std::min(kBlock, stream->frame->size() - stream->sent);
    std::memcpy(buffer + LWS_PRE, stream->frame->data() + stream->sent, count);
    if (lws_write(connection, buffer + LWS_PRE, count, LWS_WRITE_HTTP) != int(count))
        return 1;
    stream->sent += count;
    if (stream->sent == stream->frame->size())
        stream->frame = nullptr;
    else
        lws_callback_on_writable(connection);
    return 0;
}

int call(lws* connection, lws_callback_reasons reason, void* user, void* in, std::size_t size)
{
    Stream* stream = static_cast<Stream*>(user);
    switch (reason) {
        case LWS_CALLBACK_HTTP:
            return begin(connection);
        case LWS_CALLBACK_TIMER:
            if (!stream->frame)
                *stream = {&kFrame, 0};
            lws_set_timer_usecs(connection, LWS_USEC_PER_SEC);
            lws_callback_on_writable(connection);
            return 0;
        case LWS_CALLBACK_HTTP_WRITEABLE:
            return send(connection, stream);
        default:
            return lws_callback_http_dummy(connection, reason, user, in, size);
    }
}

} // namespace

int main(int, char** arguments)
{
    const lws_protocols protocols[] = {{"http", &call, sizeof(Stream), 0, 0, nullptr, 0},
                                       {nullptr, nullptr, 0, 0, 0, nullptr, 0}};
    lws_http_mount mount = {};
    mount.mountpoint = "/";
    mount.mountpoint_len = 1;
    mount.origin_protocol = LWSMPRO_CALLBACK;
    mount.protocol = "http";
    lws_context_creation_info info = {};
    info.port = std::stoi(arguments[1]);
    info.protocols = protocols;
    info.mounts = &mount;
    lws_set_log_level(LLL_ERR, nullptr);
    lws_context* context = lws_create_context(&info);
    while (context && lws_service(context, 0) >= 0) {
    }
    return 1;
}

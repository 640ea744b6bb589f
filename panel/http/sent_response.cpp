#include "panel/http/sent_response.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace plc::panel {
namespace {

/// Bytes that are sent at once. libmicrohttpd would let a stream fill all memory of its connection.
constexpr std::size_t kBlock = std::size_t(32) * 1024;
/// Of chunks, which are made in the memory of the connection: the block that libmicrohttpd makes
/// for each response besides is not used.
constexpr std::size_t kUnusedBlock = 1024;

/// What the content of all responses may do in a browser: nothing but show what this server gives.
const std::pair<const char*, const char*> kHeaders[] = {
    {"Content-Security-Policy",
     "default-src 'self'; base-uri 'none'; form-action 'self'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cross-Origin-Resource-Policy", "same-origin"}};

/// A stream that is being sent.
class SentStream {
public:
    SentStream(std::shared_ptr<EventStream> stream, ServerCore* core,
               std::shared_ptr<Connection> connection)
        : m_stream(std::move(stream)), m_core(core), m_connection(std::move(connection))
    {
        ++m_core->streams;
        m_stream->begin([suspension = m_connection->suspension] { suspension->wake(); });
    }
    ~SentStream()
    {
        m_stream->abandon();
        --m_core->streams;
    }
    SentStream(const SentStream&) = delete;
    SentStream& operator=(const SentStream&) = delete;

    ssize_t read(quint64 position, char* buffer, std::size_t most)
    {
        m_core->sent(*m_connection, qint64(position));
        for (;;) {
            std::size_t count = 0;
            switch (m_stream->read(buffer, most, &count)) {
                case EventStream::Reading::Bytes:
                    return ssize_t(count);
                case EventStream::Reading::End:
                    return MHD_CONTENT_READER_END_OF_STREAM;
                case EventStream::Reading::CutOff:
                    return cutOff();
                case EventStream::Reading::Nothing:
                    break;
            }
            if (m_connection->suspension->suspend())
                return 0;
            if (m_connection->suspension->hasEnded())
                return MHD_CONTENT_READER_END_WITH_ERROR;
        }
    }

private:
    ssize_t cutOff()
    {
        m_connection->suspension->expire();
        return MHD_CONTENT_READER_END_WITH_ERROR;
    }

    const std::shared_ptr<EventStream> m_stream;
    ServerCore* const m_core;
    const std::shared_ptr<Connection> m_connection;
};

/// A body that is being sent.
class SentBody {
public:
    SentBody(QByteArray body, ServerCore* core, std::shared_ptr<Connection> connection)
        : m_body(std::move(body)), m_core(core), m_connection(std::move(connection))
    {
    }

    ssize_t read(quint64 position, char* buffer, std::size_t most)
    {
        const quint64 size = quint64(m_body.size());
        if (position >= size)
            return MHD_CONTENT_READER_END_OF_STREAM;
        m_core->sent(*m_connection, qint64(position));
        const std::size_t count = std::size_t(std::min(quint64(most), size - position));
        std::memcpy(buffer, m_body.constData() + position, count);
        return ssize_t(count);
    }

private:
    const QByteArray m_body;
    ServerCore* const m_core;
    const std::shared_ptr<Connection> m_connection;
};

/// A response of `size` bytes, or MHD_SIZE_UNKNOWN, that are read from `sent` little by little.
/// `block`: bytes of the response's own memory.
template <typename Sent>
MHD_Response* responseFrom(std::unique_ptr<Sent> sent, quint64 size, std::size_t block)
{
    MHD_Response* response = ::MHD_create_response_from_callback(
        size, block,
        [](void* cls, std::uint64_t position, char* buffer, std::size_t most) {
            return static_cast<Sent*>(cls)->read(position, buffer, std::min(most, kBlock));
        },
        sent.get(), [](void* cls) { delete static_cast<Sent*>(cls); });
    if (response)
        static_cast<void>(sent.release());
    return response;
}

/// What is sent at once needs no account of how far it is.
MHD_Response* shortResponse(QByteArray body)
{
    return ::MHD_create_response_from_buffer(std::size_t(body.size()), body.data(),
                                             MHD_RESPMEM_MUST_COPY);
}

MHD_Response* makeResponse(const Response& response, bool takesChunks, ServerCore* core,
                           const std::shared_ptr<Connection>& connection)
{
    if (response.stream)
        return responseFrom(std::make_unique<SentStream>(response.stream, core, connection),
                            MHD_SIZE_UNKNOWN, takesChunks ? kUnusedBlock : kBlock);
    if (std::size_t(response.body.size()) <= kBlock)
        return shortResponse(response.body);
    return responseFrom(std::make_unique<SentBody>(response.body, core, connection),
                        quint64(response.body.size()), kBlock);
}

void addHeaders(MHD_Response* sent, const Response& response)
{
    for (const auto& [name, value] : kHeaders)
        ::MHD_add_response_header(sent, name, value);
    if (!response.contentType.isEmpty())
        ::MHD_add_response_header(sent, MHD_HTTP_HEADER_CONTENT_TYPE,
                                  response.contentType.constData());
    bool saysCaching = false;
    for (const auto& [name, value] : response.headers) {
        saysCaching |= name == MHD_HTTP_HEADER_CACHE_CONTROL;
        ::MHD_add_response_header(sent, name.constData(), value.constData());
    }
    if (!saysCaching)
        ::MHD_add_response_header(sent, MHD_HTTP_HEADER_CACHE_CONTROL, "no-store");
}

} // namespace

MHD_Result sendResponse(MHD_Connection* handle, Response response, bool takesChunks,
                        ServerCore* core, const std::shared_ptr<Connection>& connection)
{
    MHD_Response* sent = makeResponse(response, takesChunks, core, connection);
    if (!sent)
        return MHD_NO;
    addHeaders(sent, response);
    const MHD_Result queued =
        ::MHD_queue_response(handle, static_cast<unsigned int>(response.status), sent);
    ::MHD_destroy_response(sent);
    return queued;
}

} // namespace plc::panel

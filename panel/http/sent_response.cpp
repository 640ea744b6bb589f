#include "panel/http/sent_response.h"

#include <algorithm>
#include <utility>

namespace plc::panel {
namespace {

constexpr std::size_t kBlock = std::size_t(16) * 1024; // bytes of a stream that are sent at once

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
    SentStream(std::shared_ptr<EventStream> stream, std::shared_ptr<Suspension> suspension,
               std::atomic<int>* count)
        : m_stream(std::move(stream)), m_suspension(std::move(suspension)), m_count(count)
    {
        ++*m_count;
        m_stream->begin([suspension = m_suspension] { suspension->wake(); });
    }
    ~SentStream()
    {
        m_stream->abandon();
        --*m_count;
    }
    SentStream(const SentStream&) = delete;
    SentStream& operator=(const SentStream&) = delete;

    ssize_t read(char* buffer, std::size_t most)
    {
        for (;;) {
            std::size_t count = 0;
            switch (m_stream->read(buffer, most, &count)) {
                case EventStream::Reading::Bytes:
                    return ssize_t(count);
                case EventStream::Reading::End:
                    return MHD_CONTENT_READER_END_OF_STREAM;
                case EventStream::Reading::CutOff:
                    return MHD_CONTENT_READER_END_WITH_ERROR;
                case EventStream::Reading::Nothing:
                    break;
            }
            if (m_suspension->suspend())
                return 0;
            if (m_suspension->hasEnded())
                return MHD_CONTENT_READER_END_WITH_ERROR;
        }
    }

private:
    const std::shared_ptr<EventStream> m_stream;
    const std::shared_ptr<Suspension> m_suspension;
    std::atomic<int>* const m_count;
};

ssize_t readStream(void* stream, quint64, char* buffer, std::size_t most)
{
    return static_cast<SentStream*>(stream)->read(buffer, most);
}

void freeStream(void* stream)
{
    delete static_cast<SentStream*>(stream);
}

void freeBody(void* body)
{
    delete static_cast<QByteArray*>(body);
}

MHD_Response* streamResponse(const std::shared_ptr<EventStream>& stream,
                             const std::shared_ptr<Suspension>& suspension,
                             std::atomic<int>* streams)
{
    auto sent = std::make_unique<SentStream>(stream, suspension, streams);
    MHD_Response* response = ::MHD_create_response_from_callback(
        MHD_SIZE_UNKNOWN, kBlock,
        [](void* cls, std::uint64_t position, char* buffer, std::size_t most) {
            return readStream(cls, position, buffer, most);
        },
        sent.get(), &freeStream);
    if (response)
        static_cast<void>(sent.release());
    return response;
}

MHD_Response* bodyResponse(const QByteArray& body)
{
    auto kept = std::make_unique<QByteArray>(body);
    MHD_Response* response = ::MHD_create_response_from_buffer_with_free_callback_cls(
        std::size_t(kept->size()), const_cast<char*>(kept->constData()), &freeBody, kept.get());
    if (response)
        static_cast<void>(kept.release());
    return response;
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

MHD_Result sendResponse(MHD_Connection* connection, Response response,
                        const std::shared_ptr<Suspension>& suspension, std::atomic<int>* streams)
{
    MHD_Response* sent = response.stream ? streamResponse(response.stream, suspension, streams)
                                         : bodyResponse(response.body);
    if (!sent)
        return MHD_NO;
    addHeaders(sent, response);
    const MHD_Result queued =
        ::MHD_queue_response(connection, static_cast<unsigned int>(response.status), sent);
    ::MHD_destroy_response(sent);
    return queued;
}

} // namespace plc::panel

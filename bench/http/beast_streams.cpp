// Sends a frame of about 20 KB every second to whoever connects, by Boost.Beast.

#include <boost/asio.hpp>
#include <boost/beast.hpp>
#include <chrono>
#include <memory>
#include <set>
#include <string>

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using asio::ip::tcp;

class Stream;
std::set<Stream*> streams;

class Stream : public std::enable_shared_from_this<Stream> {
public:
    explicit Stream(tcp::socket socket) : m_socket(std::move(socket)) {}
    ~Stream() { streams.erase(this); }

    void begin()
    {
        http::async_read(m_socket, m_buffer, m_request,
                         [self = shared_from_this()](beast::error_code error, std::size_t) {
                             if (!error)
                                 self->answer();
                         });
    }
    void send(const std::shared_ptr<const std::string>& frame)
    {
        if (m_isSending)
            return; // has not read the one before
        m_isSending = true;
        asio::async_write(m_socket, http::make_chunk(asio::buffer(*frame)),
                          [self = shared_from_this(), frame](beast::error_code, std::size_t) {
                              self->m_isSending = false;
                          });
    }

private:
    void answer()
    {
        m_response.result(http::status::ok);
        m_response.set(http::field::content_type, "text/event-stream");
        m_response.chunked(true);
        http::async_write_header(m_socket, m_serializer,
                                 [self = shared_from_this()](beast::error_code, std::size_t) {
                                     streams.insert(self.get());
                                     self->wait();
                                 });
    }
    void wait()
    {
        m_socket.async_read_some(m_buffer.prepare(1),
                                 [self = shared_from_this()](beast::error_code, std::size_t) {
                                     streams.erase(self.get());
                                 });
    }

    tcp::socket m_socket;
    beast::flat_buffer m_buffer{16384};
    http::request<http::string_body> m_request;
    http::response<http::empty_body> m_response;
    http::response_serializer<http::empty_body> m_serializer{m_response};
    bool m_isSending = false;
};

void accept(tcp::acceptor* acceptor)
{
    acceptor->async_accept([acceptor](beast::error_code error, tcp::socket socket) {
        if (!error)
            std::make_shared<Stream>(std::move(socket))->begin();
        accept(acceptor);
    });
}

void tick(asio::steady_timer* timer, const std::shared_ptr<const std::string>& frame)
{
    timer->expires_after(std::chrono::seconds(1));
    timer->async_wait([timer, frame](beast::error_code) {
        for (Stream* stream : streams)
            stream->send(frame);
        tick(timer, frame);
    });
}

} // namespace

int main(int, char** arguments)
{
    asio::io_context context{1};
    tcp::acceptor acceptor(
        context, {asio::ip::address_v4::loopback(), std::uint16_t(std::stoi(arguments[1]))});
    accept(&acceptor);
    asio::steady_timer timer(context);
    tick(&timer, std::make_shared<const std::string>("data: ~" + std::string(20000, 'x') + "\n\n"));
    context.run();
}

#include "panel/http/server.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/support/http_client.h"

namespace plc {
namespace panel {
namespace {

using test::HttpAnswer;
using test::HttpConnection;

/// Lets everybody do everything.
class OpenGuard : public Guard {
public:
    Decision decide(const RequestHead& head) override
    {
        last = head;
        Decision decision;
        decision.caller = {QStringLiteral("local"), Role::Engineer, head.address, {}};
        return decision;
    }

    RequestHead last;
};

Route route(Method method, const char* pattern,
            std::function<void(const Request&, Responder)> handler)
{
    return {method,       pattern,
            Role::Viewer, method == Method::Get ? Route::Reads : Route::Changes,
            "a test",     std::move(handler)};
}

class WebServer : public ::testing::Test {
protected:
    void start(const QVector<Route>& routes)
    {
        settings.port = 0;
        Expected<std::unique_ptr<Server>> started = Server::start(settings, routes, &guard);
        ASSERT_TRUE(started) << started.error().text.toStdString();
        server = std::move(*started);
    }

    ServerSettings settings;
    OpenGuard guard;
    std::unique_ptr<Server> server;
};

TEST_F(WebServer, AnswersWithWhatTheHandlerGives)
{
    start({route(Method::Get, "/greeting/{name}",
                 [](const Request& request, const Responder& answer) {
                     answer(Response::text(request.parameters.value(QStringLiteral("name")) +
                                           QLatin1Char(' ') +
                                           request.first(QStringLiteral("a")).value_or(QString())));
                 })});
    HttpConnection connection(server->port());
    const HttpAnswer answer = connection.get("/greeting/J%C3%BCrgen%2F?a=1+%2B+2");
    EXPECT_EQ(200, answer.status);
    EXPECT_EQ("J\xC3\xBCrgen/ 1 + 2", answer.body);
    EXPECT_EQ("text/plain; charset=utf-8", answer.header("Content-Type"));
    EXPECT_EQ("no-store", answer.header("Cache-Control"));
}

TEST_F(WebServer, AnswersLaterFromAnotherThread)
{
    std::thread other;
    start({route(Method::Post, "/work", [&other](const Request& request, const Responder& answer) {
        const QByteArray body = request.body;
        other = std::thread([answer, body] { answer(Response::json("[" + body + "]")); });
    })});
    HttpConnection connection(server->port());
    const HttpAnswer answer =
        connection.ask("POST /work HTTP/1.1\r\nHost: localhost\r\nContent-Length: 3\r\n\r\nabc");
    other.join();
    EXPECT_EQ(200, answer.status);
    EXPECT_EQ("[abc]", answer.body);
}

TEST_F(WebServer, SendsEventsUntilTheStreamIsClosed)
{
    auto stream = std::make_shared<EventStream>();
    start({route(Method::Get, "/events", [&stream](const Request&, const Responder& answer) {
        stream->push(std::make_shared<QByteArray>("data: opening\n\n"));
        answer(Response::events(stream));
    })});
    HttpConnection connection(server->port());
    connection.send("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
    EXPECT_TRUE(connection.waitFor("data: opening\n\n"));
    EXPECT_TRUE(stream->push(std::make_shared<QByteArray>("data: 2\n\n")));
    EXPECT_TRUE(connection.waitFor("data: 2\n\n"));
    stream->close();
    EXPECT_TRUE(connection.waitFor("\r\n0\r\n\r\n"));
    EXPECT_FALSE(stream->isOpen());
}

} // namespace
} // namespace panel
} // namespace plc

#include "panel/http/server.h"

#include <sys/stat.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <thread>

#include "tests/panel/http/http_fixture.h"

namespace plc::panel {
namespace {

using test::HttpAnswer;
using test::HttpConnection;

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

TEST_F(WebServer, TellsBrowsersToTrustNothingButThisServer)
{
    start({greeting()});
    HttpConnection connection(server->port());
    const HttpAnswer answer = connection.get("/greeting");
    EXPECT_EQ("default-src 'self'; base-uri 'none'; form-action 'self'; frame-ancestors 'none'",
              answer.header("Content-Security-Policy"));
    EXPECT_EQ("nosniff", answer.header("X-Content-Type-Options"));
    EXPECT_EQ("DENY", answer.header("X-Frame-Options"));
    EXPECT_EQ("no-referrer", answer.header("Referrer-Policy"));
    EXPECT_EQ("same-origin", answer.header("Cross-Origin-Opener-Policy"));
    EXPECT_EQ("same-origin", answer.header("Cross-Origin-Resource-Policy"));
    EXPECT_EQ("default-src 'self'; base-uri 'none'; form-action 'self'; frame-ancestors 'none'",
              connection.get("/nothing").header("Content-Security-Policy"));
}

TEST_F(WebServer, TellsWhatIsNotThereAndWhichMethodsAre)
{
    start({greeting(), count()});
    HttpConnection connection(server->port());
    EXPECT_EQ(404, connection.get("/greetin").status);
    const HttpAnswer missing = connection.get("/greeting/");
    EXPECT_EQ(404, missing.status);
    EXPECT_EQ("{\"error\":\"there is nothing of this name\"}\n", missing.body);
    const HttpAnswer wrong = connection.ask("POST /greeting HTTP/1.1\r\nHost: localhost\r\n\r\n");
    EXPECT_EQ(405, wrong.status);
    EXPECT_EQ("GET, HEAD", wrong.header("Allow"));
    EXPECT_EQ("POST", connection.get("/count").header("Allow"));
    EXPECT_EQ(400, connection.get("/%zz").status);
    EXPECT_EQ(400, connection.get("/a%00b").status);
}

TEST_F(WebServer, AnswersHeadWithoutABody)
{
    start({greeting()});
    HttpConnection connection(server->port());
    const HttpAnswer head = connection.ask("HEAD /greeting HTTP/1.1\r\nHost: localhost\r\n\r\n");
    EXPECT_EQ(200, head.status);
    EXPECT_EQ("5", head.header("Content-Length"));
    EXPECT_EQ("hello", connection.get("/greeting").body); // nothing of the other lies before it
}

TEST_F(WebServer, AnswersForAHandlerThatDoesNot)
{
    start({route(Method::Get, "/drops", [](const Request&, const Responder&) {})});
    HttpConnection connection(server->port());
    EXPECT_EQ(500, connection.get("/drops").status);
}

TEST_F(WebServer, SendsTheFirstAnswerAlone)
{
    start({route(Method::Get, "/twice", [](const Request&, const Responder& answer) {
        answer(Response::text(QStringLiteral("first")));
        answer(Response::text(QStringLiteral("second")));
    })});
    HttpConnection connection(server->port());
    EXPECT_EQ("first", connection.get("/twice").body);
    EXPECT_EQ("first", connection.get("/twice").body);
}

TEST_F(WebServer, EndsWhileRequestsWaitForAnAnswer)
{
    Responder kept;
    auto stream = std::make_shared<EventStream>();
    start({route(Method::Get, "/waits",
                 [&kept](const Request&, const Responder& answer) { kept = answer; }),
           route(Method::Get, "/events", [&stream](const Request&, const Responder& answer) {
               answer(Response::events(stream));
           })});
    HttpConnection waiting(server->port());
    waiting.send("GET /waits HTTP/1.1\r\nHost: localhost\r\n\r\n");
    HttpConnection streaming(server->port());
    streaming.send("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
    EXPECT_TRUE(streaming.waitFor("\r\n\r\n"));
    while (!kept)
        std::this_thread::yield();
    server.reset();
    EXPECT_TRUE(waiting.ends());
    EXPECT_FALSE(stream->isOpen());
    kept(Response::text(QStringLiteral("too late")));
}

TEST_F(WebServer, RefusesRoutesThatMakeNoSense)
{
    Route change = greeting();
    change.kind = Route::Changes;
    EXPECT_EQ("GET /greeting: nothing is changed by GET", errorOf({change}));
    EXPECT_EQ("GET /greeting: there are two of it", errorOf({greeting(), greeting()}));
    EXPECT_EQ("GET greeting: a pattern begins with a slash",
              errorOf({route(Method::Get, "greeting", greeting().handler)}));
    EXPECT_EQ("GET /x: nothing carries it out", errorOf({route(Method::Get, "/x", nullptr)}));
}

TEST_F(WebServer, ListensElsewhereWithTlsAlone)
{
    settings.address = QStringLiteral("0.0.0.0");
    EXPECT_EQ(
        "0.0.0.0: other addresses than this machine's own (127.0.0.1, ::1) need a certificate",
        errorOf({greeting()}));
}

TEST_F(WebServer, ListensOnASocketForOwnerAndGroup)
{
    QTemporaryDir folder;
    settings.socket = folder.filePath(QStringLiteral("panel.sock"));
    settings.address.clear();
    const QByteArray path = QFile::encodeName(settings.socket);
    start({route(Method::Get, "/who", [](const Request& request, const Responder& answer) {
        answer(Response::text(request.caller.address));
    })});
    struct stat status = {};
    ASSERT_EQ(0, ::stat(path.constData(), &status));
    EXPECT_EQ(mode_t(0660), status.st_mode & 0777);
    {
        HttpConnection connection(path);
        EXPECT_EQ("socket", connection.get("/who").body);
    }
    EXPECT_NE("", errorOf({greeting()})); // somebody listens there
    server.reset();
    EXPECT_FALSE(QFile::exists(settings.socket));
}

} // namespace
} // namespace plc::panel

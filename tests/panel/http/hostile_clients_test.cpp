// Clients that want the server to stop: rubbish, slowness, floods. PLC_CONNECTIONS sets how many
// connections are made (400 unless given), PLC_BODY_MEGABYTES how much a body has (32), and
// PLC_RUBBISH_MEGABYTES how much rubbish is sent (2).

#include <sys/resource.h>

#include <QtCore/QFile>

#include <cstdlib>
#include <mutex>
#include <thread>

#include "tests/panel/http/http_fixture.h"
#include "tests/support/gate.h"
#include "tests/support/random.h"

namespace plc::panel {
namespace {

using test::HttpAnswer;
using test::HttpConnection;
using test::Random;

int numberFromEnvironment(const char* name, int otherwise)
{
    const char* text = std::getenv(name);
    return text ? std::atoi(text) : otherwise;
}

/// Memory of this process that is in use, in KiB.
int residentMemory()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    return file.readAll().split(' ').value(1).toInt() * 4;
}

constexpr char kPost[] = "POST /count HTTP/1.1\r\nHost: localhost\r\n";

constexpr int kShortTime = 700; // ms, for what a test waits for

using HostileClients = WebServer;

TEST_F(HostileClients, TooLongABodyIsRefusedBeforeItIsSent)
{
    start({count(), greeting()});
    HttpConnection connection(server->port());
    EXPECT_EQ(413, connection.ask(QByteArray(kPost) + "Content-Length: 1048577\r\n\r\n").status);
    EXPECT_TRUE(connection.ends());
    HttpConnection endless(server->port());
    EXPECT_EQ(
        413,
        endless.ask(QByteArray(kPost) + "Content-Length: 99999999999999999999\r\n\r\n").status);
}

TEST_F(HostileClients, ARouteMayTakeMoreThanTheOthers)
{
    Route large = count();
    large.mostBodyBytes = 2 * 1024 * 1024;
    start({large});
    HttpConnection connection(server->port());
    const QByteArray body(2 * 1024 * 1024, 'x');
    EXPECT_EQ("2097152",
              connection.ask(QByteArray(kPost) + "Content-Length: 2097152\r\n\r\n" + body).body);
}

TEST_F(HostileClients, OnesThatSendTooLongABodyToItsEndCanReadTheRefusal)
{
    start({count(), greeting()});
    for (const int bytes : {1048577, 1500000, 3000000, 8000000}) {
        HttpConnection connection(server->port());
        const QByteArray head =
            QByteArray(kPost) + "Content-Length: " + QByteArray::number(bytes) + "\r\n\r\n";
        EXPECT_TRUE(connection.send(head + QByteArray(bytes, 'x'))) << bytes;
        EXPECT_EQ(413, connection.answer().status) << bytes;
        EXPECT_TRUE(connection.ends()) << bytes;
    }
    expectServing();
}

TEST_F(HostileClients, ABodyOfTheMostBytesIsTaken)
{
    start({count()});
    HttpConnection connection(server->port());
    const QByteArray body(1048576, 'x');
    EXPECT_EQ("1048576",
              connection.ask(QByteArray(kPost) + "Content-Length: 1048576\r\n\r\n" + body).body);
}

TEST_F(HostileClients, TooLongABodyForARouteIsRefused)
{
    Route small = count();
    small.mostBodyBytes = 4096;
    start({small, greeting()});
    HttpConnection most(server->port());
    EXPECT_EQ(
        "4096",
        most.ask(QByteArray(kPost) + "Content-Length: 4096\r\n\r\n" + QByteArray(4096, 'x')).body);
    HttpConnection told(server->port());
    const test::HttpAnswer refused = told.ask(QByteArray(kPost) + "Content-Length: 4097\r\n\r\n");
    EXPECT_EQ(413, refused.status);
    EXPECT_EQ("{\"error\":\"the body has more than 4096 bytes\"}\n", refused.body);
    HttpConnection untold(server->port());
    const test::HttpAnswer late =
        untold.ask(QByteArray(kPost) + "Transfer-Encoding: chunked\r\n\r\n1001\r\n" +
                   QByteArray(4097, 'x') + "\r\n0\r\n\r\n");
    EXPECT_EQ(413, late.status);
    EXPECT_EQ("{\"error\":\"the body has more than 4096 bytes\"}\n", late.body);
    EXPECT_EQ(200, untold.get("/greeting").status) << "its end was found";
    expectServing();
}

TEST_F(HostileClients, ABodyInPartsThatTurnsOutToBeTooLongIsRefusedAtItsEnd)
{
    settings.requestTime = 20000;
    start({count(), greeting()});
    const QByteArray part = "10000\r\n" + QByteArray(65536, 'x') + "\r\n";
    for (const int parts : {17, 32, 128}) {
        HttpConnection connection(server->port());
        EXPECT_TRUE(connection.send(QByteArray(kPost) + "Transfer-Encoding: chunked\r\n\r\n" +
                                    part.repeated(parts) + "0\r\n\r\n"))
            << parts;
        EXPECT_EQ(413, connection.answer().status) << parts;
    }
    expectServing();
}

TEST_F(HostileClients, AnEndlessBodyInPartsIsCutOff)
{
    start({count(), greeting()});
    const int before = residentMemory();
    HttpConnection connection(server->port());
    connection.send(QByteArray(kPost) + "Transfer-Encoding: chunked\r\n\r\n");
    const QByteArray part = "10000\r\n" + QByteArray(65536, 'x') + "\r\n";
    const int most = numberFromEnvironment("PLC_BODY_MEGABYTES", 32) * 16;
    int sent = 0;
    while (sent < most && connection.send(part))
        ++sent;
    EXPECT_LT(sent, most);
    EXPECT_TRUE(connection.ends());
    EXPECT_EQ("", connection.received());
    EXPECT_LT(residentMemory() - before, 8 * 1024) << "KiB";
    expectServing();
}

TEST_F(HostileClients, AllBodiesTogetherHaveABound)
{
    settings.answerTime = 20000;
    settings.mostBytesOfBodies = 100000;
    std::mutex mutex;
    std::vector<Responder> waiting;
    test::Bell taken;
    start({greeting(), count(),
           route(Method::Post, "/wait", [&](const Request&, const Responder& answer) {
               const std::lock_guard<std::mutex> lock(mutex);
               waiting.push_back(answer);
               taken.ring();
           })});
    const QByteArray length = "Content-Length: 60000\r\n\r\n";
    const QByteArray body(60000, 'x');
    HttpConnection holding(server->port());
    holding.send("POST /wait HTTP/1.1\r\nHost: localhost\r\n" + length + body);
    taken.await();
    HttpConnection told(server->port());
    const HttpAnswer refused = told.ask(QByteArray(kPost) + length);
    EXPECT_EQ(503, refused.status);
    EXPECT_EQ("5", refused.header("Retry-After"));
    HttpConnection untold(server->port());
    const HttpAnswer late = untold.ask(
        QByteArray(kPost) + "Transfer-Encoding: chunked\r\n\r\nea60\r\n" + body + "\r\n0\r\n\r\n");
    EXPECT_EQ(503, late.status);
    EXPECT_EQ("5", late.header("Retry-After"));
    const QByteArray small = QByteArray(kPost) + "Content-Length: 3\r\n\r\nabc";
    EXPECT_EQ("3", HttpConnection(server->port()).ask(small).body);
    waiting[0](Response::text(QStringLiteral("done")));
    EXPECT_EQ(200, holding.answer().status);
    // Again and again: what was given back is there for the next one.
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ("60000", untold.ask(QByteArray(kPost) + length + body).body) << i;
}

TEST_F(HostileClients, ABodyThatNeverEndsHoldsNoRoomBehindItsConnection)
{
    settings.mostBytesOfBodies = 100000;
    settings.requestTime = kShortTime;
    start({greeting(), count()});
    const QByteArray head = QByteArray(kPost) + "Content-Length: 60000\r\n\r\n";
    {
        HttpConnection half(server->port());
        half.send(head + QByteArray(59999, 'x'));
        EXPECT_TRUE(half.ends());
    }
    EXPECT_EQ("60000", HttpConnection(server->port()).ask(head + QByteArray(60000, 'x')).body);
}

TEST_F(HostileClients, ABodyWhoseLengthIsNotClearIsRefused)
{
    start({count()});
    for (const char* headers :
         {"Content-Length: 3\r\nTransfer-Encoding: chunked\r\n",
          "Content-Length: 3\r\nContent-Length: 3\r\n",
          "Content-Length: 3\r\nContent-Length: 0\r\n",
          "Content-Length: 0\r\nContent-Length: 3\r\n", "Content-Length: 3\r\nContent-Length: \r\n",
          "Transfer-Encoding: gzip\r\n", "Content-Length: 3x\r\n"}) {
        HttpConnection connection(server->port());
        const int status = connection.ask(QByteArray(kPost) + headers + "\r\nabc").status;
        EXPECT_TRUE(status == 400 || status == 413) << status << ' ' << headers;
    }
}

TEST_F(HostileClients, WhatFollowsARefusedHeadIsNotTakenForARequest)
{
    start({count(), greeting()});
    const QByteArray inner = "GET /greeting HTTP/1.1\r\nHost: localhost\r\n\r\n";
    for (const char* method : {"POST", "PUT", "DELETE", "GET"}) {
        HttpConnection connection(server->port());
        connection.send(QByteArray(method) + " /nothing HTTP/1.1\r\nHost: localhost\r\n" +
                        "Content-Length: " + QByteArray::number(inner.size()) + "\r\n\r\n" + inner);
        EXPECT_TRUE(connection.ends()) << method;
        EXPECT_FALSE(connection.received().contains("hello")) << method;
    }
}

TEST_F(HostileClients, ATooLongHeadIsRefused)
{
    settings.mostHeadBytes = 16 * 1024;
    start({greeting()});
    HttpConnection fields(server->port());
    EXPECT_EQ(431, fields
                       .ask("GET /greeting HTTP/1.1\r\nHost: localhost\r\nX: " +
                            QByteArray(20000, 'x') + "\r\n\r\n")
                       .status);
    HttpConnection line(server->port());
    EXPECT_EQ(
        414,
        line.ask("GET /" + QByteArray(20000, 'x') + " HTTP/1.1\r\nHost: localhost\r\n\r\n").status);
}

TEST_F(HostileClients, OnesThatSendAByteNowAndThenAreEnded)
{
    settings.idleTime = kShortTime;
    settings.requestTime = kShortTime;
    start({greeting(), count()});
    HttpConnection head(server->port());
    HttpConnection body(server->port());
    body.send(QByteArray(kPost) + "Content-Length: 1000\r\n\r\n");
    bool headIsThere = true;
    bool bodyIsThere = true;
    // Each byte comes long before an idle connection would be ended.
    for (int i = 0; i < 100 && (headIsThere || bodyIsThere); ++i) {
        headIsThere = headIsThere && head.send("G") && !head.ends(25);
        bodyIsThere = bodyIsThere && body.send("b") && !body.ends(25);
        expectServing();
    }
    EXPECT_FALSE(headIsThere);
    EXPECT_FALSE(bodyIsThere);
}

TEST_F(HostileClients, OnesThatDoNotReadAnAnswerAreEnded)
{
    settings.sendTime = kShortTime;
    start({route(Method::Get, "/large",
                 [body = QByteArray(8 * 1024 * 1024, 'x')](
                     const Request&, const Responder& answer) { answer(Response::json(body)); }),
           greeting()});
    HttpConnection connection(server->port());
    connection.send("GET /large HTTP/1.1\r\nHost: localhost\r\n\r\n");
    while (server->statistics().cutOff == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_TRUE(connection.ends());
    EXPECT_LT(connection.received().size(), 8 * 1024 * 1024);
    expectServing();
}

TEST_F(HostileClients, AreToldWhereAHandlerTakesTooLong)
{
    Responder kept;
    settings.answerTime = kShortTime;
    start({route(Method::Get, "/waits",
                 [&kept](const Request&, const Responder& answer) { kept = answer; })});
    HttpConnection connection(server->port());
    EXPECT_EQ(503, connection.get("/waits").status);
    kept(Response::text(QStringLiteral("too late")));
}

TEST_F(HostileClients, ThousandsOfConnectionsKeepNobodyOut)
{
    rlimit limit = {};
    ASSERT_EQ(0, ::getrlimit(RLIMIT_NOFILE, &limit));
    limit.rlim_cur = limit.rlim_max;
    ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &limit));
    settings.mostConnections = 100;
    settings.mostConnectionsOfAddress = 60;
    settings.idleTime = 60000;
    start({greeting()});
    const int before = residentMemory();
    std::vector<std::unique_ptr<HttpConnection>> flood;
    for (int i = 0; i < numberFromEnvironment("PLC_CONNECTIONS", 400); ++i) {
        flood.push_back(std::make_unique<HttpConnection>(server->port()));
        ASSERT_TRUE(flood.back()->isMade()) << i;
        if (i % 100 == 99) {
            expectServing();
            expectServing("127.0.0.2");
        }
    }
    EXPECT_LE(server->statistics().connections, 100 + 64);
    EXPECT_LT(residentMemory() - before, 24 * 1024) << "KiB";
}

TEST_F(HostileClients, AStreamThatIsNotReadIsCutOffAndTheOthersAreNot)
{
    std::mutex mutex;
    std::vector<std::shared_ptr<EventStream>> streams;
    settings.sendTime = kShortTime;
    start({route(Method::Get, "/events", [&](const Request&, const Responder& answer) {
        const std::lock_guard<std::mutex> lock(mutex);
        streams.push_back(std::make_shared<EventStream>());
        answer(Response::events(streams.back()));
    })});
    HttpConnection lazy(server->port());
    HttpConnection keen(server->port());
    for (HttpConnection* connection : {&lazy, &keen}) {
        connection->send("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
        EXPECT_TRUE(connection->waitFor("\r\n\r\n"));
    }
    // One buffer for all streams and all times.
    const auto frame = std::make_shared<QByteArray>("data: " + QByteArray(20000, 'x') + "\n\n");
    int pushed = 0;
    while (streams[0]->push(frame) && pushed < 2000) {
        ++pushed;
        ASSERT_TRUE(streams[1]->push(frame));
        while (!keen.received().endsWith("\n\n\r\n") || keen.received().count("data: ") < pushed)
            ASSERT_TRUE(keen.receive());
    }
    EXPECT_LT(pushed, 2000);
    EXPECT_FALSE(streams[0]->isOpen());
    EXPECT_TRUE(lazy.ends());
    EXPECT_TRUE(streams[1]->isOpen());
    // The connection is shut down before its stream is let go.
    EXPECT_TRUE(awaitStatistics([](const ServerStatistics& now) { return now.streams == 1; }));
}

class HostileReaders : public HostileClients {
protected:
    HostileReaders() { settings.sendTime = kShortTime; }

    /// A stream to a client that reads the head of the response and nothing else.
    void stream()
    {
        start({route(Method::Get, "/events", [this](const Request&, const Responder& answer) {
            answer(Response::events(events));
        })});
        connection = std::make_unique<HttpConnection>(server->port());
        connection->send("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
        EXPECT_TRUE(connection->waitFor("\r\n\r\n"));
    }
    /// Until the client's buffers are full and the rest stays here.
    void fillTheClient()
    {
        const int most = EventStream::kMostWaiting - 2 * int(frame->size());
        while (events->waiting() < most) {
            while (events->waiting() < most)
                ASSERT_TRUE(events->push(frame));
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    }
    void expectNoConnections()
    {
        EXPECT_TRUE(awaitStatistics(
            [](const ServerStatistics& now) { return now.connections == 0 && now.streams == 0; }));
    }

    const std::shared_ptr<QByteArray> frame =
        std::make_shared<QByteArray>("data: " + QByteArray(20000, 'x') + "\n\n");
    std::shared_ptr<EventStream> events = std::make_shared<EventStream>();
    std::unique_ptr<HttpConnection> connection;
};

TEST_F(HostileReaders, OfNothingLoseTheConnectionWithTheirStream)
{
    stream();
    fillTheClient();
    while (events->push(frame)) {
    }
    expectNoConnections();
}

TEST_F(HostileReaders, OfNothingLoseTheConnectionWithAStreamThatIsCutOffAtOnce)
{
    stream();
    while (events->push(frame))
        std::this_thread::yield();
    expectNoConnections();
}

TEST_F(HostileReaders, OfNothingLoseTheConnectionWhenTheirStreamIsClosed)
{
    stream();
    fillTheClient();
    events->close();
    expectNoConnections();
}

TEST_F(HostileClients, OnesThatReadSteadilyGetLongAnswersWhole)
{
    constexpr int kSize = 64 * 1024 * 1024;
    settings.sendTime = 2000; // less than it takes in all
    start({route(Method::Get, "/large",
                 [body = QByteArray(kSize, 'x')](const Request&, const Responder& answer) {
                     answer(Response::json(body));
                 }),
           greeting()});
    HttpConnection connection(server->port());
    connection.send("GET /large HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n");
    ASSERT_TRUE(connection.waitFor("\r\n\r\n"));
    const auto begin = std::chrono::steady_clock::now();
    while (connection.receive()) {
        if (std::chrono::steady_clock::now() - begin < std::chrono::milliseconds(5000))
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    const int head = int(connection.received().indexOf("\r\n\r\n")) + 4;
    EXPECT_EQ(kSize, connection.received().size() - head);
    EXPECT_GT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2500));
    EXPECT_EQ(0, server->statistics().cutOff);
}

TEST_F(HostileClients, OnesThatLeaveEndTheirStreams)
{
    auto stream = std::make_shared<EventStream>();
    start({route(Method::Get, "/events", [&stream](const Request&, const Responder& answer) {
        answer(Response::events(stream));
    })});
    {
        HttpConnection connection(server->port());
        connection.send("GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n");
        EXPECT_TRUE(connection.waitFor("\r\n\r\n"));
    }
    const auto tick = std::make_shared<QByteArray>("event: tick\n\n");
    while (stream->push(tick))
        std::this_thread::yield();
    EXPECT_TRUE(awaitStatistics(
        [](const ServerStatistics& now) { return now.connections == 0 && now.streams == 0; }));
}

/// A request with some of its bytes changed, doubled or taken away.
QByteArray damaged(Random* random, QByteArray request)
{
    for (int i = random->between(0, 6); i > 0 && !request.isEmpty(); --i) {
        const int place = random->below(int(request.size()));
        switch (random->below(3)) {
            case 0:
                request[place] = char(random->below(256));
                break;
            case 1:
                request.insert(place, request.mid(random->below(int(request.size())), 40));
                break;
            default:
                request.remove(place, random->between(1, 5));
        }
    }
    return request;
}

TEST_F(HostileClients, RubbishLeavesTheServerServing)
{
    start({greeting(), count(), route(Method::Put, "/x/{name}", count().handler)});
    const QByteArray requests[] = {
        "GET /greeting?a=%41&b HTTP/1.1\r\nHost: localhost\r\nCookie: a=b; plc_panel=x\r\n\r\n",
        "POST /count HTTP/1.1\r\nHost: [::1]:80\r\nContent-Length: 5\r\n\r\nabcde",
        "PUT /x/%C3%BC HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: chunked\r\n\r\n"
        "5\r\nabcde\r\n0\r\n\r\n",
        "HEAD / HTTP/1.0\r\n\r\n"};
    const quint32 seed = quint32(numberFromEnvironment("PLC_SEED", 12));
    SCOPED_TRACE(seed);
    Random random(seed);
    const qint64 wanted = qint64(numberFromEnvironment("PLC_RUBBISH_MEGABYTES", 2)) * 1024 * 1024;
    const int before = residentMemory();
    for (qint64 sent = 0; sent < wanted;) {
        HttpConnection connection(server->port());
        ASSERT_TRUE(connection.isMade());
        QByteArray bytes;
        for (int i = random.between(1, 100); i > 0; --i)
            bytes += random.oneIn(20) ? QByteArray(random.below(2000), char(random.below(256)))
                                      : damaged(&random, requests[random.below(4)]);
        connection.send(bytes);
        sent += bytes.size();
        if (random.oneIn(4))
            connection.receive(5);
    }
    expectServing();
    EXPECT_LT(residentMemory() - before, 32 * 1024) << "KiB";
}

} // namespace
} // namespace plc::panel

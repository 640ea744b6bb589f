// Heads of many sizes: each is carried out, or refused in words; none is left without an answer.

#include "tests/panel/http/http_fixture.h"

namespace plc::panel {
namespace {

using test::HttpConnection;

constexpr int kMost = 64 * 1024;
constexpr char kGet[] = "GET /greeting HTTP/1.1\r\nHost: localhost\r\n";

QByteArray repeated(int count, const QByteArray& part)
{
    return part.repeated(count);
}

class LongHeads : public WebServer {
protected:
    void SetUp() override { start({greeting(), parameters()}); }
    /// Answers with the number of parameters in the query, and the length of the last one.
    static Route parameters()
    {
        return route(Method::Get, "/parameters", [](const Request& request, const Responder& give) {
            const int last = request.query.isEmpty() ? 0 : int(request.query.last().second.size());
            give(Response::text(QStringLiteral("%1 %2").arg(request.query.size()).arg(last)));
        });
    }
    int statusOf(const QByteArray& head)
    {
        HttpConnection connection(server->port());
        return connection.ask(head).status;
    }
    QByteArray parametersOf(const QByteArray& query)
    {
        HttpConnection connection(server->port());
        return connection.get("/parameters?" + query).body;
    }
    /// A head of exactly so many bytes.
    static QByteArray withField(const QByteArray& name, int bytes)
    {
        const QByteArray begin = kGet + name + ": ";
        return begin + QByteArray(bytes - int(begin.size()) - 4, 'x') + "\r\n\r\n";
    }
};

TEST_F(LongHeads, ManyParametersAreAllThere)
{
    for (const int count : {1, 100, 180, 190, 200, 300, 1000, 2000, 10000})
        EXPECT_EQ(QByteArray::number(count) + " 1", parametersOf(repeated(count, "a=1&")));
    EXPECT_EQ("30000 0", parametersOf(repeated(30000, "a&")));
    EXPECT_EQ("2000 21", parametersOf(repeated(2000, "label=P.many%5B1000%5D....45678&")));
}

TEST_F(LongHeads, AQueryIsReadAsItWasSent)
{
    EXPECT_EQ("1 7", parametersOf("a=b?c=d+%3F"));
    EXPECT_EQ("0 0", parametersOf(""));
    EXPECT_EQ("2 0", parametersOf("?a=1&b="));
}

TEST_F(LongHeads, AnswerUpToTheMostBytesAndNotBeyond)
{
    for (const char* field : {"X", "Cookie"}) {
        for (const int bytes : {2000, 7000, 8000, 8200, 12000, 15000, 16384, 16385, 20000, 33000,
                                40000, 60000, kMost - 1, kMost})
            EXPECT_EQ(200, statusOf(withField(field, bytes))) << field << ' ' << bytes;
        for (const int bytes : {kMost + 1, kMost + 2, 70000, 80000, 90000, 120000, 150000, 163000,
                                164000, 200000, 1000000})
            EXPECT_EQ(431, statusOf(withField(field, bytes))) << field << ' ' << bytes;
    }
}

TEST_F(LongHeads, AreRefusedInTheWordsOfAllErrors)
{
    HttpConnection fields(server->port());
    EXPECT_EQ("{\"error\":\"the head of the request has more than 65536 bytes\"}\n",
              fields.ask(withField("X", kMost + 1)).body);
    HttpConnection line(server->port());
    EXPECT_EQ("{\"error\":\"the target of the request has more than 65536 bytes\"}\n",
              line.get('/' + QByteArray(kMost, 'x')).body);
}

TEST_F(LongHeads, ATargetIsNotFoundOrTooLong)
{
    const int frame = int(qstrlen("GET  HTTP/1.1\r\nHost: localhost\r\n\r\n"));
    for (const int bytes : {1000, 8000, 16384, 20000, 60000, kMost - frame})
        EXPECT_EQ(404, statusOf("GET /" + QByteArray(bytes - 1, 'x') +
                                " HTTP/1.1\r\nHost: localhost\r\n\r\n"))
            << bytes;
    EXPECT_EQ(431, statusOf("GET /" + QByteArray(kMost - frame, 'x') +
                            " HTTP/1.1\r\nHost: localhost\r\n\r\n"));
    for (const int bytes : {kMost + 1, 80000, 100000, 150000, 163000, 164000, 200000, 1000000})
        EXPECT_EQ(414, statusOf("GET /?" + QByteArray(bytes - 2, 'x') +
                                " HTTP/1.1\r\nHost: localhost\r\n\r\n"))
            << bytes;
}

TEST_F(LongHeads, ManyFieldsAndCookiesAreTakenOrRefused)
{
    for (const int count : {1, 100, 300, 500}) {
        EXPECT_EQ(200, statusOf(kGet + repeated(count, "a: b\r\n") + "\r\n")) << count;
        EXPECT_EQ(200, statusOf(kGet + ("Cookie: " + repeated(count, "a=b; ")) + "\r\n\r\n"))
            << count;
    }
    for (const int count : {5000, 10000, 20000}) {
        EXPECT_EQ(431, statusOf(kGet + repeated(count, "a: b\r\n") + "\r\n")) << count;
        EXPECT_EQ(431, statusOf(kGet + ("Cookie: " + repeated(count, "a;")) + "\r\n\r\n")) << count;
    }
}

TEST_F(LongHeads, FitWithManyCookiesAndFieldsAtOnce)
{
    const QByteArray begin =
        kGet + repeated(250, "a: b\r\n") + "Cookie: " + repeated(250, "a=b; ") + "c=";
    const int rest = kMost - int(begin.size()) - 4;
    EXPECT_EQ(200, statusOf(begin + QByteArray(rest, 'x') + "\r\n\r\n"));
}

TEST_F(LongHeads, OthersThatMakeNoSenseAreRefusedInWords)
{
    HttpConnection nameless(server->port());
    const test::HttpAnswer refused = nameless.ask("GET /greeting HTTP/1.1\r\nX: y\r\n\r\n");
    EXPECT_EQ(400, refused.status);
    EXPECT_EQ("{\"error\":\"the request does not name the server (Host)\"}\n", refused.body);
    EXPECT_EQ(400, statusOf("GET /greeting a HTTP/1.1\r\nHost: localhost\r\n\r\n"));
}

TEST_F(LongHeads, LeaveTheConnectionForTheNextRequest)
{
    HttpConnection connection(server->port());
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(
            "14000 1",
            connection.get("/parameters?" + repeated(7000, "a=1&") + repeated(7000, "b=1&")).body);
        EXPECT_EQ(200, connection.get("/greeting").status);
    }
}

} // namespace
} // namespace plc::panel

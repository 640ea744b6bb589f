// plc diagnose against a PLC that fails in each way at each step.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/e2e/plant.h"
#include "tests/e2e/scripted_plc.h"

namespace plc::test {
namespace {

constexpr char kDiagnoseProject[] = R"({
  'name': 'Diagnosed',
  'settings': {'replyTimeout': 2000, 'connectTimeout': 2000, 'retryLimit': 1},
  'areas': [{'index': 3, 'size': 64}, {'index': 4, 'size': 64}],
  'scopes': [{'name': 'MAIN', 'variables': [
    {'name': 'speed', 'type': 'INT', 'area': 3, 'offset': 10},
    {'name': 'count', 'type': 'INT', 'area': 3, 'offset': 60},
    {'name': 'other', 'type': 'INT', 'area': 4, 'offset': 0}]}],
  'cyclic': ['MAIN.count']
})";

const QByteArray kGoodRead = QByteArray::fromHex("BBBB00000009 0000 00000001 00 1234");

class Diagnose : public Plant {
protected:
    Diagnose() { writeProject(kDiagnoseProject); }

    void startPlcWith(const char* areas)
    {
        const QByteArray whole("[{'index': 3, 'size': 64}, {'index': 4, 'size': 64}]");
        // What lies outside its areas, the PLC's own project does not have.
        writeProject(QByteArray("{'name': 'Plc', 'areas': ") + areas + ", 'scopes': []}");
        startSimulator();
        writeProject(kDiagnoseProject);
    }

    /// The steps that were passed, and the one that failed with "!" before it, of a run against
    /// this PLC.
    std::string stepsAgainst(const QVector<QByteArray>& replies)
    {
        ScriptedPlc plc(replies);
        usePort(plc.port());
        const std::unique_ptr<LineProcess> process = start("diagnose", {QStringLiteral("--json")});
        plc.serve(*process);
        return take(process.get());
    }
    std::string steps(const QStringList& arguments = {})
    {
        const std::unique_ptr<LineProcess> process =
            start("diagnose", QStringList{QStringLiteral("--json")} + arguments);
        return take(process.get());
    }

    QJsonObject lastStep;

private:
    std::string take(LineProcess* process)
    {
        const int code = process->exitCode();
        QStringList names;
        for (const QString& line : process->restOfOutput()) {
            lastStep = parseJson(line);
            const bool hasPassed = member("outcome") == "passed";
            EXPECT_EQ(hasPassed ? "" : "failed", hasPassed ? "" : member("outcome"));
            EXPECT_FALSE(member("text").empty());
            EXPECT_EQ(hasPassed, member("meaning").empty());
            EXPECT_EQ(hasPassed, member("advice").empty());
            EXPECT_GE(lastStep.value(QLatin1String("time")).toDouble(-1), 0);
            names.append((hasPassed ? QString() : QStringLiteral("!")) +
                         lastStep.value(QLatin1String("step")).toString());
        }
        EXPECT_EQ(member("outcome") == "passed" ? 0 : 1, code) << process->errors().toStdString();
        return names.join(QStringLiteral(", ")).toStdString();
    }

protected:
    std::string member(const char* name) const
    {
        return lastStep.value(QLatin1String(name)).toString().toStdString();
    }
    bool tells(const char* name, const char* part) const
    {
        return QString::fromStdString(member(name)).contains(QLatin1String(part));
    }
};

TEST_F(Diagnose, PassesEveryStepToAValue)
{
    startSimulator();
    poke(3, 60, "04D2");
    EXPECT_EQ("name, connection, identification, file request, area, label", steps());
    EXPECT_EQ("MAIN.count = 1234", member("text"));
}

TEST_F(Diagnose, ReadsTheLabelsThatAreNamedEachAreaFirst)
{
    startSimulator();
    EXPECT_EQ("name, connection, identification, file request, area, label, area, label, label",
              steps({QStringLiteral("MAIN.speed"), QStringLiteral("MAIN.other"),
                     QStringLiteral("MAIN.count")}));
}

TEST_F(Diagnose, ShowsTheStepsAsATableForPeople)
{
    startSimulator();
    const Outcome outcome = run("diagnose", {});
    EXPECT_EQ(0, outcome.exitCode) << testing::PrintToString(outcome);
    ASSERT_EQ(7, outcome.lines.size()) << testing::PrintToString(outcome);
    EXPECT_TRUE(outcome.lines.at(0).startsWith(QStringLiteral("Diagnosed at 127.0.0.1:")));
    EXPECT_TRUE(outcome.lines.at(1).startsWith(QStringLiteral("ok      name  ")));
    EXPECT_TRUE(outcome.lines.at(6).endsWith(QStringLiteral(" ms  MAIN.count = 0")));
}

TEST_F(Diagnose, ShowsAFailureWithItsMeaningAndAdvice)
{
    usePort(1);
    const Outcome outcome = run("diagnose", {});
    EXPECT_EQ(1, outcome.exitCode);
    const QString text = outcome.lines.join(QLatin1Char('\n'));
    for (const char* part : {"\nFAILED  connection ", "Connection refused", "\n        means the ",
                             "\n        try   compare "})
        EXPECT_TRUE(text.contains(QLatin1String(part))) << part << text.toStdString();
    for (const QString& line : outcome.lines)
        EXPECT_LE(line.size(), 90) << line.toStdString();
}

TEST_F(Diagnose, LabelThatTheProjectDoesNotHaveIsWrongUsage)
{
    usePort(1);
    const Outcome outcome = run("diagnose", {QStringLiteral("MAIN.sped")});
    EXPECT_EQ(2, outcome.exitCode) << testing::PrintToString(outcome);
    EXPECT_TRUE(outcome.lines.isEmpty());
}

TEST_F(Diagnose, NameWithoutAnAddress)
{
    usePort(1);
    EXPECT_EQ("!name", steps({QStringLiteral("--address"), QStringLiteral("a..b")}));
    EXPECT_TRUE(tells("text", "a..b")) << member("text");
    EXPECT_TRUE(tells("meaning", "no name server"));
}

TEST_F(Diagnose, NameIsResolved)
{
    startSimulator();
    EXPECT_EQ("name, connection, identification, file request, area, label",
              steps({QStringLiteral("--address"), QStringLiteral("localhost")}));
}

TEST_F(Diagnose, ConnectionRefused)
{
    usePort(1);
    EXPECT_EQ("name, !connection", steps());
    EXPECT_TRUE(tells("text", "127.0.0.1 port 1: Connection refused")) << member("text");
    EXPECT_TRUE(tells("meaning", "nothing listens"));
}

TEST_F(Diagnose, NetworkUnreachable)
{
    usePort(1);
    // TCP goes to one receiver; the kernel has no route to a group of them.
    EXPECT_EQ("name, !connection",
              steps({QStringLiteral("--address"), QStringLiteral("224.0.0.1")}));
    EXPECT_TRUE(tells("meaning", "no way to this address")) << member("text");
}

/// Listens with a queue that is full, so that the kernel does not answer further connections.
class FullServer {
public:
    FullServer() : m_listener(::socket(AF_INET, SOCK_STREAM, 0))
    {
        m_address.sin_family = AF_INET;
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::bind(m_listener, address(), sizeof(m_address));
        socklen_t size = sizeof(m_address);
        ::getsockname(m_listener, address(), &size);
        ::listen(m_listener, 0);
        for (int& client : m_clients) {
            client = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
            ::connect(client, address(), sizeof(m_address));
        }
    }
    ~FullServer()
    {
        for (int client : m_clients)
            ::close(client);
        ::close(m_listener);
    }
    quint16 port() const { return ntohs(m_address.sin_port); }

private:
    sockaddr* address() { return reinterpret_cast<sockaddr*>(&m_address); }

    int m_listener;
    sockaddr_in m_address = {};
    int m_clients[4] = {};
};

TEST_F(Diagnose, ConnectionTimedOut)
{
    const FullServer server;
    usePort(server.port());
    EXPECT_EQ("name, !connection", steps());
    EXPECT_TRUE(tells("text", "no connection within 2000 ms")) << member("text");
    EXPECT_TRUE(tells("meaning", "nothing at this address answers"));
}

TEST_F(Diagnose, ConnectionClosedAtOnce)
{
    EXPECT_EQ("name, connection, !identification", stepsAgainst({QByteArray()}));
    EXPECT_TRUE(tells("meaning", "turns this one away")) << member("text");
}

TEST_F(Diagnose, LoginWithoutReply)
{
    EXPECT_EQ("name, connection, !identification", stepsAgainst({}));
    EXPECT_TRUE(tells("text", "no reply within 2000 ms")) << member("text");
    EXPECT_TRUE(tells("meaning", "is not answered"));
}

TEST_F(Diagnose, LoginAnsweredByAnotherService)
{
    EXPECT_EQ("name, connection, !identification",
              stepsAgainst({QByteArray("HTTP/1.1 400 Bad Request\r\n\r\n")}));
    EXPECT_TRUE(tells("text", "48 54 54 50")) << member("text");
    EXPECT_TRUE(tells("meaning", "another kind"));
}

TEST_F(Diagnose, LoginAnsweredByHalf)
{
    EXPECT_EQ("name, connection, !identification", stepsAgainst({loginReply(200).left(100)}));
    EXPECT_TRUE(tells("text", "only 100 bytes")) << member("text");
    EXPECT_TRUE(tells("meaning", "did not end"));
}

TEST_F(Diagnose, LoginReplyTooShort)
{
    EXPECT_EQ("name, connection, !identification", stepsAgainst({loginReply(199)}));
    EXPECT_TRUE(tells("text", "205 bytes")) << member("text");
    EXPECT_TRUE(tells("meaning", "too short"));
}

TEST_F(Diagnose, LoginRefused)
{
    startSimulator({QStringLiteral("--refuse-login")});
    EXPECT_EQ("name, connection, !identification", steps());
    EXPECT_TRUE(tells("text", "status 17 (0x0011)")) << member("text");
    EXPECT_TRUE(tells("meaning", "refuses to log this client in"));
}

TEST_F(Diagnose, FileRequestRefused)
{
    EXPECT_EQ("name, connection, identification, !file request",
              stepsAgainst({loginReply(200), QByteArray::fromHex("BBBB00000002 0012")}));
    EXPECT_TRUE(tells("text", "status 18 (0x0012)")) << member("text");
    EXPECT_TRUE(tells("meaning", "has no program"));
}

TEST_F(Diagnose, FileReplyTooShort)
{
    EXPECT_EQ("name, connection, identification, !file request",
              stepsAgainst({loginReply(200), loginReply(29)}));
    EXPECT_TRUE(tells("meaning", "too short")) << member("text");
}

TEST_F(Diagnose, FileRequestWithoutReply)
{
    EXPECT_EQ("name, connection, identification, !file request", stepsAgainst({loginReply(200)}));
    EXPECT_TRUE(tells("meaning", "is not answered")) << member("text");
}

TEST_F(Diagnose, ReadWithoutReply)
{
    startSimulator({QStringLiteral("--drop-replies"), QStringLiteral("100")});
    EXPECT_EQ("name, connection, identification, file request, !area", steps());
    EXPECT_TRUE(tells("text", "no reply within 2000 ms")) << member("text");
}

TEST_F(Diagnose, ReadAnsweredByHalf)
{
    startSimulator({QStringLiteral("--half-reply"), QStringLiteral("1")});
    EXPECT_EQ("name, connection, identification, file request, !area", steps());
    EXPECT_TRUE(tells("meaning", "did not end")) << member("text");
}

TEST_F(Diagnose, ReadReplyOfAnotherLength)
{
    EXPECT_EQ("name, connection, identification, file request, !area",
              stepsAgainst({loginReply(200), loginReply(30),
                            QByteArray::fromHex("BBBB0000000B 0000 00000001 00 12345678")}));
    EXPECT_TRUE(tells("text", "17 bytes")) << member("text");
    EXPECT_TRUE(tells("meaning", "more or fewer bytes"));
}

TEST_F(Diagnose, ConnectionClosedDuringTheRead)
{
    EXPECT_EQ("name, connection, identification, file request, !area",
              stepsAgainst({loginReply(200), loginReply(30), QByteArray()}));
    EXPECT_TRUE(tells("meaning", "turns this one away")) << member("text");
}

TEST_F(Diagnose, LabelWithoutReplyAlthoughItsAreaCouldBeRead)
{
    EXPECT_EQ("name, connection, identification, file request, area, !label",
              stepsAgainst({loginReply(200), loginReply(30), kGoodRead}));
    EXPECT_TRUE(tells("text", "no reply within 2000 ms")) << member("text");
}

TEST_F(Diagnose, AreaThatThePlcDoesNotHave)
{
    startPlcWith("[{'index': 4, 'size': 64}]");
    EXPECT_EQ("name, connection, identification, file request, !area", steps());
    EXPECT_TRUE(tells("text", "status 48 (0x0030)")) << member("text");
    EXPECT_EQ(
        "the PLC has no area 3, or a smaller one than the project says; of area 4 it can be "
        "read",
        member("meaning"));
}

TEST_F(Diagnose, NothingCanBeRead)
{
    startPlcWith("[{'index': 9, 'size': 64}]");
    EXPECT_EQ("name, connection, identification, file request, !area", steps());
    EXPECT_TRUE(tells("meaning", "lets nothing be read")) << member("text");
}

TEST_F(Diagnose, AreaThatEndsBeforeTheLabel)
{
    startPlcWith("[{'index': 3, 'size': 20}]");
    EXPECT_EQ("name, connection, identification, file request, area, !label", steps());
    EXPECT_TRUE(tells("text", "status 49 (0x0031)")) << member("text");
    EXPECT_TRUE(tells("meaning", "not where MAIN.count lies"));
}

} // namespace
} // namespace plc::test

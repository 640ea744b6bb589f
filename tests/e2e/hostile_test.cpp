// Networks that are not on the user's side: thousands of connections, and floods of rubbish.
// PLC_RUBBISH_MEGABYTES sets how much rubbish is sent (64 unless given), PLC_CONNECTIONS how many
// connections are made (400 unless given).

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QtCore/QElapsedTimer>

#include <cstdlib>
#include <vector>

#include "tests/e2e/plant.h"
#include "tests/support/random.h"

namespace plc::test {
namespace {

constexpr char kHostileProject[] =
    "{'name':'Hostile','settings':{'reconnectDelay':1,'reconnectDelayLimit':1},"
    "'areas':[{'index':1,'size':1000}],'scopes':[{'name':'H','variables':["
    "{'name':'speed','type':'UINT','area':1,'offset':10,"
    "'signal':{'kind':'constant','value':1500}}]}],'cyclic':['H.speed']}";

/// What a program may use more than before, in KiB: the allocator keeps some of what was freed, and
/// sanitizers note for each byte who used it.
constexpr int kTolerance = (PLC_INSTRUMENTED ? 40 : 12) * 1024;
/// Connections that the simulator serves at a time if it is not told otherwise.
constexpr int kMostClients = 256;

int numberFromEnvironment(const char* name, int otherwise)
{
    const char* text = std::getenv(name);
    return text ? std::atoi(text) : otherwise;
}

qint64 rubbishBytes()
{
    return qint64(numberFromEnvironment("PLC_RUBBISH_MEGABYTES", 64)) * 1024 * 1024;
}

/// Memory of a process that is in use, in KiB.
int residentMemory(qint64 pid)
{
    QFile file(QStringLiteral("/proc/%1/status").arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray text = file.readAll();
    const int start = int(text.indexOf("VmRSS:")) + 6;
    return text.mid(start, text.indexOf("kB", start) - start).trimmed().toInt();
}

sockaddr_in loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(quint16(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// A connection of the operating system's own, which may be left as it is.
class Connection {
public:
    explicit Connection(int port) : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        const sockaddr_in address = loopback(port);
        m_isMade =
            ::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    ~Connection() { ::close(m_socket); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool isMade() const { return m_isMade; }
    /// Sends the bytes, which the other side may not want. Returns whether all of them went out.
    bool send(const QByteArray& bytes)
    {
        qint64 sent = 0;
        while (sent < bytes.size()) {
            pollfd descriptor{m_socket, POLLOUT, 0};
            if (::poll(&descriptor, 1, kPatienceOfFlood) <= 0)
                return false;
            const ssize_t step = ::send(m_socket, bytes.constData() + sent,
                                        size_t(bytes.size() - sent), MSG_NOSIGNAL | MSG_DONTWAIT);
            if (step <= 0)
                return false;
            sent += step;
        }
        return true;
    }

private:
    static constexpr int kPatienceOfFlood = 2000; // ms

    int m_socket;
    bool m_isMade = false;
};

QByteArray rubbish(const QByteArray& beginning, int size)
{
    Random random(7);
    QByteArray bytes = beginning;
    while (bytes.size() < size)
        bytes += char(random.below(256));
    return bytes;
}

class Hostile : public Plant {
protected:
    Hostile()
    {
        writeProject(kHostileProject);
        // AddressSanitizer, where it is built in, would keep what was freed for a while.
        qputenv("ASAN_OPTIONS", qgetenv("ASAN_OPTIONS") + ":quarantine_size_mb=1");
    }

    /// Sends the bytes over connection after connection, until so many bytes were sent.
    void flood(const QByteArray& bytes)
    {
        const qint64 wanted = rubbishBytes();
        for (qint64 sent = 0; sent < wanted;) {
            Connection connection(simulator().port().toInt());
            ASSERT_TRUE(connection.isMade());
            do
                sent += bytes.size();
            while (sent < wanted && connection.send(bytes));
        }
    }
    void expectFlatMemory(qint64 pid, int before)
    {
        EXPECT_LT(residentMemory(pid) - before, kTolerance) << "KiB; before: " << before;
    }
};

TEST_F(Hostile, ThousandsOfConnectionsLeaveTheSimulatorUsable)
{
    rlimit limit{};
    ASSERT_EQ(0, ::getrlimit(RLIMIT_NOFILE, &limit));
    limit.rlim_cur = limit.rlim_max;
    ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &limit));
    // As many as this process may have where that is less.
    const int count = int(
        qMin<rlim_t>(rlim_t(numberFromEnvironment("PLC_CONNECTIONS", 400)), limit.rlim_cur - 100));

    startSimulator();
    const int before = residentMemory(simulator().pid());
    {
        std::vector<std::unique_ptr<Connection>> connections;
        for (int i = 0; i < count; ++i) {
            connections.push_back(std::make_unique<Connection>(simulator().port().toInt()));
            ASSERT_TRUE(connections.back()->isMade()) << i;
        }
        EXPECT_EQ(kMostClients, status("clients"));
    }
    QElapsedTimer clock;
    clock.start();
    while (status("clients") > 0)
        ASSERT_LT(clock.elapsed(), kPatience);
    EXPECT_EQ("1500", readText(QStringLiteral("H.speed")));
    expectFlatMemory(simulator().pid(), before);
}

TEST_F(Hostile, SimulatorAcceptsAgainAfterItRanOutOfFileDescriptors)
{
    if (PLC_INSTRUMENTED)
        GTEST_SKIP() << "UndefinedBehaviorSanitizer needs descriptors to look at an object's type";
    LineProcess simulator(QStringLiteral("/bin/sh"),
                          {QStringLiteral("-c"), QStringLiteral("ulimit -n 40; exec \"$0\" \"$@\""),
                           QStringLiteral(PLC_SIMULATOR), projectPath(), QStringLiteral("--port"),
                           QStringLiteral("0"), QStringLiteral("--quiet")});
    const int port = simulator.nextLine().section(QLatin1Char(':'), -1).toInt();
    {
        std::vector<std::unique_ptr<Connection>> connections;
        for (int i = 0; i < 60; ++i)
            connections.push_back(std::make_unique<Connection>(port));
        // Answered when all that came before it has been seen.
        simulator.send(QStringLiteral("status"));
        EXPECT_FALSE(simulator.nextLine().isEmpty());
    }
    usePort(quint16(port));
    EXPECT_EQ("1500", readText(QStringLiteral("H.speed")));
}

TEST_F(Hostile, RubbishDoesNotFillTheMemoryOfTheSimulator)
{
    startSimulator();
    const int before = residentMemory(simulator().pid());
    flood(rubbish("", 64 * 1024));
    expectFlatMemory(simulator().pid(), before);
    EXPECT_EQ("1500", readText(QStringLiteral("H.speed")));
}

TEST_F(Hostile, FramesOfTheLargestSizeDoNotFillTheMemoryOfTheSimulator)
{
    // Each is a request of 65541 bytes for a service that does not exist, and no reply is read.
    startSimulator();
    const int before = residentMemory(simulator().pid());
    flood(rubbish(QByteArray::fromHex("BBBB0000FFFF7700"), 6 + 0xFFFF));
    expectFlatMemory(simulator().pid(), before);
    EXPECT_EQ("1500", readText(QStringLiteral("H.speed")));
}

/// A server that sends the same bytes again and again to whoever connects, as fast as they go.
class Flood {
public:
    explicit Flood(const QByteArray& bytes)
        : m_listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), m_bytes(bytes)
    {
        sockaddr_in address = loopback(0);
        socklen_t size = sizeof address;
        EXPECT_EQ(0, ::bind(m_listener, reinterpret_cast<sockaddr*>(&address), size));
        EXPECT_EQ(0, ::listen(m_listener, 5));
        EXPECT_EQ(0, ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size));
        m_port = ntohs(address.sin_port);
    }
    ~Flood() { ::close(m_listener); }
    Flood(const Flood&) = delete;
    Flood& operator=(const Flood&) = delete;

    quint16 port() const { return m_port; }

    /// Serves one client until it has gone. Returns the bytes sent, -1 when none has come.
    qint64 serveOne()
    {
        pollfd descriptor{m_listener, POLLIN, 0};
        if (::poll(&descriptor, 1, kPatience) <= 0)
            return -1;
        const int client = ::accept(m_listener, nullptr, nullptr);
        qint64 sent = 0;
        for (;;) {
            const ssize_t step =
                ::send(client, m_bytes.constData(), size_t(m_bytes.size()), MSG_NOSIGNAL);
            if (step <= 0)
                break;
            sent += step;
        }
        ::close(client);
        return sent;
    }

private:
    int m_listener;
    QByteArray m_bytes;
    quint16 m_port = 0;
};

class RubbishServer : public Hostile {
protected:
    void expectHostToStayAlive(const QByteArray& bytes)
    {
        Flood server(bytes);
        usePort(server.port());
        const std::unique_ptr<LineProcess> host =
            start("run",
                  {QStringLiteral("--json"), QStringLiteral("--interval"), QStringLiteral("1000")});
        const qint64 wanted = rubbishBytes();
        qint64 sent = 0;
        int before = 0;
        while (sent < wanted) {
            const qint64 step = server.serveOne();
            ASSERT_GE(step, 0) << "the host connects no more";
            // Taken from the pipe: the host waits for a reader when it is full.
            ASSERT_TRUE(host->isRunning());
            host->restOfOutput();
            sent += step + 1;
            if (before == 0 && sent > wanted / 8)
                before = residentMemory(host->pid());
        }
        expectFlatMemory(host->pid(), before);
    }
};

TEST_F(RubbishServer, RubbishDoesNotFillTheMemoryOfTheHost)
{
    expectHostToStayAlive(rubbish("", 64 * 1024));
}

TEST_F(RubbishServer, FramesThatNobodyAskedForDoNotFillTheMemoryOfTheHost)
{
    expectHostToStayAlive(rubbish(QByteArray::fromHex("BBBB0000FFFF0000"), 6 + 0xFFFF));
}

} // namespace
} // namespace plc::test

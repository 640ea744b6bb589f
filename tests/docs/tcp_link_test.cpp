#include "docs/examples/tcp_link.h"

#include <QtCore/QProcess>

#include <limits>

#include "support/driver_fixture.h"

using example::Exchange;
using plc::test::DriverTest;
using plc::test::hex;
using plc::test::makeVar;
using plc::test::makeWrite;
using plc::test::ResultCall;
using plc::test::resultCalls;

namespace {

constexpr int kPatience = 30000; // ms, for what is expected to happen
constexpr int kTimeout = 200;    // ms, for a reply that does not come

/// The simulator with the tank of docs/examples/tank.json: 1500 at byte 10 of area 1.
class Simulator {
public:
    explicit Simulator(const QStringList& options)
    {
        const QStringList arguments{QStringLiteral(PLC_SOURCE_DIR "/docs/examples/tank.json"),
                                    QStringLiteral("--port"), QStringLiteral("0")};
        m_process.setStandardErrorFile(QProcess::nullDevice());
        m_process.start(QStringLiteral(PLC_SIMULATOR), arguments + options);
        QByteArray line;
        while (!line.endsWith('\n') && m_process.waitForReadyRead(kPatience))
            line += m_process.readLine();
        m_port = line.trimmed().split(':').last().toUShort();
    }
    ~Simulator()
    {
        m_process.kill();
        m_process.waitForFinished(kPatience);
    }

    quint16 port() const { return m_port; }

private:
    QProcess m_process;
    quint16 m_port = 0;
};

class TcpLinkExample : public DriverTest {
protected:
    TcpLinkExample() { settings.retryLimit = 2; }

    void readLevel()
    {
        RW_VAR read = makeVar(1, 10, 2);
        read.aux1 = -1;
        AddListReadVar(&read);
    }

    static QByteArray level()
    {
        uchar bytes[2];
        PLC_driver.localImage.read(1, 10, bytes, 2);
        return QByteArray(reinterpret_cast<const char*>(bytes), 2);
    }

    void connectTo(const Simulator& simulator)
    {
        socket.abort();
        socket.connectToHost(QStringLiteral("127.0.0.1"), simulator.port());
        ASSERT_TRUE(socket.waitForConnected(kPatience)) << socket.errorString().toStdString();
    }

    Exchange next(int timeout = kPatience) { return example::exchange(socket, settings, timeout); }

    void logIn()
    {
        ASSERT_EQ(Exchange::Done, next());
        ASSERT_EQ(Exchange::Done, next());
        ASSERT_NE(PLC_driver.loggedIn, 0);
    }

    /// A login, a request that ends with a lost link, and a new connection on which all goes well.
    void expectRecovery(const QStringList& options)
    {
        const Simulator simulator(options);
        readLevel();
        connectTo(simulator);
        logIn();
        EXPECT_EQ(Exchange::LinkLost, next(kTimeout));
        connectTo(simulator);
        example::giveUpEverything(settings);
        EXPECT_EQ(0, PLC_driver.loggedIn);
        logIn();
        EXPECT_EQ(Exchange::Done, next());
        EXPECT_EQ(hex("05 DC"), level());
    }

    QTcpSocket socket;
};

} // namespace

TEST_F(TcpLinkExample, LogsInReadsAndWrites)
{
    const Simulator simulator({});
    readLevel();
    connectTo(simulator);
    logIn();
    EXPECT_EQ(Exchange::Done, next());
    EXPECT_EQ(hex("05 DC"), level());

    RW_VAR write = makeWrite(1, 10, hex("04 B0"), 1, 7);
    AddListWriteVar(&write, 0);
    EXPECT_EQ(Exchange::Done, next());
    EXPECT_THAT(resultCalls, ::testing::ElementsAre(ResultCall{77, 1, 7, 1}));
}

TEST_F(TcpLinkExample, TakesRepliesInSingleBytes)
{
    const Simulator simulator({QStringLiteral("--fragment"), QStringLiteral("1")});
    readLevel();
    connectTo(simulator);
    logIn();
    EXPECT_EQ(Exchange::Done, next());
    EXPECT_EQ(hex("05 DC"), level());
}

TEST_F(TcpLinkExample, TakesNoReplyThatWaitedBeyondItsDeadline)
{
    const Simulator simulator({});
    readLevel();
    connectTo(simulator);
    socket.write(ComCommunication()->frame);
    ASSERT_TRUE(socket.waitForReadyRead(kPatience));
    QByteArray frame;
    EXPECT_FALSE(example::receiveFrame(socket, 0, &frame));
}

TEST_F(TcpLinkExample, RecoversFromAReplyThatNeverComes)
{
    expectRecovery({QStringLiteral("--drop-replies"), QStringLiteral("1")});
}

TEST_F(TcpLinkExample, RecoversFromHalfAReply)
{
    expectRecovery({QStringLiteral("--half-reply"), QStringLiteral("1")});
}

TEST_F(TcpLinkExample, RecoversFromBytesThatBelongToNoRequest)
{
    expectRecovery({QStringLiteral("--duplicate-reply"), QStringLiteral("1")});
}

TEST_F(TcpLinkExample, RepeatsARefusedWriteAndThenAbandonsIt)
{
    const Simulator simulator({QStringLiteral("--fail-writes")});
    RW_VAR write = makeWrite(1, 10, hex("04 B0"), 1, 7);
    AddListWriteVar(&write, 0);
    connectTo(simulator);
    logIn();
    EXPECT_EQ(Exchange::Repeat, next());
    EXPECT_EQ(Exchange::Repeat, next());
    EXPECT_EQ(Exchange::Abandoned, next());
    EXPECT_THAT(resultCalls, ::testing::ElementsAre(ResultCall{77, 1, 7, 2}));
    EXPECT_EQ(Exchange::Idle, next());
}

TEST_F(TcpLinkExample, ReportsARefusedLogin)
{
    const Simulator simulator({QStringLiteral("--refuse-login")});
    readLevel();
    connectTo(simulator);
    EXPECT_EQ(Exchange::LoginRefused, next());
}

TEST_F(TcpLinkExample, HasNothingToGiveUpWhenNothingIsToBeSent)
{
    EXPECT_FALSE(example::giveUpTransaction(settings));
}

TEST_F(TcpLinkExample, GivesUpAllWritesAndReadsAndForgetsTheLogin)
{
    plc::test::logIn();
    readLevel();
    constexpr int kRequests = 12; // of a batch each, which takes more than five turns
    for (int i = 0; i < kRequests; ++i) {
        RW_VAR write = makeWrite(1, 1000 * i, QByteArray(900, '\0'), 1, i);
        AddListWriteVar(&write, 0);
        RW_VAR read = makeVar(1, 1000 * i, 900);
        read.aux1 = 100 + i;
        AddListOnceReadVar(&read, 1);
    }
    example::giveUpEverything(settings);
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
    EXPECT_EQ(1, PLC_driver.readList.size());
    EXPECT_EQ(0, PLC_driver.loggedIn);
    EXPECT_EQ(size_t(2 * kRequests), resultCalls.size());
}

TEST_F(TcpLinkExample, GivesUpAtOnceWhateverTheRetryLimitIs)
{
    constexpr int kHighest = std::numeric_limits<int>::max();
    constexpr int kTries[] = {0, 2, kHighest};
    for (const int limit : kTries) {
        plc::test::logIn();
        settings.retryLimit = limit;
        settings.retryCount = 0;
        RW_VAR write = makeWrite(1, 10, hex("04 B0"), 1, limit);
        AddListWriteVar(&write, 0);
        EXPECT_TRUE(example::giveUpTransaction(settings));
        EXPECT_TRUE(PLC_driver.writeList.isEmpty()) << limit;
        EXPECT_EQ(0, PLC_driver.loggedIn) << limit;
        EXPECT_EQ(0, settings.retryCount) << limit;
    }
}

TEST_F(TcpLinkExample, GivesUpARequestWhoseReplySizeIsKnownAtOnce)
{
    plc::test::logIn();
    settings.retryLimit = std::numeric_limits<int>::max();
    RW_VAR write = makeWrite(1, 10, hex("04 B0"), 1, 7);
    AddListWriteVar(&write, 0);
    ComCommunication();
    EXPECT_EQ(0, plc::test::deliver(plc::test::refusedReply())->result);
    ASSERT_EQ(8, ComCommunication()->replyLength);
    EXPECT_TRUE(example::giveUpTransaction(settings));
    EXPECT_EQ(0, PLC_driver.loggedIn);
}

TEST_F(TcpLinkExample, ForgetsTheLoginWithNothingToSend)
{
    plc::test::logIn();
    example::giveUpEverything(settings);
    EXPECT_EQ(0, PLC_driver.loggedIn);
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
    EXPECT_EQ(nullptr, ComCommunication());
}

TEST(MinimalHostExample, PrintsTheLevel)
{
    const Simulator simulator({});
    QProcess host;
    host.start(QStringLiteral(PLC_MINIMAL_HOST), {QString::number(simulator.port())});
    ASSERT_TRUE(host.waitForFinished(kPatience));
    EXPECT_EQ(0, host.exitCode());
    EXPECT_EQ("TANK.level 1500\n", host.readAllStandardOutput().toStdString());
}

TEST(MinimalHostExample, EndsWhenThePlcRefuses)
{
    const Simulator simulator({QStringLiteral("--refuse-login")});
    QProcess host;
    host.start(QStringLiteral(PLC_MINIMAL_HOST), {QString::number(simulator.port())});
    ASSERT_TRUE(host.waitForFinished(kPatience));
    EXPECT_EQ(1, host.exitCode());
}

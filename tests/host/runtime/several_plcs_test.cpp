#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

/// The test's own runtime, and a second one with a copy of the driver.
class SeveralPlcs : public HostTest {
protected:
    SeveralPlcs()
    {
        const Expected<DriverLibrary> copy = DriverLibrary::loadCopy(QStringLiteral(PLC_LIBRARY));
        EXPECT_TRUE(copy);
        library = std::make_unique<DriverLibrary>(*copy);
        other = std::make_unique<Runtime>(*library->take(), settings(), project, this);
    }
    ~SeveralPlcs() override { other.reset(); }

    /// A write of the second runtime that has come as far as its login.
    void writeToOther()
    {
        std::swap(runtime, other);
        connect();
        write("Main.count", "7");
        std::swap(runtime, other);
    }

    std::unique_ptr<DriverLibrary> library;
    std::unique_ptr<Runtime> other;
};

TEST_F(SeveralPlcs, ReportsOfOneDriverReachItsOwnRuntime)
{
    connect();
    write("Main.speed", "1");
    writeToOther();
    ASSERT_EQ("S", actions());
    session().disconnected(QStringLiteral("gone"), now);
    ASSERT_EQ(1u, writes.size());
    EXPECT_EQ("Main.speed", writes[0].label);
    EXPECT_EQ(1, other->openWrites());
}

TEST_F(SeveralPlcs, OneGoesOnAfterTheOtherHasEnded)
{
    other.reset();
    connect();
    write("Main.speed", "-2");
    logIn();
    request();
    answer(writeReply()); // The driver reports the write.
    ASSERT_EQ(1u, writes.size());
    EXPECT_TRUE(writes[0].outcome.isDone());
}

TEST_F(SeveralPlcs, EachHasItsOwnValues)
{
    cycle({"Main.speed"});
    connect();
    logIn();
    request();
    answer(readReply({hex("00 05")}));
    std::swap(runtime, other);
    cycle({"Main.speed"});
    connect();
    logIn();
    request();
    answer(readReply({hex("00 09")}));
    EXPECT_EQ("9", shown("Main.speed"));
    std::swap(runtime, other);
    EXPECT_EQ("5", shown("Main.speed"));
}

class EndOfRuntime : public HostTest {};

TEST_F(EndOfRuntime, SettlesEveryTransferOnce)
{
    connect();
    write("Main.speed", "1");
    readOnce("Main.count");
    logIn();
    request();
    runtime.reset();
    ASSERT_EQ(1u, writes.size());
    EXPECT_EQ(TransferOutcome::LinkLost, writes[0].outcome.kind);
    ASSERT_EQ(1u, reads.size());
    EXPECT_EQ(TransferOutcome::NotSent, reads[0].outcome.kind);
}

TEST_F(EndOfRuntime, SettlesWhatWasQueuedBeforeTheStart)
{
    write("Main.speed", "1");
    runtime.reset();
    ASSERT_EQ(1u, writes.size());
    EXPECT_EQ(TransferOutcome::NotSent, writes[0].outcome.kind);
    EXPECT_EQ("the host has ended", writes[0].outcome.reason);
}

TEST_F(EndOfRuntime, EndsAtOnceWhatIsQueuedFromInsideOfASettling)
{
    const DataPoint speed = point("Main.speed");
    Runtime* const ending = runtime.get();
    std::vector<TransferOutcome> inner;
    ending->readOnce(speed, now, [&](const TransferOutcome&, const QByteArray&) {
        ending->readOnce(speed, now, [&](const TransferOutcome& outcome, const QByteArray&) {
            inner.push_back(outcome);
        });
    });
    runtime.reset();
    ASSERT_EQ(1u, inner.size());
    EXPECT_EQ(TransferOutcome::NotSent, inner[0].kind);
}

TEST_F(EndOfRuntime, IsNotToldToTheListener)
{
    connect();
    linkEvents.clear();
    runtime.reset();
    EXPECT_TRUE(linkEvents.empty());
}

TEST_F(EndOfRuntime, LeavesNothingInTheDriverForTheNextOne)
{
    connect();
    write("Main.speed", "1");
    logIn();
    request();
    runtime = nullptr;
    runtime = std::make_unique<Runtime>(takenDriver(), settings(), project, this);
    connect();
    EXPECT_EQ("", actions());
}

TEST_F(EndOfRuntime, GivesTheDriverToTheNextOne)
{
    EXPECT_FALSE(DriverClaim::take(builtDriver()));
    runtime.reset();
    EXPECT_TRUE(DriverClaim::take(builtDriver()));
}

TEST_F(EndOfRuntime, LeavesTheDriverNoCyclicReads)
{
    cycle({"Main.speed", "Big.far"});
    runtime.reset();
    RW_VAR read;
    EXPECT_EQ(1, builtDriver().addListReadVar(&read));
}

TEST_F(EndOfRuntime, LeavesTheDriverNoSymbols)
{
    const int address = point("Main.speed").address;
    EXPECT_EQ(address, builtDriver().plcAddressChangeIntef(0, QStringLiteral("Main.speed")));
    runtime.reset();
    EXPECT_EQ(-1, builtDriver().plcAddressChangeIntef(0, QStringLiteral("Main.speed")));
    runtime = std::make_unique<Runtime>(takenDriver(), settings(), project, this);
    EXPECT_EQ(address, point("Main.speed").address);
}

/// The driver drops what is asked of a station that is off without a word.
TEST_F(EndOfRuntime, LeavesNoStationOff)
{
    runtime->switchStation(0, false, now);
    runtime.reset();
    runtime = std::make_unique<Runtime>(takenDriver(), settings(), project, this);
    write("Main.speed", "1");
    connect();
    logIn();
    EXPECT_EQ(Service::Write, parseRequest(request()).service);
}

TEST_F(EndOfRuntime, LeavesNoValueToTheNextOne)
{
    cycle({"Main.speed"});
    connect();
    logIn();
    request();
    answer(readReply({hex("00 05")}));
    runtime = nullptr;
    runtime = std::make_unique<Runtime>(takenDriver(), settings(), project, this);
    cycle({"Main.speed"});
    EXPECT_EQ("unread", shown("Main.speed"));
    connect();
    EXPECT_EQ("unread", shown("Main.speed"));
}

class ReadingTest : public HostTest {};

TEST_F(ReadingTest, TellsBytesAgeAndState)
{
    cycle({"Main.speed", "Big.far"});
    EXPECT_EQ(ValueState::Unread, runtime->values().reading(0, now).state);
    EXPECT_EQ(-1, runtime->values().reading(0, now).age);
    connect();
    logIn();
    request();
    answer(readReply({hex("00 05"), hex("00 06")}));
    const ValueReading fresh = runtime->values().reading(0, now + 3000);
    EXPECT_EQ(fresh.bytes, hex("05 00"));
    EXPECT_EQ(3000, fresh.age);
    EXPECT_EQ(ValueState::Good, fresh.state);
    EXPECT_EQ(ValueState::Stale, runtime->values().reading(0, now + 3001).state);
}

} // namespace
} // namespace test
} // namespace plc::host

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
        other = std::make_unique<Runtime>(library->functions(), settings(), project, this);
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
    ASSERT_EQ(actions(), "S");
    session().disconnected(QStringLiteral("gone"), now);
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(writes[0].label, "Main.speed");
    EXPECT_EQ(other->openWrites(), 1);
}

TEST_F(SeveralPlcs, OneGoesOnAfterTheOtherHasEnded)
{
    other.reset();
    connect();
    write("Main.speed", "-2");
    logIn();
    request();
    answer(writeReply()); // The driver reports the write.
    ASSERT_EQ(writes.size(), 1u);
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
    EXPECT_EQ(shown("Main.speed"), "9");
    std::swap(runtime, other);
    EXPECT_EQ(shown("Main.speed"), "5");
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
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(writes[0].outcome.kind, TransferOutcome::LinkLost);
    ASSERT_EQ(reads.size(), 1u);
    EXPECT_EQ(reads[0].outcome.kind, TransferOutcome::NotSent);
}

TEST_F(EndOfRuntime, SettlesWhatWasQueuedBeforeTheStart)
{
    write("Main.speed", "1");
    runtime.reset();
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(writes[0].outcome.kind, TransferOutcome::NotSent);
    EXPECT_EQ(writes[0].outcome.reason, "the host has ended");
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
    ASSERT_EQ(inner.size(), 1u);
    EXPECT_EQ(inner[0].kind, TransferOutcome::NotSent);
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
    runtime = std::make_unique<Runtime>(builtDriver(), settings(), project, this);
    connect();
    EXPECT_EQ(actions(), "");
}

class ReadingTest : public HostTest {};

TEST_F(ReadingTest, TellsBytesAgeAndState)
{
    cycle({"Main.speed", "Big.far"});
    EXPECT_EQ(runtime->values().reading(0, now).state, ValueState::Unread);
    EXPECT_EQ(runtime->values().reading(0, now).age, -1);
    connect();
    logIn();
    request();
    answer(readReply({hex("00 05"), hex("00 06")}));
    const ValueReading fresh = runtime->values().reading(0, now + 3000);
    EXPECT_EQ(fresh.bytes, hex("05 00"));
    EXPECT_EQ(fresh.age, 3000);
    EXPECT_EQ(fresh.state, ValueState::Good);
    EXPECT_EQ(runtime->values().reading(0, now + 3001).state, ValueState::Stale);
}

} // namespace
} // namespace test
} // namespace plc::host

#include "host/runtime/runtime_front.h"

#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

class RuntimeFrontTest : public HostTest {
protected:
    RuntimeFrontTest() : front(std::make_unique<RuntimeFront>(runtime.get(), [this] { ++wakeUps; }))
    {
    }
    ~RuntimeFrontTest() override { front.reset(); }

    void post(const char* label, const char* value)
    {
        const DataPoint target = point(label);
        front->write(target, *parsePoint(target, QString::fromUtf8(value)),
                     [this, target](const TransferOutcome& outcome) {
                         writes.push_back({target.text, outcome, QByteArray()});
                     });
    }

    int wakeUps = 0;
    std::unique_ptr<RuntimeFront> front;
};

TEST_F(RuntimeFrontTest, PostedWriteWaitsForTheOwnerAndIsSettledThere)
{
    connect();
    post("Main.speed", "1");
    EXPECT_EQ(wakeUps, 1);
    EXPECT_EQ(actions(), "");
    front->carryOut(now);
    logIn();
    request();
    EXPECT_TRUE(writes.empty());
    answer(writeReply());
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_TRUE(writes[0].outcome.isDone());
    front->carryOut(now);
    EXPECT_EQ(writes.size(), 1u);
}

TEST_F(RuntimeFrontTest, WritesKeepTheirOrder)
{
    session().start(now);
    session().stop();
    post("Main.speed", "1");
    post("Main.count", "2");
    front->carryOut(now);
    ASSERT_EQ(writes.size(), 2u);
    EXPECT_EQ(writes[0].label, "Main.speed");
    EXPECT_EQ(writes[1].label, "Main.count");
}

TEST_F(RuntimeFrontTest, EndSettlesWhatWasNotCarriedOut)
{
    post("Main.speed", "1");
    front.reset();
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(writes[0].outcome.kind, TransferOutcome::NotSent);
    EXPECT_EQ(writes[0].outcome.reason, "the host has ended");
}

TEST_F(RuntimeFrontTest, EndSettlesWhatIsPostedFromInsideOfASettling)
{
    const DataPoint speed = point("Main.speed");
    const QVector<values::Value> one = *parsePoint(speed, QStringLiteral("1"));
    RuntimeFront* const ending = front.get();
    std::vector<TransferOutcome> inner;
    ending->write(speed, one, [&](const TransferOutcome&) {
        ending->write(speed, one,
                      [&](const TransferOutcome& outcome) { inner.push_back(outcome); });
    });
    front.reset();
    ASSERT_EQ(inner.size(), 1u);
    EXPECT_EQ(inner[0].kind, TransferOutcome::NotSent);
}

TEST_F(RuntimeFrontTest, SnapshotNamesTheValuesThatItHas)
{
    cycle({"Main.speed", "Main.count"});
    const RuntimeSnapshot before = front->snapshot(now);
    cycle({"Main.word"});
    const RuntimeSnapshot after = front->snapshot(now);
    ASSERT_EQ(2, before.points.size());
    EXPECT_EQ("Main.speed", before.points[0].text);
    EXPECT_EQ("Main.count", before.points[1].text);
    EXPECT_EQ(2, before.values.size());
    ASSERT_EQ(1, after.points.size());
    EXPECT_EQ("Main.word", after.points[0].text);
    EXPECT_EQ(1, after.values.size());
}

TEST_F(RuntimeFrontTest, SnapshotHasTheValuesAndTheLink)
{
    cycle({"Main.speed"});
    EXPECT_EQ(front->snapshot(now).link, LinkState::Down);
    connect();
    logIn();
    request();
    answer(readReply({hex("00 05")}));
    RuntimeSnapshot snapshot = front->snapshot(now + 7);
    EXPECT_EQ(snapshot.link, LinkState::Up);
    ASSERT_EQ(snapshot.values.size(), 1);
    EXPECT_EQ(snapshot.values[0].bytes, hex("05 00"));
    EXPECT_EQ(snapshot.values[0].age, 7);
    session().disconnected(QStringLiteral("gone"), now);
    snapshot = front->snapshot(now);
    EXPECT_EQ(snapshot.link, LinkState::Down);
    EXPECT_EQ(snapshot.linkDownReason, "gone");
}

} // namespace
} // namespace test
} // namespace plc::host

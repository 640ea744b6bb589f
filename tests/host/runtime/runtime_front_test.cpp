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
    EXPECT_EQ(1, wakeUps);
    EXPECT_EQ("", actions());
    front->carryOut(now);
    logIn();
    request();
    EXPECT_TRUE(writes.empty());
    answer(writeReply());
    ASSERT_EQ(1u, writes.size());
    EXPECT_TRUE(writes[0].outcome.isDone());
    front->carryOut(now);
    EXPECT_EQ(1u, writes.size());
}

TEST_F(RuntimeFrontTest, WritesKeepTheirOrder)
{
    session().start(now);
    session().stop();
    post("Main.speed", "1");
    post("Main.count", "2");
    front->carryOut(now);
    ASSERT_EQ(2u, writes.size());
    EXPECT_EQ("Main.speed", writes[0].label);
    EXPECT_EQ("Main.count", writes[1].label);
}

TEST_F(RuntimeFrontTest, EndSettlesWhatWasNotCarriedOut)
{
    post("Main.speed", "1");
    front.reset();
    ASSERT_EQ(1u, writes.size());
    EXPECT_EQ(TransferOutcome::NotSent, writes[0].outcome.kind);
    EXPECT_EQ("the host has ended", writes[0].outcome.reason);
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
    ASSERT_EQ(1u, inner.size());
    EXPECT_EQ(TransferOutcome::NotSent, inner[0].kind);
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
    EXPECT_EQ(LinkState::Down, front->snapshot(now).link);
    connect();
    logIn();
    request();
    answer(readReply({hex("00 05")}));
    RuntimeSnapshot snapshot = front->snapshot(now + 7);
    EXPECT_EQ(LinkState::Up, snapshot.link);
    ASSERT_EQ(1, snapshot.values.size());
    EXPECT_EQ(snapshot.values[0].bytes, hex("05 00"));
    EXPECT_EQ(7, snapshot.values[0].age);
    session().disconnected(QStringLiteral("gone"), now);
    snapshot = front->snapshot(now);
    EXPECT_EQ(LinkState::Down, snapshot.link);
    EXPECT_EQ("gone", snapshot.linkDownReason);
}

} // namespace
} // namespace test
} // namespace plc::host

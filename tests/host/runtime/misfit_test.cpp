#include "host/runtime/runtime_front.h"
#include "tests/host/host_fixture.h"

namespace plc::host::test {
namespace {

using values::Value;

/// Connected, and with nothing to do.
class MisfitTest : public HostTest {
protected:
    MisfitTest()
    {
        connect();
        actions();
    }

    /// Why these values are not written. Nothing goes out, and it is told once.
    std::string misfit(const DataPoint& target, const QVector<Value>& values)
    {
        std::vector<TransferOutcome> outcomes;
        runtime->write(target, values, now, [&outcomes](const TransferOutcome& outcome) {
            outcomes.push_back(outcome);
        });
        EXPECT_EQ("", actions());
        EXPECT_EQ(0, runtime->openWrites());
        return toldOnce(outcomes);
    }
    std::string misfitOfRead(const DataPoint& target)
    {
        std::vector<TransferOutcome> outcomes;
        runtime->readOnce(target, now,
                          [&outcomes](const TransferOutcome& outcome, const QByteArray&) {
                              outcomes.push_back(outcome);
                          });
        EXPECT_EQ("", actions());
        return toldOnce(outcomes);
    }
    static std::string toldOnce(const std::vector<TransferOutcome>& outcomes)
    {
        EXPECT_EQ(1u, outcomes.size());
        if (outcomes.size() != 1)
            return "told as often as " + std::to_string(outcomes.size());
        EXPECT_EQ(TransferOutcome::NotSent, outcomes[0].kind);
        return outcomes[0].reason.toStdString();
    }
};

TEST_F(MisfitTest, MoreOrFewerValuesThanThereAreElementsAreNotSent)
{
    const DataPoint count = point("Main.count");
    EXPECT_EQ("it takes one value, not 2", misfit(count, {quint64(1), quint64(77)}));
    EXPECT_EQ("it takes one value, not 0", misfit(count, {}));
    EXPECT_EQ("it takes one value, not 0", misfit(point("Main.text"), {}));
    EXPECT_EQ("it takes 3 values, not 2",
              misfit(point("Main.bytes[0]*3"), {quint64(1), quint64(2)}));
}

TEST_F(MisfitTest, ValuesThatTheTypeCannotHoldAreNotSent)
{
    EXPECT_EQ("UINT takes a whole number, not 99999.5 of 64 bits",
              misfit(point("Main.count"), {99999.5}));
    EXPECT_EQ("STRING takes a text, not 1", misfit(point("Main.text"), {quint64(1)}));
    EXPECT_EQ("256 is outside the range of BYTE, 16#0 to 16#FF",
              misfit(point("Main.bytes[0]*2"), {quint64(255), quint64(256)}));
}

TEST_F(MisfitTest, TextsLongerThanTheirRoomAreNotSent)
{
    EXPECT_EQ("the text has 12 characters and the STRING has room for 10",
              misfit(point("Main.text"), {QString(12, QLatin1Char('x'))}));
    EXPECT_EQ("texts are written one by one, each by its own label",
              misfit(point("Big.texts[0]*2"), {QStringLiteral("a"), QStringLiteral("b")}));
}

/// The driver goes where the label leads, the host counts on what the data point says.
TEST_F(MisfitTest, DataPointsThatTheirLabelDoesNotLeadToAreNotUsed)
{
    const DataPoint count = point("Main.count");
    std::vector<DataPoint> others(6, count);
    others[0].address = 100;
    others[1].area = 2;
    others[2].type = values::findIecType(QStringLiteral("LREAL"));
    others[3].type = nullptr;
    others[4].station = 7;
    others[5].stringLength = 5;
    for (const DataPoint& other : others) {
        const std::string reason =
            "Main.count: the data point is not what the label leads to in this program; take the "
            "one that is found by the label";
        EXPECT_EQ(reason, misfit(other, {quint64(1)}));
        EXPECT_EQ(reason, misfitOfRead(other));
    }
}

TEST_F(MisfitTest, DataPointsWithoutElementsOrWithTooManyAreNotUsed)
{
    DataPoint bytes = point("Main.bytes[8]*2");
    bytes.elements = 3;
    EXPECT_EQ("Main.bytes[8]*3: only 2 element(s) of the array are left from there on",
              misfit(bytes, {quint64(1), quint64(2), quint64(3)}));
    bytes.elements = 0;
    EXPECT_EQ("the data point has 0 elements", misfit(bytes, {}));
    bytes.elements = -1;
    EXPECT_EQ("the data point has -1 elements", misfitOfRead(bytes));
}

/// The driver queues nothing for a label that it does not know, and never tells.
TEST_F(MisfitTest, UnknownLabelsAreTold)
{
    DataPoint unknown = point("Main.count");
    unknown.label = QStringLiteral("Main.nothing");
    EXPECT_NE("", misfit(unknown, {quint64(1)}));
    EXPECT_NE("", misfitOfRead(DataPoint()));
    EXPECT_NE("", misfit(DataPoint(), {quint64(1)}));
}

TEST_F(MisfitTest, PostedWritesAreJudgedAsWell)
{
    int wakeUps = 0;
    RuntimeFront front(runtime.get(), [&wakeUps] { ++wakeUps; });
    std::vector<TransferOutcome> outcomes;
    front.write(point("Main.count"), {quint64(1), quint64(77)},
                [&outcomes](const TransferOutcome& outcome) { outcomes.push_back(outcome); });
    EXPECT_TRUE(outcomes.empty());
    front.carryOut(now);
    EXPECT_EQ(1, wakeUps);
    EXPECT_EQ("it takes one value, not 2", toldOnce(outcomes));
    EXPECT_EQ("", actions());
}

TEST_F(MisfitTest, NobodyNeedsToHearOfATransfer)
{
    runtime->write(point("Main.count"), {quint64(1)}, now, nullptr);
    runtime->readOnce(point("Main.count"), now, nullptr);
    runtime->write(point("Main.count"), {}, now, nullptr);
    RuntimeFront front(runtime.get(), nullptr);
    front.write(point("Main.count"), {quint64(1)}, nullptr);
    EXPECT_EQ(1, runtime->openWrites());
    runtime->session().stop();
    EXPECT_EQ(0, runtime->openWrites());
}

} // namespace
} // namespace plc::host::test

#include "panel/http/connection_table.h"

#include <gtest/gtest.h>

namespace plc::panel {
namespace {

class Connections : public ::testing::Test {
protected:
    using Id = ConnectionTable::Id;

    Id add(const char* address, qint64 now) { return table.add(QString::fromLatin1(address), now); }
    bool admits(const char* address) { return table.admit(QString::fromLatin1(address)); }

    std::vector<Id> ended;
    // Five in all, three of an address; idle 100, receiving 200, answering 300, sending 400 ms for
    // each 50 bytes.
    ConnectionTable table{{5, 3, 100, 200, 300, 400, 50}, [this](Id id) { ended.push_back(id); }};
};

using Ids = std::vector<ConnectionTable::Id>;

TEST_F(Connections, OfAnAddressMakeRoomByTheOneThatIsIdleForLongest)
{
    const Id first = add("a", 2);
    add("a", 1);
    EXPECT_TRUE(admits("a"));
    EXPECT_TRUE(ended.empty());
    add("a", 3);
    table.enter(first, Phase::Idle, 4);
    EXPECT_TRUE(admits("a"));
    EXPECT_EQ(Ids({2}), ended);
    EXPECT_TRUE(admits("b"));
    EXPECT_EQ(1U, ended.size());
}

TEST_F(Connections, ThatAreAllBusyLeaveNoRoom)
{
    for (int i = 0; i < 3; ++i)
        table.enter(add("a", 0), Phase::Streaming, 0);
    EXPECT_FALSE(admits("a"));
    EXPECT_TRUE(admits("b"));
    for (int i = 0; i < 2; ++i)
        table.enter(add("b", 0), Phase::Answering, 0);
    EXPECT_FALSE(admits("c"));
    EXPECT_TRUE(ended.empty());
}

TEST_F(Connections, OfAllAddressesMakeRoomForAnother)
{
    for (const char* address : {"a", "b", "c", "d", "e"})
        add(address, 0);
    EXPECT_TRUE(admits("f"));
    EXPECT_EQ(Ids({1}), ended);
    add("f", 1);
    EXPECT_TRUE(admits("g"));
    EXPECT_EQ(Ids({1, 2}), ended);
}

TEST_F(Connections, HaveATimeForEachPhase)
{
    const Id idle = add("a", 0);
    const Id receiving = add("b", 0);
    const Id sending = add("c", 0);
    const Id streaming = add("d", 0);
    table.enter(receiving, Phase::Receiving, 10);
    table.enter(sending, Phase::Sending, 10);
    table.enter(streaming, Phase::Streaming, 10);
    EXPECT_TRUE(table.endOverdue(99).empty());
    EXPECT_TRUE(ended.empty());
    table.endOverdue(100);
    EXPECT_EQ(Ids({idle}), ended);
    table.endOverdue(210);
    EXPECT_EQ(Ids({idle, receiving}), ended);
    table.endOverdue(410);
    EXPECT_EQ(Ids({idle, receiving, sending}), ended);
    table.endOverdue(1000000000);
    EXPECT_EQ(3U, ended.size());
    EXPECT_EQ(3, table.ended());
}

TEST_F(Connections, GetTheTimeForSendingAgainWithEachPortionThatIsRead)
{
    const Id steady = add("a", 0);
    const Id slow = add("b", 0);
    for (const Id id : {steady, slow})
        table.enter(id, Phase::Sending, 0);
    table.sent(steady, 50, 399);
    table.sent(slow, 49, 399);
    table.endOverdue(400);
    EXPECT_EQ(Ids({slow}), ended);
    table.sent(steady, 99, 700);
    table.endOverdue(798);
    EXPECT_EQ(1U, ended.size());
    table.sent(steady, 100, 798);
    table.endOverdue(1197);
    EXPECT_EQ(1U, ended.size());
    table.endOverdue(1198);
    EXPECT_EQ(Ids({slow, steady}), ended);
}

TEST_F(Connections, BeginToCountWhatIsReadWithEachResponse)
{
    const Id id = add("a", 0);
    table.enter(id, Phase::Sending, 0);
    table.sent(id, 1000, 10);
    table.enter(id, Phase::Idle, 20);
    table.enter(id, Phase::Sending, 30);
    table.sent(id, 50, 200);
    table.endOverdue(599);
    EXPECT_TRUE(ended.empty());
    table.endOverdue(600);
    EXPECT_EQ(Ids({id}), ended);
}

TEST_F(Connections, GetNoTimeForSendingInAnotherPhase)
{
    const Id id = add("a", 0);
    table.enter(id, Phase::Receiving, 0);
    table.sent(id, 1000, 100);
    table.endOverdue(200);
    EXPECT_EQ(Ids({id}), ended);
}

TEST_F(Connections, ThatWaitForAnAnswerOfOursAreToldRatherThanEnded)
{
    const Id id = add("a", 0);
    table.enter(id, Phase::Answering, 5);
    EXPECT_TRUE(table.endOverdue(304).empty());
    EXPECT_EQ(Ids({id}), table.endOverdue(305));
    EXPECT_TRUE(ended.empty());
}

TEST_F(Connections, ThatAreBeingEndedAreEndedOnce)
{
    const Id id = add("a", 0);
    table.endOverdue(100);
    table.enter(id, Phase::Idle, 101);
    table.endOverdue(1000);
    EXPECT_EQ(Ids({id}), ended);
    table.remove(id);
    EXPECT_EQ(0, table.size());
}

} // namespace
} // namespace plc::panel

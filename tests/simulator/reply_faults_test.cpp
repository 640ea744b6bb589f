#include <gtest/gtest.h>

#include "simulator/reply_faults.h"

namespace plc::simulator {
namespace {

const QByteArray kReply("0123456789a");

void expectUntouched(const ReplyDelivery& delivery)
{
    EXPECT_EQ(kReply, delivery.bytes);
    EXPECT_EQ(0, delivery.delay);
    EXPECT_FALSE(delivery.silence);
}

TEST(ReplyFaults, LeaveRepliesAloneIfNothingIsPlanned)
{
    ReplyFaults faults;
    expectUntouched(faults.dataReply(kReply));
    expectUntouched(faults.loginReply(kReply));
}

TEST(ReplyFaults, DelayEveryReply)
{
    ReplyFaults faults;
    faults.setDelay(40);
    EXPECT_EQ(40, faults.loginReply(kReply).delay);
    EXPECT_EQ(40, faults.dataReply(kReply).delay);
    faults.setDelay(0);
    expectUntouched(faults.dataReply(kReply));
}

TEST(ReplyFaults, LoseTheNextRepliesButNoLogin)
{
    ReplyFaults faults;
    faults.dropNext(2);
    expectUntouched(faults.loginReply(kReply));
    EXPECT_TRUE(faults.dataReply(kReply).bytes.isEmpty());
    EXPECT_TRUE(faults.dataReply(kReply).bytes.isEmpty());
    expectUntouched(faults.dataReply(kReply));
}

TEST(ReplyFaults, HitTheReplyOfTheirNumberOnly)
{
    ReplyFaults faults;
    faults.delayReply(2, 700);
    faults.halveReply(3);
    faults.duplicateReply(4);
    expectUntouched(faults.dataReply(kReply));
    EXPECT_EQ(700, faults.dataReply(kReply).delay);
    const ReplyDelivery half = faults.dataReply(kReply);
    EXPECT_EQ("01234", half.bytes.toStdString());
    EXPECT_TRUE(half.silence);
    EXPECT_EQ((kReply + kReply).toStdString(), faults.dataReply(kReply).bytes.toStdString());
    expectUntouched(faults.dataReply(kReply));
}

TEST(ReplyFaults, CountFromWhenTheyArePlanned)
{
    ReplyFaults faults;
    faults.dataReply(kReply);
    faults.dataReply(kReply);
    faults.delayReply(1, 5);
    EXPECT_EQ(5, faults.dataReply(kReply).delay);
}

TEST(ReplyFaults, DelaysAddUp)
{
    ReplyFaults faults;
    faults.setDelay(10);
    faults.delayReply(1, 5);
    EXPECT_EQ(15, faults.dataReply(kReply).delay);
}

} // namespace
} // namespace plc::simulator

// Sequences at which the driver and the model once differed, as shrinking left them.

#include <gtest/gtest.h>

#include "model/shrinking.h"

namespace plc {
namespace model {
namespace {

void expectSame(const Sequence& sequence)
{
    const Finding finding = findDifference(sequence);
    EXPECT_FALSE(finding) << "after step " << finding.step << ":\n" << finding.difference;
}

TEST(FoundSequences, OneShotReadIsRefusedWithoutSettings)
{
    expectSame({
        AddOnce{Variable(), 1},
    });
}

TEST(FoundSequences, EmptyReadListIsRefusedWithoutSettings)
{
    expectSame({
        AddRead{Variable()},
        RebuildReadList{std::vector<HostItem>{}},
    });
}

TEST(FoundSequences, FailureCounterAtItsEndAbandonsTheTransaction)
{
    expectSame({
        SetSettings{0},
        ChangeWord{0, kRetryCount, INT32_MAX},
        AddRead{Variable()},
        Ask{},
        TakeReply{Bytes{}, 0, std::nullopt},
    });
}

} // namespace
} // namespace model
} // namespace plc

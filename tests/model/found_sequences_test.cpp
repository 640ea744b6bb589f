// Sequences at which the driver and the model once differed, as shrinking left them.

#include <gtest/gtest.h>

#include "model/shrinking.h"

namespace plc::model {
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

/// A scope MAIN with one variable v of this type.
Step passVariable(int dataType)
{
    const Symbol variable{u"v", std::uint16_t(dataType), 0, 0, 0u, {}, {}, {}, {1}};
    const Symbol type{u"", 0, 0, 0, 1u, {}, {variable}, {}, {}};
    return PassSymbols{std::vector<Symbol>{Symbol{u"MAIN", 0, 0, 0, 0u, {}, {}, {type}, {}}}};
}

TEST(FoundSequences, ReadOfAValueWithoutConversionLeavesNothingOldInTheBuffer)
{
    expectSame({passVariable(0), ReadValue{u"MAIN.v", 1, true}});
}

TEST(FoundSequences, SubscriptsInABaseAbove36AreNoNumbers)
{
    const Symbol bits{u"b", 269, 0, 1, 0u, {37, 0, 0}, {}, {}, {0}};
    const Symbol type{u"", 0, 0, 0, 1u, {}, {bits}, {}, {}};
    expectSame({
        PassSymbols{std::vector<Symbol>{Symbol{u"MAIN", 0, 0, 0, 0u, {}, {}, {type}, {}}}},
        ReadValue{u"MAIN.b[3]", 0, true},
    });
}

TEST(FoundSequences, ReadOfPackedBytesLeavesNothingOldBehindThem)
{
    expectSame({passVariable(2), ReadValue{u"MAIN.v", 3, true}});
}

} // namespace
} // namespace plc::model

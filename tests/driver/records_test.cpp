#include "driver/records.h"

#include "support/driver_fixture.h"
#include "support/record_checks.h"

namespace plc::test {
namespace {

void expectFullButData(RW_VAR var)
{
    var.data = fullRecord().data;
    expectEqualRecords(fullRecord(), var);
}

std::ptrdiff_t distance(const void* from, const void* to)
{
    return static_cast<const char*>(to) - static_cast<const char*>(from);
}

TEST(Records, FreshVariableIsZeroAndEmpty)
{
    expectZeroRecord(RW_VAR());
}

TEST(Records, FreshRequestIsZeroAndEmpty)
{
    const Protocol request;
    EXPECT_TRUE(request.frame.isEmpty());
    EXPECT_EQ(0, request.frameLength);
    EXPECT_EQ(0, request.replyLength);
    EXPECT_EQ(0, request.dataOffset);
    EXPECT_EQ(0, request.minReplyLength);
    expectZeroRecord(request.var);
    EXPECT_EQ(0, request.extra1);
    EXPECT_EQ(0, request.extra2);
    EXPECT_EQ(0, request.extra3);
}

TEST(Records, FreshExtensionIsZeroAndEmpty)
{
    const EXTENDVAR extension;
    EXPECT_EQ(0, extension.ext1);
    EXPECT_EQ(0, extension.ext2);
    EXPECT_EQ(0, extension.ext3);
    EXPECT_TRUE(extension.extData.isEmpty());
}

TEST(Records, VariableMembersLieInTheAgreedOrder)
{
    const RW_VAR var;
    EXPECT_EQ(0, distance(&var, &var.category));
    EXPECT_EQ(4, distance(&var, &var.aux1));
    EXPECT_EQ(8, distance(&var, &var.aux2));
    EXPECT_EQ(12, distance(&var, &var.aux3));
    EXPECT_EQ(16, distance(&var, &var.deviceNo));
    EXPECT_EQ(20, distance(&var, &var.result));
    const std::ptrdiff_t strings = 24;
    EXPECT_EQ(distance(&var, &var.label), strings);
    EXPECT_EQ(distance(&var, &var.subLabel), strings + std::ptrdiff_t(sizeof(QString)));
    const std::ptrdiff_t place = strings + 2 * std::ptrdiff_t(sizeof(QString));
    EXPECT_EQ(distance(&var, &var.dataType), place);
    EXPECT_EQ(distance(&var, &var.address), place + 4);
    EXPECT_EQ(distance(&var, &var.station), place + 8);
    EXPECT_EQ(distance(&var, &var.length), place + 12);
    EXPECT_EQ(distance(&var, &var.aux12), place + 16);
    EXPECT_EQ(distance(&var, &var.areaIndex), place + 20);
    EXPECT_EQ(distance(&var, &var.data), place + 24);
    EXPECT_EQ(sizeof var, size_t(place) + 24 + sizeof(QByteArray));
}

TEST(Records, RequestMembersLieInTheAgreedOrder)
{
    const Protocol request;
    const std::ptrdiff_t lengths = sizeof(QByteArray);
    EXPECT_EQ(0, distance(&request, &request.frame));
    EXPECT_EQ(distance(&request, &request.frameLength), lengths);
    EXPECT_EQ(distance(&request, &request.replyLength), lengths + 4);
    EXPECT_EQ(distance(&request, &request.dataOffset), lengths + 8);
    EXPECT_EQ(distance(&request, &request.minReplyLength), lengths + 12);
    EXPECT_EQ(distance(&request, &request.var), lengths + 16);
    EXPECT_EQ(distance(&request.var, &request.extra1), std::ptrdiff_t(sizeof(RW_VAR)));
    EXPECT_EQ(4, distance(&request.extra1, &request.extra2));
    EXPECT_EQ(8, distance(&request.extra1, &request.extra3));
}

TEST(Records, ExtensionMembersLieInTheAgreedOrder)
{
    const EXTENDVAR extension;
    EXPECT_EQ(0, distance(&extension, &extension.ext1));
    EXPECT_EQ(4, distance(&extension, &extension.ext2));
    EXPECT_EQ(8, distance(&extension, &extension.ext3));
    EXPECT_LT(distance(&extension, &extension.ext3), distance(&extension, &extension.extData));
}

TEST(Records, CopyOfAVariableHasAllMembersAndIsIndependent)
{
    RW_VAR original = fullRecord();
    const RW_VAR copy = original;
    original = RW_VAR();
    expectFullButData(copy);
    EXPECT_EQ(hex("0F 10"), copy.data);
}

TEST(Records, CopyOfARequestHasAllMembers)
{
    Protocol original;
    original.frame = hex("BB BB 01");
    original.frameLength = 20;
    original.replyLength = 21;
    original.dataOffset = 22;
    original.minReplyLength = 23;
    original.var = fullRecord();
    original.extra1 = 24;
    original.extra2 = 25;
    original.extra3 = 26;
    Protocol copy;
    copy = original;
    EXPECT_EQ(hex("BB BB 01"), copy.frame);
    EXPECT_EQ(20, copy.frameLength);
    EXPECT_EQ(21, copy.replyLength);
    EXPECT_EQ(22, copy.dataOffset);
    EXPECT_EQ(23, copy.minReplyLength);
    expectFullButData(copy.var);
    EXPECT_EQ(hex("0F 10"), copy.var.data);
    EXPECT_EQ(24, copy.extra1);
    EXPECT_EQ(25, copy.extra2);
    EXPECT_EQ(26, copy.extra3);
}

TEST(Records, DestructionReleasesStringsAndBytes)
{
    QByteArray frame = hex("01 02");
    QByteArray data = hex("03 04");
    QString label = QLatin1String("A.b");
    QString subLabel = QLatin1String("c");
    QByteArray extension = hex("05");
    {
        Protocol request;
        request.frame = frame;
        request.var.data = data;
        request.var.label = label;
        request.var.subLabel = subLabel;
        EXTENDVAR extended;
        extended.extData = extension;
        ASSERT_FALSE(frame.isDetached());
        ASSERT_FALSE(data.isDetached());
        ASSERT_FALSE(label.isDetached());
        ASSERT_FALSE(subLabel.isDetached());
        ASSERT_FALSE(extension.isDetached());
    }
    EXPECT_TRUE(frame.isDetached());
    EXPECT_TRUE(data.isDetached());
    EXPECT_TRUE(label.isDetached());
    EXPECT_TRUE(subLabel.isDetached());
    EXPECT_TRUE(extension.isDetached());
}

TEST(PassRetValue, CopiesFourteenMembersAndNotTheData)
{
    RW_VAR destination;
    passRetValue(fullRecord(), destination);
    expectFullButData(destination);
    EXPECT_TRUE(destination.data.isEmpty());
}

TEST(PassRetValue, EmptiesTheDataThatTheDestinationHeld)
{
    RW_VAR destination = fullRecord();
    passRetValue(RW_VAR(), destination);
    expectZeroRecord(destination);
}

TEST(PassRetValue, LeavesTheSourceAsItIs)
{
    const RW_VAR source = fullRecord();
    RW_VAR destination;
    passRetValue(source, destination);
    expectFullButData(source);
    EXPECT_EQ(hex("0F 10"), source.data);
}

TEST(PassRetValue, OverItselfKeepsEverythingButTheData)
{
    RW_VAR var = fullRecord();
    passRetValue(var, var);
    expectFullButData(var);
    EXPECT_TRUE(var.data.isEmpty());
}

} // namespace
} // namespace plc::test

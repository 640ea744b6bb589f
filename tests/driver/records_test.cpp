#include "driver/records.h"

#include "support/driver_fixture.h"

namespace plc {
namespace test {
namespace {

/// A record in which every member differs from its default and from every other member.
RW_VAR distinctVar()
{
    RW_VAR var;
    var.category = 1;
    var.aux1 = 2;
    var.aux2 = 3;
    var.aux3 = 4;
    var.deviceNo = 5;
    var.result = 6;
    var.label = QLatin1String("Application.level");
    var.subLabel = QLatin1String("Tank");
    var.dataType = 9;
    var.address = 10;
    var.station = 11;
    var.length = 12;
    var.aux12 = 13;
    var.areaIndex = 14;
    var.data = hex("0F 10");
    return var;
}

void expectDistinctButData(const RW_VAR& var)
{
    EXPECT_EQ(var.category, 1);
    EXPECT_EQ(var.aux1, 2);
    EXPECT_EQ(var.aux2, 3);
    EXPECT_EQ(var.aux3, 4);
    EXPECT_EQ(var.deviceNo, 5);
    EXPECT_EQ(var.result, 6);
    EXPECT_EQ(var.label, QLatin1String("Application.level"));
    EXPECT_EQ(var.subLabel, QLatin1String("Tank"));
    EXPECT_EQ(var.dataType, 9);
    EXPECT_EQ(var.address, 10);
    EXPECT_EQ(var.station, 11);
    EXPECT_EQ(var.length, 12);
    EXPECT_EQ(var.aux12, 13);
    EXPECT_EQ(var.areaIndex, 14);
}

void expectZero(const RW_VAR& var)
{
    EXPECT_EQ(var.category, 0);
    EXPECT_EQ(var.aux1, 0);
    EXPECT_EQ(var.aux2, 0);
    EXPECT_EQ(var.aux3, 0);
    EXPECT_EQ(var.deviceNo, 0);
    EXPECT_EQ(var.result, 0);
    EXPECT_TRUE(var.label.isEmpty());
    EXPECT_TRUE(var.subLabel.isEmpty());
    EXPECT_EQ(var.dataType, 0);
    EXPECT_EQ(var.address, 0);
    EXPECT_EQ(var.station, 0);
    EXPECT_EQ(var.length, 0);
    EXPECT_EQ(var.aux12, 0);
    EXPECT_EQ(var.areaIndex, 0);
    EXPECT_TRUE(var.data.isEmpty());
}

std::ptrdiff_t distance(const void* from, const void* to)
{
    return static_cast<const char*>(to) - static_cast<const char*>(from);
}

TEST(Records, FreshVariableIsZeroAndEmpty)
{
    expectZero(RW_VAR());
}

TEST(Records, FreshRequestIsZeroAndEmpty)
{
    const Protocol request;
    EXPECT_TRUE(request.frame.isEmpty());
    EXPECT_EQ(request.frameLength, 0);
    EXPECT_EQ(request.replyLength, 0);
    EXPECT_EQ(request.dataOffset, 0);
    EXPECT_EQ(request.minReplyLength, 0);
    expectZero(request.var);
    EXPECT_EQ(request.extra1, 0);
    EXPECT_EQ(request.extra2, 0);
    EXPECT_EQ(request.extra3, 0);
}

TEST(Records, FreshExtensionIsZeroAndEmpty)
{
    const EXTENDVAR extension;
    EXPECT_EQ(extension.ext1, 0);
    EXPECT_EQ(extension.ext2, 0);
    EXPECT_EQ(extension.ext3, 0);
    EXPECT_TRUE(extension.extData.isEmpty());
}

TEST(Records, VariableMembersLieInTheAgreedOrder)
{
    const RW_VAR var;
    EXPECT_EQ(distance(&var, &var.category), 0);
    EXPECT_EQ(distance(&var, &var.aux1), 4);
    EXPECT_EQ(distance(&var, &var.aux2), 8);
    EXPECT_EQ(distance(&var, &var.aux3), 12);
    EXPECT_EQ(distance(&var, &var.deviceNo), 16);
    EXPECT_EQ(distance(&var, &var.result), 20);
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
    EXPECT_EQ(distance(&request, &request.frame), 0);
    EXPECT_EQ(distance(&request, &request.frameLength), lengths);
    EXPECT_EQ(distance(&request, &request.replyLength), lengths + 4);
    EXPECT_EQ(distance(&request, &request.dataOffset), lengths + 8);
    EXPECT_EQ(distance(&request, &request.minReplyLength), lengths + 12);
    EXPECT_EQ(distance(&request, &request.var), lengths + 16);
    EXPECT_EQ(distance(&request.var, &request.extra1), std::ptrdiff_t(sizeof(RW_VAR)));
    EXPECT_EQ(distance(&request.extra1, &request.extra2), 4);
    EXPECT_EQ(distance(&request.extra1, &request.extra3), 8);
}

TEST(Records, ExtensionMembersLieInTheAgreedOrder)
{
    const EXTENDVAR extension;
    EXPECT_EQ(distance(&extension, &extension.ext1), 0);
    EXPECT_EQ(distance(&extension, &extension.ext2), 4);
    EXPECT_EQ(distance(&extension, &extension.ext3), 8);
    EXPECT_LT(distance(&extension, &extension.ext3), distance(&extension, &extension.extData));
}

TEST(Records, CopyOfAVariableHasAllMembersAndIsIndependent)
{
    RW_VAR original = distinctVar();
    const RW_VAR copy = original;
    original = RW_VAR();
    expectDistinctButData(copy);
    EXPECT_EQ(copy.data, hex("0F 10"));
}

TEST(Records, CopyOfARequestHasAllMembers)
{
    Protocol original;
    original.frame = hex("BB BB 01");
    original.frameLength = 20;
    original.replyLength = 21;
    original.dataOffset = 22;
    original.minReplyLength = 23;
    original.var = distinctVar();
    original.extra1 = 24;
    original.extra2 = 25;
    original.extra3 = 26;
    Protocol copy;
    copy = original;
    EXPECT_EQ(copy.frame, hex("BB BB 01"));
    EXPECT_EQ(copy.frameLength, 20);
    EXPECT_EQ(copy.replyLength, 21);
    EXPECT_EQ(copy.dataOffset, 22);
    EXPECT_EQ(copy.minReplyLength, 23);
    expectDistinctButData(copy.var);
    EXPECT_EQ(copy.var.data, hex("0F 10"));
    EXPECT_EQ(copy.extra1, 24);
    EXPECT_EQ(copy.extra2, 25);
    EXPECT_EQ(copy.extra3, 26);
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
    passRetValue(distinctVar(), destination);
    expectDistinctButData(destination);
    EXPECT_TRUE(destination.data.isEmpty());
}

TEST(PassRetValue, EmptiesTheDataThatTheDestinationHeld)
{
    RW_VAR destination = distinctVar();
    passRetValue(RW_VAR(), destination);
    expectZero(destination);
}

TEST(PassRetValue, LeavesTheSourceAsItIs)
{
    const RW_VAR source = distinctVar();
    RW_VAR destination;
    passRetValue(source, destination);
    expectDistinctButData(source);
    EXPECT_EQ(source.data, hex("0F 10"));
}

TEST(PassRetValue, OverItselfKeepsEverythingButTheData)
{
    RW_VAR var = distinctVar();
    passRetValue(var, var);
    expectDistinctButData(var);
    EXPECT_TRUE(var.data.isEmpty());
}

} // namespace
} // namespace test
} // namespace plc

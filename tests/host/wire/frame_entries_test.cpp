#include "host/wire/frame_entries.h"

#include "host/wire/reply_collector.h"
#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

constexpr char kTwoReads[] =
    "BB BB 00 00 00 1E 2E 00 00 00 00 02"
    "00 01 00 00 00 20 00 00 00 04"
    "FF FE 80 00 00 10 00 00 01 02"
    "00 01 12 34";
constexpr char kTwoWrites[] =
    "BB BB 00 00 00 21 3C 00 00 00 00 02"
    "00 02 00 00 00 10 00 00 00 02 AB CD"
    "00 03 00 00 00 14 00 00 00 01 7F"
    "00 01 00 00";
constexpr char kTwoBits[] =
    "BB BB 00 00 00 20 3C 00 00 00 00 02"
    "00 00 00 00 00 11 00 00 00 00 01"
    "00 00 00 00 00 12 00 00 00 00 00"
    "00 01 00 00";

TEST(RequestFrame, ReadStatesItsEntries)
{
    const RequestContent content = parseRequest(hex(kTwoReads));
    EXPECT_EQ(Service::Read, content.service);
    EXPECT_TRUE(content.wellFormed);
    EXPECT_FALSE(content.isLogin());
    ASSERT_EQ(2, content.entries.size());
    EXPECT_EQ(1, content.entries[0].area);
    EXPECT_EQ(0x20u, content.entries[0].address);
    EXPECT_EQ(4u, content.entries[0].length);
    EXPECT_EQ(0xFFFE, content.entries[1].area);
    EXPECT_EQ(0x80000010u, content.entries[1].address);
    EXPECT_EQ(0x102u, content.entries[1].length);
}

TEST(RequestFrame, WriteCarriesTheDataOfItsEntries)
{
    const QByteArray frame = hex(kTwoWrites);
    const RequestContent content = parseRequest(frame);
    EXPECT_EQ(Service::Write, content.service);
    EXPECT_TRUE(content.wellFormed);
    ASSERT_EQ(2, content.entries.size());
    EXPECT_EQ(hex("AB CD"), writtenBytes(frame, content.entries[0]));
    EXPECT_EQ(3, content.entries[1].area);
    EXPECT_EQ(hex("7F"), writtenBytes(frame, content.entries[1]));
    EXPECT_FALSE(content.entries[0].isBit);
}

TEST(RequestFrame, WriteOfBitsStatesNoLengthButCarriesAByteForEach)
{
    const QByteArray frame = hex(kTwoBits);
    const RequestContent content = parseRequest(frame);
    EXPECT_TRUE(content.wellFormed);
    ASSERT_EQ(2, content.entries.size());
    for (const FrameEntry& entry : content.entries) {
        EXPECT_TRUE(entry.isBit);
        EXPECT_EQ(1u, entry.length);
    }
    EXPECT_EQ(17u, content.entries[0].address);
    EXPECT_EQ(hex("01"), writtenBytes(frame, content.entries[0]));
    EXPECT_EQ(18u, content.entries[1].address);
    EXPECT_EQ(hex("00"), writtenBytes(frame, content.entries[1]));
}

TEST(RequestFrame, LoginFramesAreKnown)
{
    EXPECT_TRUE(
        parseRequest(hex("BB BB 00 00 00 0E 01 00 00 00 02 00 00 00 06 00 00 00 00 00")).isLogin());
    EXPECT_TRUE(
        parseRequest(hex("BB BB 00 00 00 11 31 00 00 0D 44 4F 57 4E 4C 4F 41 44 2E 53 44 42 00"))
            .isLogin());
}

TEST(RequestFrame, UnknownServiceHasNoEntries)
{
    const RequestContent content = parseRequest(hex("BB BB 00 00 00 02 77 00"));
    EXPECT_EQ(Service::Unknown, content.service);
    EXPECT_FALSE(content.wellFormed);
    EXPECT_TRUE(content.entries.isEmpty());
}

TEST(RequestFrame, CutAnywhereIsMalformedAndHasOnlyWholeEntries)
{
    for (const char* text : {kTwoReads, kTwoWrites, kTwoBits}) {
        const QByteArray frame = hex(text);
        for (int size = 0; size < frame.size(); ++size) {
            const RequestContent content = parseRequest(frame.left(size));
            EXPECT_FALSE(content.wellFormed) << text << " cut to " << size;
            EXPECT_LE(content.entries.size(), 2);
        }
    }
    EXPECT_EQ(1, parseRequest(hex(kTwoReads).left(31)).entries.size());
}

TEST(RequestFrame, CountAndLengthsBeyondTheFrameAreNotBelieved)
{
    EXPECT_TRUE(
        parseRequest(hex("BB BB 00 00 00 0A 2E 00 FF FF FF FF 00 01 00 00")).entries.isEmpty());
    const RequestContent content = parseRequest(
        hex("BB BB 00 00 00 14 3C 00 00 00 00 01 00 01 00 00 00 00 FF FF FF FF 00 01 00 00"));
    EXPECT_FALSE(content.wellFormed);
    EXPECT_TRUE(content.entries.isEmpty());
}

TEST(FrameSize, IsStatedInTheLowHalfOfTheLength)
{
    EXPECT_EQ(-1, statedFrameSize(hex("BB BB 00 00 00")));
    EXPECT_EQ(6, statedFrameSize(hex("BB BB 00 00 00 00")));
    EXPECT_EQ(6 + 0x102, statedFrameSize(hex("BB BB 12 34 01 02 55")));
    EXPECT_EQ(6 + 0xFFFF, statedFrameSize(hex("BB BB 00 00 FF FF")));
}

TEST(ReplyFrame, StatusNeedsBothItsBytes)
{
    EXPECT_EQ(-1, replyStatus(hex("BB BB 00 00 00 00")));
    EXPECT_EQ(-1, replyStatus(hex("BB BB 00 00 00 01 00")));
    EXPECT_EQ(0x102, replyStatus(hex("BB BB 00 00 00 02 01 02")));
}

TEST(ReplyFrame, SizeOfAGoodReadIsKnownBeforehand)
{
    const QVector<FrameEntry> entries = parseRequest(hex(kTwoReads)).entries;
    EXPECT_EQ(12 + 1 + 4 + 1 + 0x102, readReplySize(entries));
    EXPECT_EQ(12, readReplySize({}));
}

TEST(ReplyFrame, BlocksStandBehindALeadingByteEach)
{
    FrameEntry two;
    two.length = 2;
    FrameEntry one;
    one.length = 1;
    const QByteArray reply = hex("BB BB 00 00 00 0B 00 00 00 00 00 00 EE 12 34 EE 56");
    EXPECT_EQ(readReplyBlocks(reply, {two, one}), (QVector<QByteArray>{hex("12 34"), hex("56")}));
    EXPECT_EQ(readReplyBlocks(reply.left(16), {two, one}),
              (QVector<QByteArray>{hex("12 34"), QByteArray()}));
}

TEST(ReplyCollector, KnowsTheEndAndWhatIsBehindIt)
{
    ReplyCollector collector;
    EXPECT_FALSE(collector.isComplete());
    collector.append(hex("BB BB 00 00 00"));
    EXPECT_FALSE(collector.isComplete());
    collector.append(hex("02"));
    EXPECT_FALSE(collector.isComplete());
    collector.append(hex("00 05 99"));
    ASSERT_TRUE(collector.isComplete());
    EXPECT_EQ(hex("BB BB 00 00 00 02 00 05"), collector.frame());
    EXPECT_EQ(1, collector.surplus());
    collector.clear();
    EXPECT_FALSE(collector.isComplete());
    EXPECT_EQ(0, collector.size());
}

} // namespace
} // namespace test
} // namespace plc::host

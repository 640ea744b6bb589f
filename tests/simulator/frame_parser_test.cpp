#include <gtest/gtest.h>

#include "simulator/frame_parser.h"
#include "tests/simulator/frame_bytes.h"
#include "tests/support/random.h"

namespace plc::simulator {
namespace {

using test::bytes;
using test::hex;
using Outcome = FrameParser::Outcome;

Outcome outcomeOf(const char* stream)
{
    FrameParser parser;
    parser.append(bytes(stream));
    QByteArray frame;
    return parser.take(&frame);
}

TEST(FrameParser, TakesOutOneFrame)
{
    FrameParser parser;
    parser.append(bytes("bb bb 00 00 00 03 2e 00 07"));
    QByteArray frame;
    ASSERT_EQ(Outcome::Complete, parser.take(&frame));
    EXPECT_EQ("bb bb 00 00 00 03 2e 00 07", hex(frame));
    EXPECT_EQ(Outcome::NeedMore, parser.take(&frame));
    EXPECT_EQ(0, parser.bufferedBytes());
}

TEST(FrameParser, FindsTheSameFramesWhereverTheStreamIsSplit)
{
    const QByteArray first = bytes(test::kIdentification);
    const QByteArray second = bytes("bb bb 00 00 00 02 2e 00");
    const QByteArray stream = first + second;
    for (int split = 0; split <= int(stream.size()); ++split) {
        FrameParser parser;
        QList<QByteArray> frames;
        for (const QByteArray& piece : {stream.left(split), stream.mid(split)}) {
            parser.append(piece);
            QByteArray frame;
            while (parser.take(&frame) == Outcome::Complete)
                frames.append(frame);
        }
        EXPECT_EQ((QList<QByteArray>{first, second}), frames) << split;
    }
}

TEST(FrameParser, FindsFramesInSingleBytes)
{
    const QByteArray stream = bytes(test::kFileRequest);
    FrameParser parser;
    QByteArray frame;
    for (int i = 0; i < int(stream.size()); ++i) {
        EXPECT_EQ(Outcome::NeedMore, parser.take(&frame)) << i;
        parser.append(stream.mid(i, 1));
    }
    EXPECT_EQ(Outcome::Complete, parser.take(&frame));
    EXPECT_EQ(stream, frame);
}

TEST(FrameParser, RefusesWhatIsNoFrameAtItsFirstWrongByte)
{
    EXPECT_EQ(Outcome::NeedMore, outcomeOf(""));
    EXPECT_EQ(Outcome::NoFrame, outcomeOf("bc"));
    EXPECT_EQ(Outcome::NeedMore, outcomeOf("bb"));
    EXPECT_EQ(Outcome::NoFrame, outcomeOf("bb 00"));
    EXPECT_EQ(Outcome::NoFrame, outcomeOf("47 45 54 20 2f 20 48 54 54 50"));
}

TEST(FrameParser, RefusesLengthsThatNoFrameHas)
{
    EXPECT_EQ(Outcome::BadLength, outcomeOf("bb bb 00 00 00 00"));
    EXPECT_EQ(Outcome::BadLength, outcomeOf("bb bb 00 00 00 01"));
    EXPECT_EQ(Outcome::NeedMore, outcomeOf("bb bb 00 00 00 02"));
    EXPECT_EQ(Outcome::NeedMore, outcomeOf("bb bb 00 00 ff ff"));
    EXPECT_EQ(Outcome::BadLength, outcomeOf("bb bb 00 01 00 00"));
    EXPECT_EQ(Outcome::BadLength, outcomeOf("bb bb ff ff ff ff"));
}

TEST(FrameParser, TakesTheLargestFrame)
{
    const QByteArray frame = bytes("bb bb 00 00 ff ff") + QByteArray(0xffff, 'x');
    FrameParser parser;
    parser.append(frame + "\xbb");
    QByteArray taken;
    EXPECT_EQ(Outcome::Complete, parser.take(&taken));
    EXPECT_EQ(frame, taken);
    EXPECT_EQ(1, parser.bufferedBytes());
}

TEST(FrameParser, GoesOnOrRefusesWhateverArrives)
{
    plc::test::Random random(7);
    for (int round = 0; round < 2000; ++round) {
        FrameParser parser;
        Outcome last = Outcome::NeedMore;
        for (int piece = 0; piece < 10 && last == Outcome::NeedMore; ++piece) {
            QByteArray data = random.oneIn(2) ? bytes("bb bb 00 00") : QByteArray();
            for (int i = random.below(12); i > 0; --i)
                data.append(char(random.bits()));
            parser.append(data);
            QByteArray frame;
            do {
                last = parser.take(&frame);
                if (last == Outcome::Complete) {
                    ASSERT_EQ(int(frame.size()), 6 + quint8(frame[4]) * 256 + quint8(frame[5]));
                }
            } while (last == Outcome::Complete);
        }
    }
}

} // namespace
} // namespace plc::simulator

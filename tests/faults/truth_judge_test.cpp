// The judge of what hosts tell must see each kind of lie, and must not see any where there is none.

#include "faults/truth_judge.h"

#include <gmock/gmock.h>

#include "faults/frames.h"

namespace plc::faults {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

const Array kText{"text", Array::Word, 1, 100, 10};
const Array kLarge{"large", Array::Word, 3, 0, 600};

QByteArray number(quint32 value, int width)
{
    QByteArray bytes;
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
        bytes += char(value >> shift & 0xFF);
    return bytes;
}

QByteArray readRequest(const QVector<Range>& ranges)
{
    QByteArray payload = QByteArray::fromHex("2E00") + number(quint32(ranges.size()), 4);
    for (const Range& range : ranges)
        payload +=
            number(quint32(range.area), 2) + number(range.address, 4) + number(range.size, 4);
    return frameOf(payload + QByteArray::fromHex("00010000"));
}

QByteArray writeRequest(int area, quint32 address, const QByteArray& data)
{
    return frameOf(QByteArray::fromHex("3C0000000001") + number(quint32(area), 2) +
                   number(address, 4) + number(quint32(data.size()), 4) + data +
                   QByteArray::fromHex("00010000"));
}

/// A write of 600 words, which takes two requests.
PlannedWrite largeWrite()
{
    const QByteArray word = QByteArray::fromHex("1234");
    return {QStringLiteral("large"),
            QVector<values::Value>(600, values::Value(quint64(0x1234))),
            {{3, 0, false, word.repeated(500)}, {3, 1000, false, word.repeated(100)}},
            2,
            true};
}

class Judge : public ::testing::Test {
protected:
    Judge() { m_plc.openConnection(); }

    /// Reads kText; returns what the PLC's reply says.
    QByteArray readText(qint64 at) { return readText(at, 100, 20); }
    QByteArray readText(qint64 at, quint32 address, quint32 size)
    {
        return m_plc.answer(readRequest({{1, address, size}}), at).mid(13);
    }
    std::string ofValue(const Array& array, const QByteArray& memory, qint64 readAt,
                        int connection = 1)
    {
        return m_judge.judgeValue({array, expectedValues(array, memory), readAt}, connection)
            .toStdString();
    }
    std::string ofWrite(const PlannedWrite& write, ToldWrite::Outcome outcome, int taken = -1)
    {
        return m_judge.judgeWrite(write, {outcome, taken, 0}).toStdString();
    }

    StampedPlc m_plc{200, 30};
    TruthJudge m_judge{&m_plc.record()};
};

TEST_F(Judge, BelievesAValueOfOneReply)
{
    readText(10);
    const QByteArray memory = readText(20);
    readText(30);
    ASSERT_EQ(20, memory.size());
    EXPECT_THAT(ofValue(kText, memory, 20), IsEmpty());
    // An age that is too great misleads nobody.
    EXPECT_THAT(ofValue(kText, memory, 15), IsEmpty());
}

TEST_F(Judge, BelievesAValueInTwoPartsOfOneReply)
{
    const QByteArray reply = m_plc.answer(readRequest({{1, 96, 12}, {1, 108, 40}}), 10);
    const QByteArray memory = reply.mid(13 + 4, 8) + reply.mid(13 + 12 + 1, 12);
    EXPECT_THAT(ofValue(kText, memory, 10), IsEmpty());
}

TEST_F(Judge, SeesHalvesOfTwoReplies)
{
    const QByteArray first = readText(10);
    const QByteArray second = readText(20);
    EXPECT_THAT(ofValue(kText, first.left(10) + second.mid(10), 10), Not(IsEmpty()));
    EXPECT_THAT(ofValue(kText, second.left(18) + first.mid(18), 10),
                HasSubstr("from byte 18 on reply 1 "));
}

TEST_F(Judge, SeesHalvesOfTwoRequests)
{
    const QByteArray first = readText(10, 100, 8);
    const QByteArray second = readText(20, 108, 12);
    EXPECT_THAT(ofValue(kText, first + second, 10), Not(IsEmpty()));
}

TEST_F(Judge, SeesAValueThatIsOlderThanItIsToldToBe)
{
    const QByteArray first = readText(10);
    readText(20);
    EXPECT_THAT(ofValue(kText, first, 11), Not(IsEmpty()));
    EXPECT_THAT(ofValue(kText, first, 20), HasSubstr("reply 1 to the request at 10 ms"));
}

TEST_F(Judge, SeesAValueOfAnEarlierConnection)
{
    const QByteArray first = readText(10);
    m_plc.openConnection();
    EXPECT_THAT(ofValue(kText, first, 10, 1), IsEmpty());
    EXPECT_THAT(ofValue(kText, first, 10, 2), HasSubstr("on connection 1"));
}

TEST_F(Judge, SeesAValueOfAnotherPlace)
{
    const QByteArray other = readText(10, 300, 20);
    readText(20);
    EXPECT_THAT(ofValue(kText, other, 10), Not(IsEmpty()));
}

TEST_F(Judge, SeesTheMirrorOfAWrite)
{
    const QByteArray memory = readText(10);
    const QByteArray written = QByteArray::fromHex("0102030405060708");
    m_plc.answer(writeRequest(1, 104, written), 20);
    QByteArray mirror = memory;
    mirror.replace(4, written.size(), written);
    EXPECT_THAT(ofValue(kText, mirror, 10), HasSubstr("what was written at 20 ms"));
}

TEST_F(Judge, SeesZerosThatNobodyRead)
{
    readText(10);
    EXPECT_THAT(ofValue(kText, QByteArray(20, '\0'), 10), HasSubstr("no reply"));
}

TEST_F(Judge, AllowsAValueLargerThanARequestToCombineReplies)
{
    const QByteArray first = m_plc.answer(readRequest({{3, 0, 900}}), 10).mid(13);
    const QByteArray second = m_plc.answer(readRequest({{3, 900, 300}}), 20).mid(13);
    EXPECT_THAT(ofValue(kLarge, first + second, 10), IsEmpty());
    EXPECT_THAT(ofValue(kLarge, first + second, 11), Not(IsEmpty()));
    EXPECT_THAT(ofValue(kLarge, first.left(898) + QByteArray(2, '\0') + second, 10),
                Not(IsEmpty()));
}

TEST_F(Judge, SeesAWriteToldToBeDoneThatThePlcRefusedInTheMiddle)
{
    const PlannedWrite write = largeWrite();
    m_plc.refuseWrites({{3, 1100, 1}});
    m_plc.answer(writeRequest(3, 0, write.pieces[0].data), 10);
    m_plc.answer(writeRequest(3, 1000, write.pieces[1].data), 20);
    EXPECT_THAT(ofWrite(write, ToldWrite::Done),
                HasSubstr("600 reached the PLC and 500 were taken"));
    EXPECT_THAT(ofWrite(write, ToldWrite::Refused, 500), IsEmpty());
    EXPECT_THAT(ofWrite(write, ToldWrite::Refused, 0), Not(IsEmpty()));
    EXPECT_THAT(ofWrite(write, ToldWrite::Refused, 600), Not(IsEmpty()));
    EXPECT_THAT(ofWrite(write, ToldWrite::NotSent), Not(IsEmpty()));
    EXPECT_THAT(ofWrite(write, ToldWrite::LinkLost, 0), IsEmpty());
    EXPECT_THAT(ofWrite(write, ToldWrite::LinkLost, 501), Not(IsEmpty()));
    m_plc.refuseWrites({});
    m_plc.answer(writeRequest(3, 1000, write.pieces[1].data), 30);
    EXPECT_THAT(ofWrite(write, ToldWrite::Done), IsEmpty());
}

TEST_F(Judge, SeesAWriteToldToBeDoneThatNeverArrived)
{
    EXPECT_THAT(ofWrite(largeWrite(), ToldWrite::Done), HasSubstr("0 reached the PLC"));
    EXPECT_THAT(ofWrite(largeWrite(), ToldWrite::NotSent), IsEmpty());
}

TEST_F(Judge, TakesNoEarlierWriteForThisOne)
{
    const PlannedWrite write = largeWrite();
    m_plc.answer(writeRequest(3, 0, write.pieces[0].data + write.pieces[1].data), 10);
    EXPECT_THAT(m_judge.judgeWrite(write, {ToldWrite::Done, -1, 11}).toStdString(), Not(IsEmpty()));
}

TEST_F(Judge, LeavesAMisplacedValueItsBytes)
{
    const QByteArray other = readText(10, 300, 40);
    const ToldValue misplaced{kText, expectedValues(kText, other.mid(4, 20)), 10};
    EXPECT_TRUE(m_judge.judgeMisplacedValue(misplaced, 1).isEmpty());
    const QByteArray another = readText(20, 300, 40);
    const ToldValue torn{kText, expectedValues(kText, other.mid(4, 10) + another.mid(14, 10)), 10};
    EXPECT_FALSE(m_judge.judgeMisplacedValue(torn, 1).isEmpty());
}

} // namespace
} // namespace plc::faults

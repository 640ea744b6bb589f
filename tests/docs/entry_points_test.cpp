#include "docs/examples/entry_points.h"

#include "driver/stations.h"
#include "support/driver_fixture.h"

using plc::test::deliver;
using plc::test::hex;
using plc::test::logIn;
using plc::test::readReply;
using plc::test::writeReply;

namespace {

/// A driver set up by the examples and logged in.
class EntryPointExamples : public ::testing::Test {
protected:
    EntryPointExamples()
    {
        example::handOverSettings();
        example::handOverCallbacks();
        example::handOverSymbols();
        logIn();
    }

    /// Has the one waiting write accepted and returns its frame.
    QByteArray sendWrite()
    {
        const QByteArray frame = ComCommunication()->frame;
        deliver(writeReply());
        return frame;
    }

    static const QPair<int, int> request(int tag) { return qMakePair(1, tag); }
};

} // namespace

TEST_F(EntryPointExamples, FindLabelsThatDoNotResolve)
{
    const QStringList labels{QStringLiteral("MAIN.speed"), QStringLiteral("MAIN.sped"),
                             QStringLiteral("MAIN.pumps[8].flow"), QStringLiteral("MAIN.pumps")};
    const QStringList unknown{QStringLiteral("MAIN.sped"), QStringLiteral("MAIN.pumps")};
    EXPECT_EQ(example::unknownLabels(labels), unknown);
}

TEST_F(EntryPointExamples, ArrayElementsLieAsDeclared)
{
    // Rows of five elements of two bytes from byte 100, structures of twelve bytes from byte 200.
    EXPECT_EQ(100, PLCAddressChangeIntef(0, QStringLiteral("MAIN.table[0,1]")));
    EXPECT_EQ(108, PLCAddressChangeIntef(0, QStringLiteral("MAIN.table[0,5]")));
    EXPECT_EQ(110, PLCAddressChangeIntef(0, QStringLiteral("MAIN.table[1,1]")));
    EXPECT_EQ(124, PLCAddressChangeIntef(0, QStringLiteral("MAIN.table[2,3]")));
    EXPECT_EQ(228, PLCAddressChangeIntef(0, QStringLiteral("MAIN.pumps[3].state")));
    EXPECT_EQ(35, PLCAddressChangeIntef(0, QStringLiteral("MAIN.running")));
}

TEST_F(EntryPointExamples, ReadValuesOfEveryKind)
{
    // speed at 10 and pumps[2].flow at 212 lie more than 200 bytes apart: two entries, and the bit
    // is read as the word at byte 2 of area 5.
    ASSERT_EQ(3,
              example::readCyclically({QStringLiteral("MAIN.speed"), QStringLiteral("MAIN.running"),
                                       QStringLiteral("MAIN.pumps[2].flow")}));
    ASSERT_EQ(4, example::readRangeCyclically(3, 300, 40));
    const QByteArray frame = ComCommunication()->frame;
    EXPECT_EQ(hex("0003 0000000A 00000002"
                  "0003 000000D4 00000004"
                  "0005 00000002 00000002"
                  "0003 0000012C 00000028"),
              frame.mid(12, 40));
    QByteArray text("Mill 7");
    text.append(QByteArray(34, '\0'));
    EXPECT_EQ(1,
              deliver(readReply({hex("05 DC"), hex("42 C8 00 00"), hex("00 08"), text}))->result);

    EXPECT_EQ(1500, example::speed());
    EXPECT_EQ(100.0f, example::flow(2));
    EXPECT_TRUE(example::isRunning());
    EXPECT_EQ(QStringLiteral("Mill 7"), example::name());
}

TEST_F(EntryPointExamples, ReadOnceIsReportedByTheCallback)
{
    ASSERT_EQ(1, example::readOnce(QStringLiteral("MAIN.speed"), 1, 41));
    EXPECT_EQ(hex("00000001 0003 0000000A 00000002"), ComCommunication()->frame.mid(8, 14));
    EXPECT_TRUE(example::finished.isEmpty());
    deliver(readReply({hex("00 07")}));
    EXPECT_EQ(true, example::finished.value(request(41)));
    EXPECT_EQ(7, example::speed());
}

TEST_F(EntryPointExamples, WritesCarryTheValueInPlcOrder)
{
    example::setSpeed(1200, 1);
    EXPECT_EQ(hex("0003 0000000A 00000002 04B0"), sendWrite().mid(12, 12));
    EXPECT_EQ(true, example::finished.value(request(1)));

    example::setState(3, 0x5A, 2);
    EXPECT_EQ(hex("0003 000000E4 00000001 5A"), sendWrite().mid(12, 11));

    example::setRunning(true, 3);
    EXPECT_EQ(hex("0005 00000023 00000000 01"), sendWrite().mid(12, 11));

    EXPECT_EQ(1, example::writeRange(3, 10, hex("12 34"), 4));
    EXPECT_EQ(hex("0003 0000000A 00000002 1234"), sendWrite().mid(12, 12));
    EXPECT_EQ(4, example::finished.size());
}

TEST_F(EntryPointExamples, AbandonedWriteIsReportedAsFailed)
{
    example::setSpeed(1200, 9);
    ComCommunication();
    EXPECT_EQ(0, deliver(QByteArray())->result);
    EXPECT_EQ(0, deliver(QByteArray())->result);
    EXPECT_EQ(41, deliver(QByteArray())->result);
    ASSERT_TRUE(example::finished.contains(request(9)));
    EXPECT_EQ(false, example::finished.value(request(9)));
    EXPECT_TRUE(example::transactionWasAbandoned);
}

TEST_F(EntryPointExamples, SwitchedOffStationIsNotServedUntilItIsOn)
{
    example::readRangeCyclically(3, 0, 2); // station 0
    example::switchStation(0, false);
    EXPECT_EQ(nullptr, ComCommunication());
    example::switchStation(0, true);
    EXPECT_NE(ComCommunication(), nullptr);
    example::switchStation(7, false);
    example::switchAllStationsOn();
    EXPECT_EQ(0, Ethernetcontains(7));
}

TEST_F(EntryPointExamples, HostMemoriesAreKept)
{
    int bits = 0, words = 0, indexed = 0;
    EXPECT_EQ(example::handOverMemories(&bits, &words, &indexed), &LW);
    EXPECT_EQ(LB, &bits);
    EXPECT_EQ(LW, &words);
    EXPECT_EQ(RWI, &indexed);
    EXPECT_TRUE(example::isFinished());
}

#include "tests/lists/variable_lists_fixture.h"

namespace plc::test {
namespace {

class WritePieces : public DriverTest {
protected:
    static QByteArray bytes(int count)
    {
        QByteArray out;
        for (int i = 0; i < count; ++i)
            out.append(char(uchar(i * 7 + 3)));
        return out;
    }

    /// The same writes one after the other.
    static void addOneByOne(RW_VAR record, const QByteArray& value, int pieceSize)
    {
        for (int position = 0; position < int(value.size()); position += record.length) {
            record.data = value.mid(position, pieceSize);
            record.length = int(record.data.size());
            AddListWriteVar(&record, 0);
            record.address = advanced(record.address, record.length);
        }
    }
};

TEST_F(WritePieces, LastPieceHoldsTheRest)
{
    queueWritePieces(PLC_driver.writeList, fullRecord(), bytes(7), 3);
    ASSERT_EQ((Places{{10, 3}, {13, 3}, {16, 1}}), places(PLC_driver.writeList));
    EXPECT_EQ(hex("03 0A 11"), PLC_driver.writeList.at(0).data);
    EXPECT_EQ(hex("18 1F 26"), PLC_driver.writeList.at(1).data);
    EXPECT_EQ(hex("2D"), PLC_driver.writeList.at(2).data);
}

TEST_F(WritePieces, PiecesCarryTheOtherMembers)
{
    queueWritePieces(PLC_driver.writeList, fullRecord(), bytes(4), 4);
    RW_VAR expected = fullRecord();
    expected.length = 4;
    expected.data = bytes(4);
    ASSERT_EQ(1, int(PLC_driver.writeList.size()));
    expectEqualRecords(expected, PLC_driver.writeList.at(0));
}

TEST_F(WritePieces, NoBytesQueueNothing)
{
    queueWritePieces(PLC_driver.writeList, fullRecord(), QByteArray(), 4);
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
}

TEST_F(WritePieces, PiecesBehindTheHeadAreReplaced)
{
    queueWritePieces(PLC_driver.writeList, fullRecord(), bytes(6), 2);
    queueWritePieces(PLC_driver.writeList, fullRecord(), QByteArray(6, 'x'), 2);
    // The head's place is queued once more; the two behind it are replaced where they are.
    ASSERT_EQ((Places{{10, 2}, {12, 2}, {14, 2}, {10, 2}}), places(PLC_driver.writeList));
    EXPECT_EQ(bytes(2), PLC_driver.writeList.at(0).data);
    for (int i = 1; i < 4; ++i)
        EXPECT_EQ("xx", PLC_driver.writeList.at(i).data) << i;
}

TEST_F(WritePieces, FullListTakesReplacementsOnly)
{
    for (int i = 0; i < 1024; ++i) {
        RW_VAR var = fullRecord();
        var.address = 100000 + 2 * i;
        var.length = 1;
        AddListWriteVar(&var, 1);
    }
    RW_VAR record = fullRecord();
    record.address = 100000 + 2 * 1021;
    queueWritePieces(PLC_driver.writeList, record, QByteArray(10, 'x'), 1);
    ASSERT_EQ(1024, int(PLC_driver.writeList.size()));
    EXPECT_EQ(hex("0F 10"), PLC_driver.writeList.at(1020).data);
    for (int i = 1021; i < 1024; ++i)
        EXPECT_EQ("x", PLC_driver.writeList.at(i).data) << i;
}

TEST_F(WritePieces, FullListKeepsEntriesOfLengthZeroAndReplacesThoseBehindThem)
{
    RW_VAR queued = fullRecord();
    queued.length = 0;
    queued.data.clear();
    queued.aux1 = 900;
    for (int i = 0; i < 1020; ++i) {
        queued.address = 100000 + i;
        AddListWriteVar(&queued, 1);
    }
    // Without bytes at the value's start, between its pieces and behind its end; then its pieces.
    for (int address : {500, 502, 504}) {
        queued.address = address;
        AddListWriteVar(&queued, 1);
    }
    RW_VAR record = fullRecord();
    record.address = 500;
    record.length = 2;
    AddListWriteVar(&record, 1);
    record.address = 502;
    AddListWriteVar(&record, 1);

    record.address = 500;
    queueWritePieces(PLC_driver.writeList, record, QByteArray(4, 'x'), 2);
    ASSERT_EQ(1025, int(PLC_driver.writeList.size()));
    for (int i = 1020; i < 1023; ++i) {
        EXPECT_EQ(0, PLC_driver.writeList.at(i).length) << i;
        EXPECT_EQ(900, PLC_driver.writeList.at(i).aux1) << i;
    }
    EXPECT_EQ("xx", PLC_driver.writeList.at(1023).data);
    EXPECT_EQ("xx", PLC_driver.writeList.at(1024).data);
}

TEST_F(WritePieces, EqualWritesOneAfterTheOther)
{
    Random random(41);
    for (int round = 0; round < 150; ++round) {
        QList<RW_VAR> start;
        const int queued = random.oneIn(3) ? random.between(1000, 1030) : random.below(40);
        for (int i = 0; i < queued; ++i) {
            RW_VAR var = fullRecord();
            var.address = random.between(-30, random.oneIn(2) ? 300 : 30);
            var.length = random.between(1, 4);
            var.station = random.oneIn(4) ? 1 : 11;
            var.aux1 = i;
            start.append(var);
        }
        RW_VAR record = fullRecord();
        record.address = random.between(-30, 100);
        const QByteArray value = bytes(random.below(random.oneIn(8) ? 3000 : 60));
        const int pieceSize = random.between(1, 5);

        PLC_driver.writeList = start;
        addOneByOne(record, value, pieceSize);
        const QList<RW_VAR> expected = PLC_driver.writeList;
        PLC_driver.writeList = start;
        queueWritePieces(PLC_driver.writeList, record, value, pieceSize);
        expectEqualLists(expected, PLC_driver.writeList);
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
}

TEST_F(WritePieces, PiecesOfAWrappedAddressEqualWritesOneAfterTheOther)
{
    RW_VAR record = fullRecord();
    record.address = INT_MAX - 4;
    addOneByOne(record, bytes(12), 3);
    const QList<RW_VAR> expected = PLC_driver.writeList;
    EXPECT_EQ((Places{{INT_MAX - 4, 3}, {INT_MAX - 1, 3}, {INT_MIN + 1, 3}, {INT_MIN + 4, 3}}),
              places(expected));
    PLC_driver.writeList.clear();
    queueWritePieces(PLC_driver.writeList, record, bytes(12), 3);
    expectEqualLists(expected, PLC_driver.writeList);
}

} // namespace
} // namespace plc::test

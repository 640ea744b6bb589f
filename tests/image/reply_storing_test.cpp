#include "tests/image/image_fixture.h"

namespace plc::test {
namespace {

using ImageKey = DriverTest;

TEST_F(ImageKey, HoldsTheAreaAboveTheAddressAndCreatesTheByte)
{
    EXPECT_EQ(Q_UINT64_C(0x0000000700000020), ExtendFindSameVar(7, 0x20));
    EXPECT_TRUE(exists(0x20, 7));
    EXPECT_EQ(0, byteAt(0x20, 7));
    EXPECT_EQ(1, bytesInImage());
}

TEST_F(ImageKey, ExistingByteKeepsItsValue)
{
    ExtendFindSameVar(7, 0x20);
    PLC_driver.localImage.insert(keyOf(0x20, 7), 0x5A);
    EXPECT_EQ(Q_UINT64_C(0x0000000700000020), ExtendFindSameVar(7, 0x20));
    EXPECT_EQ(0x5A, byteAt(0x20, 7));
    EXPECT_EQ(1, bytesInImage());
}

TEST_F(ImageKey, TakesAreaAndAddressAsUnsigned)
{
    EXPECT_EQ(Q_UINT64_C(0xFFFFFFFFFFFFFFFF), ExtendFindSameVar(0xFFFFFFFF, 0xFFFFFFFF));
    EXPECT_EQ(Q_UINT64_C(0x00000000FFFFFFFF), ExtendFindSameVar(0, 0xFFFFFFFF));
    EXPECT_EQ(Q_UINT64_C(0x8000000000000000), ExtendFindSameVar(0x80000000, 0));
    EXPECT_EQ(Q_UINT64_C(0), ExtendFindSameVar(0, 0));
    EXPECT_EQ(4, bytesInImage());
}

TEST_F(ImageKey, TakesNoLock)
{
    QMutexLocker lock(&PLC_driver.dataMutex);
    EXPECT_EQ(Q_UINT64_C(0x0000000700000020), ExtendFindSameVar(7, 0x20));
}

class Storing : public DriverTest {
protected:
    Storing() { queueRequest(makeRequest(makeVar(kArea, 0, 0))); }

    static void addToBatch(int address, int length, int area = kArea)
    {
        PLC_driver.batch[PLC_driver.batchCount++] = makeVar(area, address, length);
    }

    static void store(const QByteArray& bytes)
    {
        ExactBytes reply(bytes);
        SaveToLocalDataErea(reply.get());
    }
};

TEST_F(Storing, BlocksBeginBehindTheirLeadingByte)
{
    addToBatch(100, 2);
    addToBatch(200, 1, 4);
    // Bytes 12 and 15 lead the blocks.
    store(hex("00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10"));
    EXPECT_EQ("0D 0E ..", image(100, 3));
    EXPECT_EQ("10 ..", image(200, 2, 4));
    EXPECT_EQ(3, bytesInImage());
}

TEST_F(Storing, ReplacesEarlierBytes)
{
    addToBatch(100, 2);
    PLC_driver.localImage.insert(keyOf(101), 0x77);
    PLC_driver.localImage.insert(keyOf(102), 0x78);
    store(QByteArray(13, '\0') + hex("A1 A2"));
    EXPECT_EQ("A1 A2 78", image(100, 3));
}

TEST_F(Storing, DataOffsetOfTheHeadRequestCounts)
{
    addToBatch(100, 2);
    PLC_driver.requestQueue[0].dataOffset = 1;
    queueRequest(makeRequest(makeVar(kArea, 0, 0)));
    store(hex("F0 F1 F2 F3 F4"));
    EXPECT_EQ("F2 F3 ..", image(100, 3));
}

TEST_F(Storing, DataOffsetOfZeroTakesTheFirstByteAsLeading)
{
    addToBatch(100, 2);
    PLC_driver.requestQueue[0].dataOffset = 0;
    store(hex("F0 F1 F2 F3"));
    EXPECT_EQ("F1 F2 ..", image(100, 3));
}

TEST_F(Storing, EntryWithoutLengthStillHasItsLeadingByte)
{
    addToBatch(100, 0);
    addToBatch(200, 1);
    store(QByteArray(12, '\0') + hex("EE EE A5 A6"));
    EXPECT_EQ("..", image(100, 1));
    EXPECT_EQ("A5 ..", image(200, 2));
    EXPECT_EQ(1, bytesInImage());
}

TEST_F(Storing, OnlyTheLow16BitsOfALengthCount)
{
    addToBatch(100, 0x10002);
    addToBatch(200, 1);
    store(QByteArray(12, '\0') + hex("EE A1 A2 EE B1"));
    EXPECT_EQ("A1 A2 ..", image(100, 3));
    EXPECT_EQ("B1 ..", image(200, 2));
    EXPECT_EQ(3, bytesInImage());
}

TEST_F(Storing, NegativeLengthCountsByItsLow16Bits)
{
    addToBatch(100, -65534);
    addToBatch(200, 1);
    store(QByteArray(12, '\0') + hex("EE A1 A2 EE B1"));
    EXPECT_EQ("A1 A2 ..", image(100, 3));
    EXPECT_EQ("B1 ..", image(200, 2));
}

TEST_F(Storing, LongestEntryIsStoredWhole)
{
    addToBatch(100, -1);
    store(QByteArray(13, '\0') + QByteArray(70000, 'x'));
    EXPECT_EQ(65535, bytesInImage());
    EXPECT_EQ('x', byteAt(100));
    EXPECT_EQ('x', byteAt(100 + 65534));
    EXPECT_FALSE(exists(100 + 65535));
}

TEST_F(Storing, StopsWhereTheReplyEnds)
{
    addToBatch(100, 4);
    addToBatch(200, 4);
    store(QByteArray(12, '\0') + hex("EE A1 A2"));
    EXPECT_EQ("A1 A2 .. ..", image(100, 4));
    EXPECT_EQ("..", image(200, 1));
    EXPECT_EQ(2, bytesInImage());
}

TEST_F(Storing, EveryShorterReplyStoresWhatItHolds)
{
    const QByteArray whole = QByteArray(12, '\0') + hex("EE A1 A2 EE EE B1 B2 B3");
    for (int size = 0; size <= int(whole.size()); ++size) {
        PLC_driver.localImage.clear();
        PLC_driver.batchCount = 0;
        addToBatch(100, 2);
        addToBatch(150, 0);
        addToBatch(200, 3);
        store(whole.left(size));
        // The first entry's data begins at byte 13, the third's at byte 17.
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(size > 13 + i, exists(100 + i)) << size;
            EXPECT_EQ(size > 13 + i ? 0xA1 + i : 0, byteAt(100 + i)) << size;
        }
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(size > 17 + i, exists(200 + i)) << size;
            EXPECT_EQ(size > 17 + i ? 0xB1 + i : 0, byteAt(200 + i)) << size;
        }
        EXPECT_EQ(qBound(0, size - 13, 2) + qBound(0, size - 17, 3), bytesInImage()) << size;
    }
}

TEST_F(Storing, DataOffsetOutsideTheReplyStoresNothing)
{
    addToBatch(100, 2);
    for (int offset : {4, 5, 1000, INT_MAX, -1, -2, INT_MIN}) {
        PLC_driver.requestQueue[0].dataOffset = offset;
        store(hex("EE A1 A2 A3"));
        EXPECT_EQ(0, bytesInImage()) << offset;
    }
    PLC_driver.requestQueue[0].dataOffset = 3;
    store(hex("EE A1 A2 A3"));
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(Storing, WithoutBatchNothingIsStored)
{
    PLC_driver.batch[0] = makeVar(kArea, 100, 2);
    for (int count : {0, -1, INT_MIN}) {
        PLC_driver.batchCount = count;
        store(QByteArray(20, 'x'));
        EXPECT_EQ(0, bytesInImage()) << count;
    }
}

TEST_F(Storing, BatchCountAboveTheArrayEndsWithTheArray)
{
    for (int i = 0; i < 150; ++i)
        PLC_driver.batch[i] = makeVar(kArea, 10 * i, 1);
    for (int count : {150, 151, 1000, INT_MAX}) {
        PLC_driver.localImage.clear();
        PLC_driver.batchCount = count;
        store(QByteArray(12 + 1000, 'x'));
        EXPECT_EQ(150, bytesInImage()) << count;
        EXPECT_TRUE(exists(1490)) << count;
    }
}

TEST_F(Storing, AddressesGoOnAtZeroAfterTheLast)
{
    addToBatch(-2, 4, -1);
    store(QByteArray(13, '\0') + hex("A1 A2 A3 A4"));
    EXPECT_EQ("A1 A2 A3 A4", image(-2, 4, -1));
    EXPECT_EQ(4, bytesInImage());
    EXPECT_EQ(0xA3, PLC_driver.localImage.value(Q_UINT64_C(0xFFFFFFFF00000000)));
}

TEST_F(Storing, LaterEntriesOverwriteEarlierOnes)
{
    addToBatch(100, 3);
    addToBatch(101, 1);
    store(QByteArray(12, '\0') + hex("EE A1 A2 A3 EE B1"));
    EXPECT_EQ("A1 B1 A3", image(100, 3));
}

TEST_F(Storing, TypeOfAnEntryIsNotLookedAt)
{
    PLC_driver.batch[0] = makeVar(kArea, 100, 2, 13);
    PLC_driver.batchCount = 1;
    store(QByteArray(13, '\0') + hex("A1 A2"));
    EXPECT_EQ("A1 A2", image(100, 2));
}

TEST_F(Storing, NullAndEmptyRepliesStoreNothing)
{
    addToBatch(100, 2);
    SaveToLocalDataErea(nullptr);
    store(QByteArray());
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(Storing, WithoutRequestNothingIsStored)
{
    addToBatch(100, 2);
    PLC_driver.requestQueue.clear();
    store(QByteArray(40, 'x'));
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(Storing, TakesNoLock)
{
    addToBatch(100, 2);
    QMutexLocker lock(&PLC_driver.dataMutex);
    store(QByteArray(13, '\0') + hex("A1 A2"));
    EXPECT_EQ("A1 A2", image(100, 2));
}

TEST_F(Storing, ReplyIsNotChanged)
{
    addToBatch(100, 2);
    QByteArray reply = QByteArray(13, '\0') + hex("A1 A2");
    const QByteArray before = reply;
    SaveToLocalDataErea(&reply);
    EXPECT_EQ(before, reply);
}

} // namespace
} // namespace plc::test

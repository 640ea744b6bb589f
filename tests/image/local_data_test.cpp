#include "driver/image_access.h"

#include <climits>
#include <map>

#include "base/wrapped_int.h"
#include "driver/reply_judging.h"
#include "driver/request_building.h"
#include "support/driver_fixture.h"
#include "support/lock_check.h"
#include "support/random.h"

namespace plc {
namespace test {
namespace {

using ImageKey = DriverTest;

const int kArea = 3;

quint64 keyOf(int address, int area = kArea)
{
    return quint64(quint32(area)) << 32 | quint32(address);
}

bool exists(int address, int area = kArea)
{
    return PLC_driver.localImage.contains(keyOf(address, area));
}

int byteAt(int address, int area = kArea)
{
    return PLC_driver.localImage.value(keyOf(address, area));
}

int bytesInImage()
{
    return int(PLC_driver.localImage.size());
}

/// The bytes of the area from `address` on as hexadecimal pairs; ".." for one that does not exist.
std::string image(int address, int count, int area = kArea)
{
    std::string text;
    for (int i = 0; i < count; ++i) {
        const int place = advanced(address, i);
        const QByteArray pair =
            QByteArray::number(byteAt(place, area), 16).rightJustified(2, '0').toUpper();
        text += (i ? " " : "") +
                (exists(place, area) ? std::string(pair.constData()) : std::string(".."));
    }
    return text;
}

// --- The key of a byte ---

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

// --- Storing a reply ---

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

// --- Judging replies ---

/// A request for two bytes at 100 that waits for its reply.
class Judging : public DriverTest {
protected:
    Judging()
    {
        queueRequest(makeRequest(makeVar(kArea, 100, 2)));
        PLC_driver.batch[0] = makeVar(kArea, 100, 2);
        PLC_driver.batchCount = 1;
        // Whose data the remote handler stores.
        head().var.aux12 = -1;
    }

    static Protocol& head() { return PLC_driver.requestQueue.first(); }
    static QByteArray goodReply() { return readReply({hex("A1 A2")}); }
    static int local(const QByteArray& bytes, int received)
    {
        ExactBytes reply(bytes);
        return DealDataOfLocalArea(reply.get(), received);
    }
    static int local(const QByteArray& bytes) { return local(bytes, int(bytes.size())); }
    static int remote(const QByteArray& bytes, int received)
    {
        ExactBytes reply(bytes);
        return DealDataOfRemoteArea(reply.get(), received);
    }
    static int remote(const QByteArray& bytes) { return remote(bytes, int(bytes.size())); }

    void expectStored() { EXPECT_EQ("A1 A2", image(100, 2)); }
    void expectNothingStored() { EXPECT_EQ(0, bytesInImage()); }
};

using LocalReply = Judging;
using RemoteReply = Judging;

TEST_F(LocalReply, GoodReplyIsStored)
{
    EXPECT_EQ(1, local(goodReply()));
    expectStored();
}

TEST_F(LocalReply, GoodReplyOfTheExpectedLengthIsStored)
{
    head().replyLength = int(goodReply().size());
    EXPECT_EQ(1, local(goodReply()));
    expectStored();
}

TEST_F(LocalReply, NothingReceivedIsReported)
{
    EXPECT_EQ(41, local(QByteArray(), 0));
    EXPECT_EQ(41, local(goodReply(), 0));
    head().replyLength = 15;
    EXPECT_EQ(41, local(QByteArray(), 0));
    expectNothingStored();
}

TEST_F(LocalReply, NothingExpectedIsAlwaysGoodAndStoresNothing)
{
    head().replyLength = 0;
    EXPECT_EQ(1, local(QByteArray(), 0));
    EXPECT_EQ(1, local(goodReply()));
    EXPECT_EQ(1, local(hex("00"), 5));
    expectNothingStored();
}

TEST_F(LocalReply, OtherLengthThanExpectedIsReported)
{
    head().replyLength = int(goodReply().size()) + 1;
    EXPECT_EQ(71, local(goodReply()));
    head().replyLength = int(goodReply().size());
    EXPECT_EQ(71, local(goodReply(), int(goodReply().size()) - 1));
    EXPECT_EQ(71, local(goodReply(), -1));
    expectNothingStored();
}

TEST_F(LocalReply, NegativeExpectedLengthOtherThanMinusOneIsCompared)
{
    head().replyLength = -2;
    EXPECT_EQ(71, local(goodReply()));
    EXPECT_EQ(1, local(goodReply(), -2));
    expectStored();
}

TEST_F(LocalReply, ReceivedCountIsNotTheSizeThatIsChecked)
{
    EXPECT_EQ(1, local(goodReply(), 9999));
    expectStored();
}

TEST_F(LocalReply, MalformedReplyIsReported)
{
    EXPECT_EQ(11, local(goodReply() + hex("00")));
    EXPECT_EQ(11, local(goodReply().left(14)));
    EXPECT_EQ(11, local(hex("BB BB 00 00 00"), 5));
    EXPECT_EQ(11, local(hex("BB BB 00 00 00 00"), 6));
    EXPECT_EQ(11, local(QByteArray(), 5));
    EXPECT_EQ(11, local(refusedReply()));
    expectNothingStored();
}

TEST_F(LocalReply, AcknowledgementIsGoodAndStoresNothing)
{
    head().var.aux2 = 1;
    EXPECT_EQ(1, local(goodReply()));
    EXPECT_EQ(1, local(writeReply()));
    expectNothingStored();
}

TEST_F(LocalReply, AcknowledgementThatIsToBeStoredIsUnpackedFromItsOffset)
{
    head().dataOffset = 0;
    // A leading byte and two bytes of data.
    EXPECT_EQ(1, local(writeReply()));
    EXPECT_EQ("BB 00", image(100, 2));
}

TEST_F(LocalReply, FailuresAreShiftedByTheCategory)
{
    for (int category : {-1, 0, 1, 5, 11, 12}) {
        const int shift = category >= 1 && category <= 11 ? category + 1 : 1;
        head().var.category = category;
        head().replyLength = -1;
        EXPECT_EQ(40 + shift, local(QByteArray(), 0)) << category;
        EXPECT_EQ(10 + shift, local(refusedReply())) << category;
        EXPECT_EQ(1, local(goodReply())) << category;
        head().replyLength = 1;
        EXPECT_EQ(70 + shift, local(goodReply())) << category;
    }
}

TEST_F(LocalReply, StoresUnderTheDataLock)
{
    EXPECT_TRUE(waitsFor(PLC_driver.dataMutex, [] { local(goodReply()); }));
    expectStored();
}

TEST_F(LocalReply, JudgesWithoutLock)
{
    QMutexLocker lock(&PLC_driver.dataMutex);
    EXPECT_EQ(41, local(QByteArray(), 0));
    EXPECT_EQ(11, local(refusedReply()));
    head().var.aux2 = 1;
    EXPECT_EQ(1, local(goodReply()));
}

TEST_F(LocalReply, NullReplyIsAnEmptyOne)
{
    EXPECT_EQ(41, DealDataOfLocalArea(nullptr, 0));
    EXPECT_EQ(11, DealDataOfLocalArea(nullptr, 15));
    head().replyLength = 0;
    EXPECT_EQ(1, DealDataOfLocalArea(nullptr, 0));
}

TEST_F(LocalReply, WithoutRequestTheReplyFailsItsCheck)
{
    PLC_driver.requestQueue.clear();
    EXPECT_EQ(11, local(goodReply()));
    EXPECT_THAT(local(QByteArray(), 0), ::testing::AnyOf(11, 41));
    expectNothingStored();
}

TEST_F(LocalReply, FrameIndexAndMarkerAreNotLookedAt)
{
    settings.frameIndex = 1;
    head().var.aux12 = 0;
    EXPECT_EQ(1, local(goodReply()));
    expectStored();
}

TEST_F(RemoteReply, GoodReplyIsStored)
{
    EXPECT_EQ(1, remote(goodReply()));
    expectStored();
}

TEST_F(RemoteReply, GoodReplyIsTheRemoteNumberWhenOneFrameWasAnswered)
{
    settings.frameIndex = 1;
    EXPECT_EQ(100, remote(goodReply()));
    expectStored();
}

TEST_F(RemoteReply, OtherFrameIndexesGiveTheLocalNumber)
{
    for (int frameIndex : {0, 2, -1, INT_MAX}) {
        settings.frameIndex = frameIndex;
        EXPECT_EQ(1, remote(goodReply())) << frameIndex;
    }
}

TEST_F(RemoteReply, MarkerOtherThanMinusOneStoresNothing)
{
    for (int marker : {0, 1, -2, INT_MAX, INT_MIN}) {
        head().var.aux12 = marker;
        EXPECT_EQ(100, remote(goodReply())) << marker;
    }
    expectNothingStored();
}

TEST_F(RemoteReply, AcknowledgementIsStoredToo)
{
    head().var.aux2 = 1;
    EXPECT_EQ(1, remote(goodReply()));
    expectStored();
}

TEST_F(RemoteReply, NothingReceivedIsReported)
{
    EXPECT_EQ(141, remote(QByteArray(), 0));
    EXPECT_EQ(141, remote(goodReply(), 0));
    head().replyLength = 15;
    EXPECT_EQ(141, remote(QByteArray(), 0));
    expectNothingStored();
}

TEST_F(RemoteReply, NothingExpectedAndNothingReceivedIsCheckedAllTheSame)
{
    head().replyLength = 0;
    EXPECT_EQ(111, remote(QByteArray(), 0));
    EXPECT_EQ(1, remote(goodReply(), 0));
    expectStored();
}

TEST_F(RemoteReply, OtherLengthThanExpectedIsReported)
{
    head().replyLength = 0;
    EXPECT_EQ(171, remote(goodReply()));
    head().replyLength = int(goodReply().size()) + 1;
    EXPECT_EQ(171, remote(goodReply()));
    head().replyLength = int(goodReply().size());
    EXPECT_EQ(171, remote(goodReply(), 1));
    expectNothingStored();
    EXPECT_EQ(1, remote(goodReply()));
}

TEST_F(RemoteReply, MalformedReplyIsReported)
{
    EXPECT_EQ(111, remote(goodReply() + hex("00")));
    EXPECT_EQ(111, remote(hex("BB BB 00 00 00 00"), 6));
    EXPECT_EQ(111, remote(refusedReply()));
    head().var.aux12 = 0;
    EXPECT_EQ(111, remote(refusedReply()));
    expectNothingStored();
}

TEST_F(RemoteReply, FailuresAreShiftedByTheCategory)
{
    for (int category : {-1, 0, 1, 5, 11, 12}) {
        const int shift = category >= 1 && category <= 11 ? category + 1 : 1;
        head().var.category = category;
        head().replyLength = -1;
        EXPECT_EQ(140 + shift, remote(QByteArray(), 0)) << category;
        EXPECT_EQ(110 + shift, remote(refusedReply())) << category;
        head().replyLength = 1;
        EXPECT_EQ(170 + shift, remote(goodReply())) << category;
    }
}

TEST_F(RemoteReply, StoresWithoutTheDataLock)
{
    QMutexLocker lock(&PLC_driver.dataMutex);
    EXPECT_EQ(1, remote(goodReply()));
    expectStored();
}

TEST_F(RemoteReply, NullReplyIsAnEmptyOne)
{
    EXPECT_EQ(141, DealDataOfRemoteArea(nullptr, 0));
    EXPECT_EQ(111, DealDataOfRemoteArea(nullptr, 15));
}

TEST_F(RemoteReply, WithoutRequestTheReplyFailsItsCheck)
{
    PLC_driver.requestQueue.clear();
    EXPECT_EQ(111, remote(goodReply()));
    EXPECT_THAT(remote(QByteArray(), 0), ::testing::AnyOf(111, 141));
    expectNothingStored();
}

TEST_F(RemoteReply, WithoutSettingsAGoodReplyIsStillGood)
{
    SetComInfo(nullptr);
    EXPECT_THAT(remote(goodReply()), ::testing::AnyOf(1, 100));
}

// --- Writing into the image ---

class ImageWrite : public DriverTest {
protected:
    static void write(int dataType, int address, int length, const QByteArray& data,
                      int area = kArea)
    {
        RW_VAR var = makeVar(area, address, length, dataType);
        ExactBytes bytes(data);
        var.data = *bytes.get();
        WriteDataToLocal(&var);
    }
};

TEST_F(ImageWrite, BytesAreStoredInTheirOrder)
{
    write(3, 100, 2, hex("12 34"));
    EXPECT_EQ("12 34 ..", image(100, 3));
    EXPECT_EQ(2, bytesInImage());
}

TEST_F(ImageWrite, EveryTypeButBitsStoresBytes)
{
    for (int code = -1; code <= 300; ++code) {
        if (code == 13)
            continue;
        PLC_driver.localImage.clear();
        write(code, 100, 3, hex("01 00 FF"));
        ASSERT_EQ("01 00 FF", image(100, 3)) << code;
        ASSERT_EQ(3, bytesInImage());
    }
}

TEST_F(ImageWrite, MissingBytesCountAsZero)
{
    PLC_driver.localImage.insert(keyOf(103), 0x77);
    write(5, 100, 4, hex("12 34"));
    EXPECT_EQ("12 34 00 00 ..", image(100, 5));
    write(5, 200, 3, QByteArray());
    EXPECT_EQ("00 00 00 ..", image(200, 4));
}

TEST_F(ImageWrite, SurplusBytesAreNotStored)
{
    write(5, 100, 2, hex("12 34 56 78"));
    EXPECT_EQ("12 34 ..", image(100, 3));
}

TEST_F(ImageWrite, LengthOfZeroOrLessStoresNothing)
{
    for (int code : {3, 13}) {
        for (int length : {0, -1, INT_MIN})
            write(code, 100, length, hex("12 34"));
    }
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(ImageWrite, AddressesGoOnAtZeroAfterTheLast)
{
    write(3, -1, 3, hex("A1 A2 A3"), -1);
    EXPECT_EQ("A1 A2 A3", image(-1, 3, -1));
    EXPECT_EQ(3, bytesInImage());
}

TEST_F(ImageWrite, BitIsSetInTheLowByteBehindItsWordIndex)
{
    write(13, 17, 1, hex("01"));
    EXPECT_EQ("00 02 ..", image(1, 3));
    EXPECT_EQ(2, bytesInImage());
}

TEST_F(ImageWrite, EveryBitOfAWordHasItsPlace)
{
    // Word 2 has its high byte at 2 and its low byte at 3.
    const char* const expected[] = {"00 01", "00 02", "00 04", "00 08", "00 10", "00 20",
                                    "00 40", "00 80", "01 00", "02 00", "04 00", "08 00",
                                    "10 00", "20 00", "40 00", "80 00"};
    for (int bit = 0; bit < 16; ++bit) {
        PLC_driver.localImage.clear();
        write(13, 32 + bit, 1, hex("01"));
        EXPECT_EQ(expected[bit], image(2, 2)) << bit;
        EXPECT_EQ(2, bytesInImage());
    }
}

TEST_F(ImageWrite, BitsLeaveTheirNeighboursAlone)
{
    PLC_driver.localImage.insert(keyOf(1), 0xA5);
    PLC_driver.localImage.insert(keyOf(2), 0x5A);
    write(13, 17, 1, hex("00"));
    EXPECT_EQ("A5 58", image(1, 2));
    write(13, 16, 1, hex("01"));
    EXPECT_EQ("A5 59", image(1, 2));
    write(13, 24, 1, hex("00"));
    EXPECT_EQ("A4 59", image(1, 2));
    write(13, 30, 1, hex("01"));
    EXPECT_EQ("E4 59", image(1, 2));
}

TEST_F(ImageWrite, AnyValueButZeroSetsABit)
{
    write(13, 16, 5, hex("01 80 FF 00 02"));
    EXPECT_EQ("00 17", image(1, 2));
}

TEST_F(ImageWrite, MissingBytesOfABitWriteClearBits)
{
    PLC_driver.localImage.insert(keyOf(1), 0xFF);
    PLC_driver.localImage.insert(keyOf(2), 0xFF);
    write(13, 16, 4, hex("01 00"));
    EXPECT_EQ("FF F1", image(1, 2));
    write(13, 24, 2, QByteArray());
    EXPECT_EQ("FC F1", image(1, 2));
}

TEST_F(ImageWrite, NeighbouringWordsShareAByte)
{
    // Word 1 is bytes 1 and 2, word 2 is bytes 2 and 3: bit 16 and bit 40 are the same.
    write(13, 16, 1, hex("01"));
    EXPECT_EQ("00 01 ..", image(1, 3));
    write(13, 40, 1, hex("00"));
    EXPECT_EQ("00 00 00", image(1, 3));
    write(13, 40, 1, hex("01"));
    EXPECT_EQ("00 01 00", image(1, 3));
}

TEST_F(ImageWrite, RunOfBitsGoesOnInTheNextWord)
{
    // Bits 30 and 31 are bits 14 and 15 of word 1, bits 32 and 33 the lowest of word 2.
    write(13, 30, 4, hex("01 01 01 01"));
    EXPECT_EQ("C0 00 03", image(1, 3));
    EXPECT_EQ(3, bytesInImage());
}

TEST_F(ImageWrite, BitAddressIsShiftedAsUnsigned)
{
    write(13, -1, 2, hex("01 01"));
    EXPECT_EQ("80 00", image(0x0FFFFFFF, 2));
    EXPECT_EQ("00 01", image(0, 2));
    EXPECT_EQ(4, bytesInImage());
}

TEST_F(ImageWrite, LengthAboveTheLargestValueStoresNothing)
{
    for (int length : {PLC_LARGEST_VALUE + 1, INT_MAX}) {
        write(3, 100, length, hex("12 34"));
        write(13, 100, length, hex("12 34"));
        EXPECT_EQ(0, bytesInImage()) << length;
    }
}

TEST_F(ImageWrite, LargestValueIsStored)
{
    write(3, 100, PLC_LARGEST_VALUE, hex("12 34"));
    EXPECT_EQ(PLC_LARGEST_VALUE, bytesInImage());
    EXPECT_EQ("12 34 00", image(100, 3));
    EXPECT_TRUE(exists(100 + PLC_LARGEST_VALUE - 1));
}

TEST_F(ImageWrite, NullStoresNothing)
{
    WriteDataToLocal(nullptr);
    EXPECT_EQ(0, bytesInImage());
}

TEST_F(ImageWrite, RecordIsNotChanged)
{
    RW_VAR var = makeVar(kArea, 100, 2, 13);
    var.data = hex("01");
    WriteDataToLocal(&var);
    EXPECT_EQ(100, var.address);
    EXPECT_EQ(2, var.length);
    EXPECT_EQ(hex("01"), var.data);
}

TEST_F(ImageWrite, RunsUnderTheDataLock)
{
    EXPECT_TRUE(waitsFor(PLC_driver.dataMutex, [] { write(3, 100, 2, hex("12 34")); }));
    EXPECT_TRUE(waitsFor(PLC_driver.dataMutex, [] { write(13, 900, 2, hex("01 01")); }));
    EXPECT_EQ("12 34", image(100, 2));
}

TEST_F(ImageWrite, RandomBitRunsEqualBitsWrittenOneByOne)
{
    Random random(8);
    std::map<quint64, uchar> plain;
    for (int round = 0; round < 3000; ++round) {
        const int address = random.oneIn(10) ? random.between(-40, 40) : random.below(600);
        const int length = random.below(40);
        QByteArray data;
        for (int i = random.below(length + 3); i > 0; --i)
            data.append(char(uchar(random.oneIn(2) ? random.bits() : 0)));
        write(13, address, length, data);
        for (int i = 0; i < length; ++i) {
            const quint32 bit = advanced(quint32(address), i);
            uchar& high = plain[DataImage::key(kArea, bit >> 4)];
            uchar& low = plain[DataImage::key(kArea, (bit >> 4) + 1)];
            uchar& byte = (bit & 15) >= 8 ? high : low;
            const uchar mask = uchar(1 << (bit & 7));
            const bool isSet = i < int(data.size()) && data.at(i) != 0;
            byte = uchar(isSet ? byte | mask : byte & ~mask);
        }
        ASSERT_EQ(int(plain.size()), bytesInImage());
        if (round % 50 == 0) {
            for (const auto& byte : plain)
                ASSERT_EQ(byte.second, PLC_driver.localImage.value(byte.first))
                    << "round " << round;
        }
    }
}

} // namespace
} // namespace test
} // namespace plc

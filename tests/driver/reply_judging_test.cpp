#include "tests/image/image_fixture.h"

namespace plc::test {
namespace {

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

} // namespace
} // namespace plc::test

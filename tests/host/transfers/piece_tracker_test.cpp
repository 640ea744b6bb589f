#include "host/transfers/piece_tracker.h"

#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

FrameEntry piece(int area, quint32 address, quint32 length, bool isBit = false)
{
    FrameEntry entry;
    entry.area = quint16(area);
    entry.address = address;
    entry.length = length;
    entry.isBit = isBit;
    return entry;
}

TEST(PieceTracker, TransferIsSettledByItsLastPiece)
{
    PieceTracker tracker;
    tracker.add(1, {piece(1, 0, 1000), piece(1, 1000, 1000), piece(1, 2000, 5)});
    EXPECT_EQ(QVector<int>{1}, tracker.requestSent({piece(1, 0, 1000)}));
    EXPECT_TRUE(tracker.requestAccepted().isEmpty());
    tracker.requestSent({piece(1, 1000, 1000)});
    EXPECT_TRUE(tracker.requestAccepted().isEmpty());
    EXPECT_TRUE(tracker.contains(1));
    tracker.requestSent({piece(1, 2000, 5)});
    EXPECT_EQ(QVector<int>{1}, tracker.requestAccepted());
    EXPECT_FALSE(tracker.contains(1));
}

TEST(PieceTracker, RequestSettlesAllThatItCarries)
{
    PieceTracker tracker;
    tracker.add(1, {piece(1, 0, 2)});
    tracker.add(2, {piece(1, 2, 2)});
    tracker.add(3, {piece(1, 4, 2)});
    tracker.requestSent({piece(1, 0, 2), piece(1, 4, 2)});
    EXPECT_EQ((QVector<int>{1, 3}), tracker.requestAccepted());
    EXPECT_TRUE(tracker.contains(2));
    EXPECT_EQ(1, tracker.pieceCount());
}

TEST(PieceTracker, AbandonedRequestTellsItsTransfersAndWhatWasTakenOfThem)
{
    PieceTracker tracker;
    tracker.add(1, {piece(1, 0, 1000), piece(1, 1000, 1000)});
    tracker.add(2, {piece(1, 5000, 2)});
    tracker.requestSent({piece(1, 0, 1000)});
    tracker.requestAccepted();
    tracker.requestSent({piece(1, 1000, 1000)});
    EXPECT_EQ(QVector<int>{1}, tracker.requestAbandoned());
    EXPECT_EQ(1000, tracker.accepted(1));
    EXPECT_EQ(0, tracker.accepted(2));
    tracker.remove(1);
    EXPECT_EQ(0, tracker.accepted(1));
    EXPECT_EQ(1, tracker.pieceCount());
}

TEST(PieceTracker, OnlyWhatWasAcceptedBeforeTheConfirmationIsSure)
{
    PieceTracker tracker;
    tracker.add(1, {piece(1, 0, 1000), piece(1, 1000, 1000), piece(1, 2000, 5)});
    tracker.requestSent({piece(1, 0, 1000)});
    tracker.requestAccepted();
    tracker.confirm();
    tracker.requestSent({piece(1, 1000, 1000)});
    tracker.requestAccepted();
    EXPECT_EQ(2000, tracker.accepted(1));
    EXPECT_EQ(1000, tracker.confirmed(1));
    tracker.confirm();
    EXPECT_EQ(2000, tracker.confirmed(1));
}

TEST(PieceTracker, RequestMayCarryPiecesInAnyOrder)
{
    PieceTracker tracker;
    tracker.add(1, {piece(1, 0, 2)});
    tracker.add(2, {piece(1, 2, 2)});
    tracker.add(3, {piece(1, 4, 2)});
    EXPECT_EQ((QVector<int>{1, 2}), tracker.requestSent({piece(1, 2, 2), piece(1, 0, 2)}));
    EXPECT_EQ((QVector<int>{1, 2}), tracker.requestAccepted());
    EXPECT_TRUE(tracker.contains(3));
}

TEST(PieceTracker, SameRequestSentAgainCarriesTheSame)
{
    PieceTracker tracker;
    tracker.add(1, {piece(1, 0, 2)});
    tracker.add(2, {piece(1, 0, 2)});
    EXPECT_EQ(QVector<int>{1}, tracker.requestSent({piece(1, 0, 2)}));
    EXPECT_EQ(QVector<int>{1}, tracker.requestSent({piece(1, 0, 2)}));
    EXPECT_EQ(QVector<int>{1}, tracker.requestAccepted());
    EXPECT_EQ(QVector<int>{2}, tracker.requestSent({piece(1, 0, 2)}));
}

TEST(PieceTracker, PlaceMustAgreeInEverything)
{
    PieceTracker tracker;
    tracker.add(1, {piece(1, 8, 1)});
    for (const FrameEntry& other :
         {piece(2, 8, 1), piece(1, 9, 1), piece(1, 8, 2), piece(1, 8, 1, true)})
        EXPECT_TRUE(tracker.requestSent({other}).isEmpty());
    EXPECT_TRUE(tracker.requestAccepted().isEmpty());
    EXPECT_TRUE(tracker.contains(1));
}

TEST(PieceTracker, AnswerWithoutItsRequestSettlesNothing)
{
    PieceTracker tracker;
    tracker.add(1, {piece(1, 0, 2)});
    EXPECT_TRUE(tracker.requestAccepted().isEmpty());
    EXPECT_TRUE(tracker.requestAbandoned().isEmpty());
    tracker.remove(1);
    EXPECT_EQ(0, tracker.pieceCount());
}

} // namespace
} // namespace test
} // namespace plc::host

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

void add(PieceTracker* tracker, Tag tag, const QVector<FramePlace>& pieces)
{
    for (const FramePlace& each : pieces)
        tracker->add(tag, each);
}

TEST(PieceTracker, TransferIsSettledByItsLastPiece)
{
    PieceTracker tracker;
    add(&tracker, 1, {piece(1, 0, 1000), piece(1, 1000, 1000), piece(1, 2000, 5)});
    EXPECT_EQ(QVector<Tag>{1}, tracker.requestSent({piece(1, 0, 1000)}));
    EXPECT_TRUE(tracker.requestAccepted().isEmpty());
    tracker.requestSent({piece(1, 1000, 1000)});
    EXPECT_TRUE(tracker.requestAccepted().isEmpty());
    EXPECT_LT(0, tracker.progress(1).open);
    tracker.requestSent({piece(1, 2000, 5)});
    EXPECT_EQ(QVector<Tag>{1}, tracker.requestAccepted());
    EXPECT_EQ(0, tracker.progress(1).open);
}

TEST(PieceTracker, RequestSettlesAllThatItCarries)
{
    PieceTracker tracker;
    add(&tracker, 1, {piece(1, 0, 2)});
    add(&tracker, 2, {piece(1, 2, 2)});
    add(&tracker, 3, {piece(1, 4, 2)});
    tracker.requestSent({piece(1, 0, 2), piece(1, 4, 2)});
    EXPECT_EQ((QVector<Tag>{1, 3}), tracker.requestAccepted());
    EXPECT_LT(0, tracker.progress(2).open);
    EXPECT_EQ(1, tracker.pieceCount());
}

TEST(PieceTracker, AbandonedRequestTellsItsTransfersAndWhatWasTakenOfThem)
{
    PieceTracker tracker;
    add(&tracker, 1, {piece(1, 0, 1000), piece(1, 1000, 1000)});
    add(&tracker, 2, {piece(1, 5000, 2)});
    tracker.requestSent({piece(1, 0, 1000)});
    tracker.requestAccepted();
    tracker.requestSent({piece(1, 1000, 1000)});
    EXPECT_EQ(QVector<Tag>{1}, tracker.requestAbandoned());
    EXPECT_EQ(1000, tracker.progress(1).accepted);
    EXPECT_EQ(0, tracker.progress(2).accepted);
    tracker.remove({1});
    EXPECT_EQ(0, tracker.progress(1).accepted);
    EXPECT_EQ(1, tracker.pieceCount());
}

TEST(PieceTracker, OnlyWhatWasAcceptedBeforeTheConfirmationIsSure)
{
    PieceTracker tracker;
    add(&tracker, 1, {piece(1, 0, 1000), piece(1, 1000, 1000), piece(1, 2000, 5)});
    tracker.requestSent({piece(1, 0, 1000)});
    tracker.requestAccepted();
    tracker.confirm();
    tracker.requestSent({piece(1, 1000, 1000)});
    tracker.requestAccepted();
    EXPECT_EQ(2000, tracker.progress(1).accepted);
    EXPECT_EQ(1000, tracker.progress(1).confirmed);
    tracker.confirm();
    EXPECT_EQ(2000, tracker.progress(1).confirmed);
}

TEST(PieceTracker, RequestMayCarryPiecesInAnyOrder)
{
    PieceTracker tracker;
    add(&tracker, 1, {piece(1, 0, 2)});
    add(&tracker, 2, {piece(1, 2, 2)});
    add(&tracker, 3, {piece(1, 4, 2)});
    EXPECT_EQ((QVector<Tag>{1, 2}), tracker.requestSent({piece(1, 2, 2), piece(1, 0, 2)}));
    EXPECT_EQ((QVector<Tag>{1, 2}), tracker.requestAccepted());
    EXPECT_LT(0, tracker.progress(3).open);
}

TEST(PieceTracker, SameRequestSentAgainCarriesTheSame)
{
    PieceTracker tracker;
    add(&tracker, 1, {piece(1, 0, 2)});
    add(&tracker, 2, {piece(1, 0, 2)});
    EXPECT_EQ(QVector<Tag>{1}, tracker.requestSent({piece(1, 0, 2)}));
    EXPECT_EQ(QVector<Tag>{1}, tracker.requestSent({piece(1, 0, 2)}));
    EXPECT_EQ(QVector<Tag>{1}, tracker.requestAccepted());
    EXPECT_EQ(QVector<Tag>{2}, tracker.requestSent({piece(1, 0, 2)}));
}

TEST(PieceTracker, PlaceMustAgreeInEverything)
{
    PieceTracker tracker;
    add(&tracker, 1, {piece(1, 8, 1)});
    for (const FrameEntry& other :
         {piece(2, 8, 1), piece(1, 9, 1), piece(1, 8, 2), piece(1, 8, 1, true)})
        EXPECT_TRUE(tracker.requestSent({other}).isEmpty());
    EXPECT_TRUE(tracker.requestAccepted().isEmpty());
    EXPECT_LT(0, tracker.progress(1).open);
}

TEST(PieceTracker, AnswerWithoutItsRequestSettlesNothing)
{
    PieceTracker tracker;
    add(&tracker, 1, {piece(1, 0, 2)});
    EXPECT_TRUE(tracker.requestAccepted().isEmpty());
    EXPECT_TRUE(tracker.requestAbandoned().isEmpty());
    tracker.remove({1});
    EXPECT_EQ(0, tracker.pieceCount());
}

} // namespace
} // namespace test
} // namespace plc::host

#include "host/report/frame_text.h"
#include "host/transfers/result_text.h"
#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

TEST(ResultText, EveryNumberOfTheDriverHasItsMeaning)
{
    EXPECT_EQ("not finished", resultText(0));
    EXPECT_EQ("accepted", resultText(1));
    EXPECT_EQ("accepted from the remote area", resultText(100));
    EXPECT_EQ("the PLC refused the login", resultText(201));
    constexpr char kBadReply[] = "the reply is no good answer: its length or its status is wrong";
    for (int shift = 1; shift <= 12; ++shift) {
        EXPECT_EQ(kBadReply, resultText(10 + shift)) << shift;
        EXPECT_EQ("no reply arrived", resultText(40 + shift)) << shift;
        EXPECT_EQ("the reply has another size than expected", resultText(70 + shift)) << shift;
        EXPECT_EQ(resultText(110 + shift), QStringLiteral("remote area: ") + kBadReply) << shift;
        EXPECT_EQ("remote area: no reply arrived", resultText(140 + shift)) << shift;
        EXPECT_EQ("remote area: the reply has another size than expected", resultText(170 + shift))
            << shift;
    }
    EXPECT_EQ("the driver has no settings, or cannot tell what happened", resultText(200));
    for (int number : {-1, 2, 10, 23, 40, 53, 70, 83, 99, 101, 123, 183, 202})
        EXPECT_EQ("unknown to this host", resultText(number)) << number;
}

TEST(OutcomeText, OfAWriteSaysWhatIsKnown)
{
    DataPoint point;
    point.type = values::findIecType(QStringLiteral("DINT"));
    point.elements = 300;
    EXPECT_EQ("done", writeOutcomeText(point, TransferOutcome()));
    TransferOutcome refused{TransferOutcome::Refused, 12, 0x31, QString(), 0};
    EXPECT_EQ(
        "refused: result 12, the reply is no good answer: its length or its status is wrong; "
        "the PLC's status 0x0031: it may not have this address; compare it with the PLC's "
        "program",
        writeOutcomeText(point, refused));
    refused = {TransferOutcome::Refused, 72, 0, QString(), 250};
    EXPECT_EQ(
        "refused: result 72, the reply has another size than expected; the first 250 of 300 "
        "elements were taken before",
        writeOutcomeText(point, refused));
    TransferOutcome lost = TransferOutcome::lost(QStringLiteral("no reply within 1000 ms"));
    EXPECT_EQ("not known: no reply within 1000 ms; the PLC may or may not have carried it out",
              writeOutcomeText(point, lost));
    lost.taken = 250;
    EXPECT_EQ(
        "not known: no reply within 1000 ms; the PLC may or may not have carried it out; the "
        "first 250 of 300 elements were taken",
        writeOutcomeText(point, lost));
    EXPECT_EQ("not sent: station 3 is switched off",
              writeOutcomeText(
                  point, TransferOutcome::notSent(QStringLiteral("station 3 is switched off"))));
}

TEST(OutcomeText, OfAReadNeverSpeaksOfCarryingOut)
{
    EXPECT_EQ("done", readOutcomeText(TransferOutcome()));
    EXPECT_EQ(
        "refused with status 0x0031: the PLC does not give this address; compare it with the "
        "PLC's program",
        readOutcomeText({TransferOutcome::Refused, 0, 0x31, QString(), 0}));
    EXPECT_EQ(
        "refused with no status: the PLC does not give this address; compare it with the "
        "PLC's program",
        readOutcomeText({TransferOutcome::Refused, 0, -1, QString(), 0}));
    EXPECT_EQ("not read: no reply within 1000 ms",
              readOutcomeText(TransferOutcome::lost(QStringLiteral("no reply within 1000 ms"))));
    EXPECT_EQ("not sent: the link is down",
              readOutcomeText(TransferOutcome::notSent(QStringLiteral("the link is down"))));
}

SentRequest sentRequest(const char* frame)
{
    return {hex(frame), parseRequest(hex(frame)), 0, 0};
}

TEST(FrameText, TellsWhatARequestAsksFor)
{
    EXPECT_EQ("read of 1 entries: area 1 address 32 length 4",
              requestText(sentRequest("BB BB 00 00 00 14 2E 00 00 00 00 01 00 01 00 00 00 20"
                                      "00 00 00 04 00 01 12 34")));
    EXPECT_EQ("write of 1 entries: area 2 address 16 length 2 = AB CD",
              requestText(sentRequest("BB BB 00 00 00 16 3C 00 00 00 00 01 00 02 00 00 00 10"
                                      "00 00 00 02 AB CD 00 01 00 00")));
    EXPECT_EQ("write of 1 entries: area 0 bit 3 length 1 = 01",
              requestText(sentRequest("BB BB 00 00 00 15 3C 00 00 00 00 01 00 00 00 00 00 03"
                                      "00 00 00 00 01 00 01 00 00")));
    EXPECT_EQ(
        "login: identification",
        requestText(sentRequest("BB BB 00 00 00 0E 01 00 00 00 02 00 00 00 06 00 00 00 00 00")));
    EXPECT_EQ("read of 0 entries:  (malformed)",
              requestText(sentRequest("BB BB 00 00 00 02 2E 00")));
}

TEST(FrameText, TellsWhatAReplySaysAndWhatBecameOfIt)
{
    const SentRequest read = sentRequest(
        "BB BB 00 00 00 14 2E 00 00 00 00 01 00 01 00 00 00 20 00 00 00 02 00 01 12 34");
    EXPECT_EQ("reply to read, status 0: area 1 address 32 length 2 = 12 34; accepted",
              replyText(read, readReply({hex("12 34")}), {Answer::Accepted, 1, 0, false, false}));
    EXPECT_EQ("reply to read, status 5; not accepted, sent again",
              replyText(read, refusal(), {Answer::Retried, 0, 5, false, false}));
    EXPECT_EQ("reply to read, status 5; refused",
              replyText(read, refusal(), {Answer::Refused, 0, 5, false, false}));
    EXPECT_EQ(
        "reply to read, status 5; given up: result 11, the reply is no good answer: its "
        "length or its status is wrong",
        replyText(read, refusal(), {Answer::Abandoned, 11, 5, false, false}));
    EXPECT_EQ("reply to read, no status; not accepted, sent again",
              replyText(read, hex("BB BB 00 00 00 00"), {Answer::Retried, 0, -1, false, false}));
    EXPECT_EQ("reply to login: file request; result 201, the PLC refused the login",
              replyText(sentRequest("BB BB 00 00 00 11 31 00 00 0D 44 4F 57 4E 4C 4F 41 44 2E 53"
                                    "44 42 00"),
                        loginRefusal(), {Answer::LoginRefused, 201, 0, false, false}));
}

} // namespace
} // namespace test
} // namespace plc::host

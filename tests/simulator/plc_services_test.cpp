#include <gtest/gtest.h>

#include "simulator/plc_services.h"
#include "tests/simulator/frame_bytes.h"
#include "tests/support/random.h"

namespace plc::simulator {
namespace {

using test::bytes;
using test::framed;
using test::hex;

class PlcServicesTest : public testing::Test {
protected:
    PlcServicesTest()
    {
        QByteArray counting;
        for (int i = 0; i < 64; ++i)
            counting.append(char(i));
        m_memory.write(1, 0, counting);
    }

    QByteArray replyTo(const QByteArray& frame) { return m_services.reply(frame, &m_session); }

    Status statusOf(const QByteArray& frame)
    {
        const QByteArray reply = replyTo(frame);
        const Status status = replyStatus(reply);
        if (status != Status::Good) {
            EXPECT_EQ(8, reply.size());
            EXPECT_EQ("bb bb 00 00 00 02", hex(reply.left(6)));
        }
        return status;
    }

    /// A read or write request with the trailer of the session.
    Status statusOf(const char* payload)
    {
        return statusOf(framed(bytes(payload) + bytes("00 01 25 24")));
    }

    std::string memory(int area) const
    {
        return hex(m_memory.read(area, 0, area == 1 ? 64 : 0x10000));
    }

    // Area 2 holds more than a reply can carry.
    PlcMemory m_memory{{{1, 64}, {2, 0x10000}}};
    PlcServices m_services{&m_memory, "name"};
    Session m_session = test::loggedInSession();
};

class Login : public PlcServicesTest {
protected:
    Login() { m_session.login = Session::Login::None; }
};

TEST_F(Login, IdentificationReplyHas200BytesBehindItsLength)
{
    const QByteArray reply = replyTo(bytes(test::kIdentification));
    EXPECT_EQ(206, reply.size());
    EXPECT_EQ("bb bb 00 00 00 c8 00 00 6e 61 6d 65 00", hex(reply.left(13)));
    EXPECT_EQ(QByteArray(206 - 12, '\0'), reply.mid(12));
}

TEST_F(Login, LongNamesAreCutToTheReply)
{
    PlcServices services(&m_memory, QByteArray(1000, 'n'));
    const QByteArray reply = services.reply(bytes(test::kIdentification), &m_session);
    EXPECT_EQ(206, reply.size());
}

TEST_F(Login, FileReplyCarriesTheInformationBytesAt24And25)
{
    replyTo(bytes(test::kIdentification));
    const QByteArray reply = replyTo(bytes(test::kFileRequest));
    EXPECT_EQ(36, reply.size());
    EXPECT_EQ("bb bb 00 00 00 1e 00 00", hex(reply.left(8)));
    EXPECT_EQ("24 25", hex(reply.mid(24, 2)));
    EXPECT_EQ(Status::Good, statusOf("2e 00 00 00 00 00"));
}

TEST_F(Login, ReadsAndWritesNeedTheWholeLogin)
{
    EXPECT_EQ(Status::NotLoggedIn, statusOf("2e 00 00 00 00 00"));
    EXPECT_EQ(Status::NotLoggedIn, statusOf("3c 00 00 00 00 00"));
    replyTo(bytes(test::kIdentification));
    EXPECT_EQ(Status::NotLoggedIn, statusOf("2e 00 00 00 00 00"));
    replyTo(bytes(test::kFileRequest));
    EXPECT_EQ(Status::Good, statusOf("2e 00 00 00 00 00"));
}

TEST_F(Login, FileRequestNeedsTheIdentificationFirst)
{
    EXPECT_EQ(Status::NotLoggedIn, statusOf(bytes(test::kFileRequest)));
}

TEST_F(Login, NewIdentificationEndsTheOldLogin)
{
    m_session.login = Session::Login::Done;
    EXPECT_EQ(Status::Good, statusOf(bytes(test::kIdentification)));
    EXPECT_EQ(Status::NotLoggedIn, statusOf("2e 00 00 00 00 00"));
}

TEST_F(Login, RefusalIsAStatusAndNoLogin)
{
    m_services.setLoginRefused(true);
    EXPECT_EQ(Status::LoginRefused, statusOf(bytes(test::kIdentification)));
    EXPECT_EQ(Status::NotLoggedIn, statusOf(bytes(test::kFileRequest)));
    m_services.setLoginRefused(false);
    EXPECT_EQ(Status::Good, statusOf(bytes(test::kIdentification)));
}

TEST_F(Login, IdentificationMustHaveItsFixedBytes)
{
    const QByteArray good = bytes(test::kIdentification);
    for (int position = 7; position < int(good.size()); ++position) {
        QByteArray changed = good;
        changed[position] = char(changed[position] ^ 0x40);
        EXPECT_EQ(Status::BadParameter, statusOf(changed)) << position;
    }
    EXPECT_EQ(Status::TrailingBytes, statusOf(framed(good.mid(6) + '\0')));
    for (int size = 2; size < 14; ++size)
        EXPECT_EQ(Status::BadLength, statusOf(framed(good.mid(6, size)))) << size;
}

TEST_F(Login, FileRequestMustNameTheSymbolFile)
{
    replyTo(bytes(test::kIdentification));
    const QByteArray good = bytes(test::kFileRequest);
    for (int position = 10; position < int(good.size()); ++position) {
        QByteArray changed = good;
        changed[position] = char(changed[position] ^ 0x40);
        EXPECT_EQ(Status::NoSuchFile, statusOf(changed)) << position;
    }
    EXPECT_EQ(Status::TrailingBytes, statusOf(framed(good.mid(6) + '\0')));
    for (int size = 2; size < 17; ++size)
        EXPECT_EQ(Status::BadLength, statusOf(framed(good.mid(6, size)))) << size;
}

TEST_F(PlcServicesTest, ServicesThatItDoesNotKnowAreRefused)
{
    for (int service = 0; service < 256; ++service) {
        if (service == 0x01 || service == 0x2e || service == 0x31 || service == 0x3c)
            continue;
        QByteArray frame = bytes("bb bb 00 00 00 02 00 00");
        frame[6] = char(service);
        EXPECT_EQ(Status::UnknownService, statusOf(frame)) << service;
    }
}

TEST_F(PlcServicesTest, ByteBehindTheServiceMustBeZero)
{
    EXPECT_EQ(Status::BadParameter, statusOf("2e 01 00 00 00 00"));
}

TEST_F(PlcServicesTest, ReadReplyHasOneBlockForEachEntry)
{
    EXPECT_EQ("bb bb 00 00 00 0d 00 00 00 00 00 02 00 10 11 12 00 05 06",
              hex(replyTo(bytes("bb bb 00 00 00 1e 2e 00 00 00 00 02"
                                "00 01 00 00 00 10 00 00 00 03"
                                "00 01 00 00 00 05 00 00 00 02 00 01 25 24"))));
}

TEST_F(PlcServicesTest, ReadOfNothingIsGood)
{
    EXPECT_EQ("bb bb 00 00 00 06 00 00 00 00 00 00",
              hex(replyTo(bytes("bb bb 00 00 00 0a 2e 00 00 00 00 00 00 01 25 24"))));
}

TEST_F(PlcServicesTest, EntryOfLengthZeroHasItsLeadingByteOnly)
{
    EXPECT_EQ(
        "bb bb 00 00 00 07 00 00 00 00 00 01 00",
        hex(replyTo(framed(bytes("2e 00 00 00 00 01 00 01 00 00 00 40 00 00 00 00 00 01 25 24")))));
}

TEST_F(PlcServicesTest, RequestMustEndInTheInformationBytesInReverse)
{
    const QByteArray request = bytes("2e 00 00 00 00 00");
    EXPECT_EQ(Status::NotLoggedIn, statusOf(framed(request + bytes("00 01 24 25"))));
    EXPECT_EQ(Status::NotLoggedIn, statusOf(framed(request + bytes("00 01 00 00"))));
    EXPECT_EQ(Status::NotLoggedIn, statusOf(framed(request + bytes("00 01 25 00"))));
    EXPECT_EQ(Status::BadParameter, statusOf(framed(request + bytes("01 01 25 24"))));
    EXPECT_EQ(Status::BadParameter, statusOf(framed(request + bytes("00 00 25 24"))));
    EXPECT_EQ(Status::TrailingBytes, statusOf(framed(request + bytes("00 01 25 24 00"))));
}

TEST_F(PlcServicesTest, OneHundredAndFiftyEntriesAreServedAndNoMore)
{
    QByteArray request = bytes("2e 00 00 00 00 96");
    for (int i = 0; i < 150; ++i)
        request += bytes("00 01 00 00 00 3f 00 00 00 01");
    request += bytes("00 01 25 24");
    EXPECT_EQ(1510, request.size());
    const QByteArray reply = replyTo(framed(request));
    EXPECT_EQ(12 + 150 * 2, reply.size());
    EXPECT_EQ("00 00 00 00 00 96 00 3f 00 3f", hex(reply.mid(6, 10)));
    EXPECT_EQ("00 3f", hex(reply.right(2)));
    EXPECT_EQ(Status::TooManyEntries, statusOf("2e 00 00 00 00 97"));
    EXPECT_EQ(Status::TooManyEntries, statusOf("2e 00 ff ff ff ff"));
    EXPECT_EQ(Status::TooManyEntries, statusOf("3c 00 00 00 00 97"));
}

TEST_F(PlcServicesTest, ReadsOutsideTheAreasAreRefused)
{
    EXPECT_EQ(Status::UnknownArea, statusOf("2e 00 00 00 00 01 00 03 00 00 00 00 00 00 00 01"));
    EXPECT_EQ(Status::OutsideArea, statusOf("2e 00 00 00 00 01 00 01 00 00 00 40 00 00 00 01"));
    EXPECT_EQ(Status::OutsideArea, statusOf("2e 00 00 00 00 01 00 01 00 00 00 41 00 00 00 00"));
    EXPECT_EQ(Status::OutsideArea, statusOf("2e 00 00 00 00 01 00 01 ff ff ff ff 00 00 00 02"));
    EXPECT_EQ(Status::Good, statusOf("2e 00 00 00 00 01 00 01 00 00 00 3f 00 00 00 01"));
}

TEST_F(PlcServicesTest, ReplyHasAtMost65535BytesBehindItsLength)
{
    // Status, entry count and the leading byte leave 65528 bytes.
    EXPECT_EQ(Status::Good, statusOf("2e 00 00 00 00 01 00 02 00 00 00 00 00 00 ff f8"));
    EXPECT_EQ(Status::ReplyTooLarge, statusOf("2e 00 00 00 00 01 00 02 00 00 00 00 00 00 ff f9"));
    EXPECT_EQ(Status::ReplyTooLarge, statusOf("2e 00 00 00 00 01 00 02 00 00 00 00 00 01 00 02"));
    EXPECT_EQ(Status::ReplyTooLarge, statusOf("2e 00 00 00 00 01 00 02 00 00 00 00 ff ff ff ff"));
    EXPECT_EQ(Status::ReplyTooLarge, statusOf("2e 00 00 00 00 02 00 02 00 00 00 00 00 00 80 00"
                                              "00 02 00 00 00 00 00 00 7f f8"));
}

TEST_F(PlcServicesTest, WriteStoresTheBytesOfEachEntry)
{
    EXPECT_EQ("bb bb 00 00 00 02 00 00",
              hex(replyTo(framed(bytes("3c 00 00 00 00 02 00 01 00 00 00 02 00 00 00 02 ab cd"
                                       "00 02 00 00 00 00 00 00 00 01 ef 00 01 25 24")))));
    EXPECT_EQ("00 01 ab cd 04", hex(m_memory.read(1, 0, 5)));
    EXPECT_EQ("ef 00", hex(m_memory.read(2, 0, 2)));
}

TEST_F(PlcServicesTest, LengthZeroWritesOneBitOnly)
{
    // Bits 3 of the word at 4 (bytes 04 05) and 9 of the word at 6 (bytes 06 07).
    EXPECT_EQ(Status::Good, statusOf("3c 00 00 00 00 02 00 01 00 00 00 43 00 00 00 00 01"
                                     "00 01 00 00 00 69 00 00 00 00 00"));
    EXPECT_EQ("03 04 0d 04 07 08", hex(m_memory.read(1, 3, 6)));
}

TEST_F(PlcServicesTest, AnyNonzeroByteSetsTheBit)
{
    EXPECT_EQ(Status::Good, statusOf("3c 00 00 00 00 01 00 01 00 00 00 0f 00 00 00 00 80"));
    EXPECT_EQ("80 01", hex(m_memory.read(1, 0, 2)));
}

TEST_F(PlcServicesTest, WrittenBitsAreReadBackWithTheirWord)
{
    for (int bit = 0; bit < 16; ++bit) {
        m_memory.write(1, 0, bytes("00 00"));
        QByteArray write = bytes("3c 00 00 00 00 01 00 01 00 00 00 00 00 00 00 00 01 00 01 25 24");
        write[11] = char(bit);
        EXPECT_EQ(Status::Good, statusOf(framed(write)));
        const QByteArray reply =
            replyTo(framed(bytes("2e 00 00 00 00 01 00 01 00 00 00 00 00 00 00 02 00 01 25 24")));
        EXPECT_EQ(1 << bit, quint8(reply[13]) << 8 | quint8(reply[14])) << bit;
    }
}

TEST_F(PlcServicesTest, RefusedWriteStoresNothing)
{
    const std::string before = memory(1);
    const char* const good = "3c 00 00 00 00 02 00 01 00 00 00 02 00 00 00 02 ab cd ";
    const auto second = [good](const char* entry) { return std::string(good) + entry; };
    EXPECT_EQ(Status::UnknownArea, statusOf(second("00 03 00 00 00 00 00 00 00 01 ee").c_str()));
    EXPECT_EQ(Status::OutsideArea, statusOf(second("00 01 00 00 00 3f 00 00 00 02 ee ee").c_str()));
    EXPECT_EQ(Status::OutsideArea, statusOf(second("00 01 00 00 03 f0 00 00 00 00 01").c_str()));
    EXPECT_EQ(Status::UnknownArea, statusOf(second("00 03 00 00 00 00 00 00 00 00 01").c_str()));
    EXPECT_EQ(Status::BadLength, statusOf(second("00 01 00 00 00 00 00 00 00 0f ee").c_str()));
    EXPECT_EQ(Status::BadLength, statusOf(second("00 01 00 00 00 00 ff ff ff ff ee").c_str()));
    EXPECT_EQ(Status::TrailingBytes,
              statusOf(second("00 01 00 00 00 00 00 00 00 01 ee ee").c_str()));
    m_services.setWritesRefused(true);
    EXPECT_EQ(Status::WriteRefused, statusOf("3c 00 00 00 00 01 00 01 00 00 00 02 00 00 00 01 ab"));
    EXPECT_EQ(before, memory(1));
}

TEST_F(PlcServicesTest, WriteOfNothingIsGood)
{
    EXPECT_EQ(Status::Good, statusOf("3c 00 00 00 00 00"));
}

TEST_F(PlcServicesTest, TruncatedRequestsAreRefusedAtEveryByteAndStoreNothing)
{
    const std::string before = memory(1);
    for (const char* whole : {"2e 00 00 00 00 02 00 01 00 00 00 10 00 00 00 03 00 01 00 00 00 05 "
                              "00 00 00 02 00 01 25 24",
                              "3c 00 00 00 00 02 00 01 00 00 00 10 00 00 00 03 aa bb cc 00 01 00 "
                              "00 00 50 00 00 00 00 01 "
                              "00 01 25 24"}) {
        const QByteArray payload = bytes(whole);
        for (int size = 2; size < int(payload.size()); ++size)
            EXPECT_EQ(Status::BadLength, statusOf(framed(payload.left(size)))) << whole << size;
    }
    EXPECT_EQ(before, memory(1));
}

TEST_F(PlcServicesTest, RandomRequestsGetAWholeReply)
{
    plc::test::Random random(42);
    const char services[] = {0x01, 0x2e, 0x31, 0x3c, 0x55};
    int good = 0;
    for (int round = 0; round < 20000; ++round) {
        QByteArray payload(1, services[random.below(5)]);
        payload += '\0';
        const int count = random.below(4);
        payload += bytes("00 00 00");
        payload += char(count);
        for (int i = 0; i < count; ++i) {
            const int length = random.below(4);
            payload += bytes("00 01 00 00 00");
            payload += char(random.below(80));
            payload += bytes("00 00 00");
            payload += char(length);
            if (payload.at(0) == 0x3c)
                payload += QByteArray(qMax(length, 1), char(random.bits()));
        }
        payload += bytes("00 01 25 24");
        if (random.oneIn(3))
            payload[random.between(1, int(payload.size()) - 1)] = char(random.bits());
        if (random.oneIn(5))
            payload.truncate(random.between(2, int(payload.size())));
        m_session = test::loggedInSession();
        const QByteArray reply = replyTo(framed(payload));
        ASSERT_GE(reply.size(), 8);
        ASSERT_EQ(int(reply.size()) - 6, quint8(reply[4]) << 8 | quint8(reply[5]));
        ASSERT_STRNE("unknown status", statusName(replyStatus(reply)));
        good += replyStatus(reply) == Status::Good ? 1 : 0;
    }
    EXPECT_GT(good, 1000);
}

} // namespace
} // namespace plc::simulator

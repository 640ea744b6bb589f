#include "panel/http/event_stream.h"

#include <gtest/gtest.h>

namespace plc::panel {
namespace {

using Reading = EventStream::Reading;

std::shared_ptr<const QByteArray> event(int size, char content = 'x')
{
    return std::make_shared<QByteArray>(size, content);
}

class Events : public ::testing::Test {
protected:
    Reading read(std::size_t most)
    {
        char buffer[1000];
        std::size_t count = 0;
        const Reading reading = stream.read(buffer, most, &count);
        got = QByteArray(buffer, int(count));
        return reading;
    }
    void begin()
    {
        stream.begin([this] { ++wakes; });
    }

    EventStream stream{100};
    QByteArray got;
    int wakes = 0;
};

TEST_F(Events, AreReadInOrderAndInPartsOfAnySize)
{
    stream.push(event(3, 'a'));
    stream.push(event(2, 'b'));
    begin();
    EXPECT_EQ(Reading::Bytes, read(2));
    EXPECT_EQ("aa", got);
    EXPECT_EQ(Reading::Bytes, read(1000));
    EXPECT_EQ("abb", got);
    EXPECT_EQ(Reading::Nothing, read(1000));
    stream.push(event(1, 'c'));
    EXPECT_EQ(1, wakes);
    EXPECT_EQ(Reading::Bytes, read(1000));
    EXPECT_EQ("c", got);
}

TEST_F(Events, ThatWaitAreBounded)
{
    begin();
    EXPECT_TRUE(stream.push(event(60)));
    EXPECT_TRUE(stream.push(event(40)));
    EXPECT_EQ(100, stream.waiting());
    EXPECT_FALSE(stream.push(event(1)));
    EXPECT_FALSE(stream.isOpen());
    EXPECT_EQ(0, stream.waiting());
    EXPECT_EQ(Reading::CutOff, read(10));
    EXPECT_FALSE(stream.push(event(1)));
    EXPECT_EQ(3, wakes);
}

TEST_F(Events, ThatWereReadMakeRoom)
{
    begin();
    stream.push(event(100));
    read(30);
    EXPECT_EQ(70, stream.waiting());
    EXPECT_TRUE(stream.push(event(30)));
    EXPECT_FALSE(stream.push(event(1)));
}

TEST_F(Events, OfTheOpeningMayBeOfAnySize)
{
    EXPECT_TRUE(stream.push(event(5000)));
    EXPECT_TRUE(stream.push(event(5000)));
    begin();
    EXPECT_EQ(0, stream.waiting());
    EXPECT_TRUE(stream.push(event(100)));
    EXPECT_EQ(100, stream.waiting());
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(Reading::Bytes, read(1000));
    EXPECT_EQ(100, stream.waiting());
    EXPECT_EQ(Reading::Bytes, read(1000));
    EXPECT_EQ(100, got.size());
    EXPECT_EQ(0, stream.waiting());
}

TEST_F(Events, AreReadToTheirEndAfterItWasClosed)
{
    begin();
    stream.push(event(5));
    stream.close();
    EXPECT_FALSE(stream.isOpen());
    EXPECT_FALSE(stream.push(event(5)));
    EXPECT_EQ(Reading::Bytes, read(1000));
    EXPECT_EQ(Reading::End, read(1000));
}

TEST_F(Events, AreSharedAndNotKeptOnceRead)
{
    const auto shared = event(5);
    begin();
    stream.push(shared);
    EXPECT_EQ(2, shared.use_count());
    read(1000);
    EXPECT_EQ(1, shared.use_count());
    stream.push(shared);
    stream.abandon();
    EXPECT_EQ(1, shared.use_count());
}

} // namespace
} // namespace plc::panel

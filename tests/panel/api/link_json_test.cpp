#include "panel/api/link_json.h"

#include <gtest/gtest.h>

namespace plc::panel {
namespace {

QByteArray membersOf(const PlcLink& link, qint64 now)
{
    QByteArray json = "{";
    appendLinkMembers(link, now, &json);
    return json.append('}');
}

TEST(LinkJson, HasStateSinceAndReason)
{
    EXPECT_EQ(membersOf({PlcLink::Up, 5000, {}}, 9000),
              R"({"state":"up","since":5000,"reason":""})");
    EXPECT_EQ(membersOf({PlcLink::Down, 5000, QStringLiteral("no answer")}, 5000),
              R"({"state":"down","since":5000,"reason":"no answer"})");
}

TEST(LinkJson, IsNeverSinceLaterThanAClockThatWasPutBack)
{
    EXPECT_EQ(membersOf({PlcLink::Up, 5000, {}}, 1000),
              R"({"state":"up","since":1000,"reason":""})");
}

} // namespace
} // namespace plc::panel

#include "panel/http/target.h"

#include <gtest/gtest.h>

#include "panel/http/route_table.h"
#include "tests/support/stated_text.h"

namespace plc::panel {
namespace {

using test::stated;

TEST(Target, IsAPathAndAQueryDecodedApart)
{
    const auto target = parseTarget("/a%2Fb/%C3%BC?x=1%26+2&y&=z&&x=%3D");
    ASSERT_TRUE(target);
    EXPECT_EQ(QStringList({stated("a/b"), stated("\xC3\xBC")}), target->parts);
    const Query query = {qMakePair(stated("x"), stated("1& 2")), qMakePair(stated("y"), QString()),
                         qMakePair(QString(), stated("z")), qMakePair(stated("x"), stated("="))};
    EXPECT_EQ(query, target->query);
    Request request;
    request.query = query;
    EXPECT_EQ(QStringList({stated("1& 2"), stated("=")}), request.all(stated("x")));
    EXPECT_EQ(stated("1& 2"), request.first(stated("x")));
    EXPECT_FALSE(request.first(stated("z")));
}

TEST(Target, IsRefusedWhereItIsNoPathOrHoldsWhatNobodyMeans)
{
    for (const char* text :
         {"", "*", "http://localhost/", "a/b", "/%", "/%4", "/%4g", "/%00", "/%0a", "/%7f", "/%ff",
          "/%c0%af", "/?%", "/?a=%ff", "/a\x01", "/%ed%a0%80"})
        EXPECT_FALSE(parseTarget(text)) << text;
}

TEST(Target, KeepsEmptyPartsAndDotsAsTheyAre)
{
    EXPECT_EQ(QStringList({QString(), stated(".."), QString()}), parseTarget("//../")->parts);
    EXPECT_EQ(QStringList({QString()}), parseTarget("/")->parts);
}

class Routes : public ::testing::Test {
protected:
    static Route route(Method method, const char* pattern)
    {
        return {method,       pattern, Role::None,
                Route::Reads, "",      [](const Request&, const Responder&) {}};
    }
    RouteMatch find(const char* path, Method method)
    {
        return table->find(parseTarget(path)->parts, method);
    }

    Expected<RouteTable> table = RouteTable::make(
        {route(Method::Get, "/"), route(Method::Get, "/r/{name}"), route(Method::Put, "/r/{name}"),
         route(Method::Get, "/r/all"), route(Method::Get, "/r/{name}/x")});
};

TEST_F(Routes, AreFoundByTheirParts)
{
    ASSERT_TRUE(table);
    EXPECT_EQ("/", find("/", Method::Get).route->pattern);
    const RouteMatch match = find("/r/a%2Fb", Method::Put);
    EXPECT_EQ(Method::Put, match.route->method);
    EXPECT_EQ(stated("a/b"), match.parameters.value(stated("name")));
    EXPECT_EQ("/r/{name}/x", find("/r/all/x", Method::Get).route->pattern);
}

TEST_F(Routes, ThatSpellThePathOutComeFirst)
{
    EXPECT_EQ("/r/all", find("/r/all", Method::Get).route->pattern);
    EXPECT_EQ(nullptr, find("/r/all", Method::Put).route);
    EXPECT_EQ("GET, HEAD", find("/r/all", Method::Put).allowed);
    EXPECT_EQ("GET, HEAD, PUT", find("/r/other", Method::Post).allowed);
}

TEST_F(Routes, AreNoneForOtherPaths)
{
    for (const char* path : {"//", "/r", "/r/", "/r/a/", "/r//x", "/R/a", "/r/a/y"}) {
        EXPECT_EQ(nullptr, find(path, Method::Get).route) << path;
        EXPECT_EQ("", find(path, Method::Get).allowed) << path;
    }
}

} // namespace
} // namespace plc::panel

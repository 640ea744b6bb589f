#include "panel/access/access_guard.h"

#include "panel/access/request_origin.h"
#include "tests/panel/access/access_fixture.h"
#include "tests/support/route_check.h"
#include "tests/support/stated_text.h"

namespace plc::panel {
namespace {

using test::stated;

TEST(Host, IsANameOrAnAddressWithOrWithoutAPort)
{
    EXPECT_EQ("panel.example", parseHost("Panel.Example:8080")->host);
    EXPECT_EQ(8080, parseHost("Panel.Example:8080")->port);
    EXPECT_EQ("panel.example", parseHost("panel.example.")->host);
    EXPECT_EQ(-1, parseHost("panel.example")->port);
    EXPECT_EQ("::1", parseHost("[::1]:80")->host);
    for (const char* text : {"", ":80", "a:", "a:0", "a:65536", "a:+1", "a:8 0", "a b", "a/b",
                             "a@b", "[::1", "[]", "[::1]80", "[a_b]", "::1", "a:80:80"})
        EXPECT_FALSE(parseHost(text)) << text;
    EXPECT_FALSE(parseHost(QByteArray(300, 'a')));
}

TEST(HostNames, AreThoseOfThisMachineAndTheConfiguredOnes)
{
    const HostNames names({stated("Panel.Plant"), stated("192.168.0.5"), stated("dotted.plant.")});
    for (const char* host : {"localhost", "LOCALHOST:8080", "127.0.0.1:1", "[::1]", "panel.plant:9",
                             "192.168.0.5", "dotted.plant", "dotted.plant.:9"})
        EXPECT_TRUE(names.contains(host)) << host;
    for (const char* host : {"", "evil.example", "localhost.evil.example", "127.0.0.2", "panel"})
        EXPECT_FALSE(names.contains(host)) << host;
}

TEST(HostNames, AreAllNumericAddressesWhereAllAreListenedOn)
{
    for (const char* all : {"0.0.0.0", "::"}) {
        const HostNames names({stated(all)});
        EXPECT_TRUE(names.contains("192.168.0.5:8443"));
        EXPECT_TRUE(names.contains("[fe80::1]"));
        EXPECT_FALSE(names.contains("evil.example"));
        EXPECT_FALSE(names.contains("192.168.0.5.evil.example"));
        EXPECT_FALSE(names.contains("192.168.0"));
    }
}

TEST(Origin, IsTheSameWhereSchemeNameAndPortAre)
{
    EXPECT_TRUE(isSameOrigin("http://localhost:8080", "localhost:8080", false));
    EXPECT_TRUE(isSameOrigin("http://localhost", "localhost:80", false));
    EXPECT_TRUE(isSameOrigin("https://panel", "panel", true));
    EXPECT_TRUE(isSameOrigin("https://panel", "panel", false)); // a proxy has the certificate
    EXPECT_FALSE(isSameOrigin("http://panel", "panel", true));
    EXPECT_FALSE(isSameOrigin("http://localhost:8081", "localhost:8080", false));
    EXPECT_FALSE(isSameOrigin("http://127.0.0.1:8080", "localhost:8080", false));
    EXPECT_FALSE(isSameOrigin("null", "localhost", false));
    EXPECT_FALSE(isSameOrigin("http://localhost/", "localhost", false));
    EXPECT_FALSE(isSameOrigin("http://a@localhost", "localhost", false));
}

QVector<Route> table()
{
    const auto route = [](Method method, const char* pattern, Role least, Route::Kind kind) {
        return Route{method, pattern, least, kind, "a test", {}};
    };
    return {route(Method::Get, "/", Role::None, Route::Reads),
            route(Method::Get, "/api/v1/session", Role::None, Route::Reads),
            route(Method::Post, "/api/v1/session", Role::None, Route::Reads),
            route(Method::Delete, "/api/v1/session", Role::Viewer, Route::Reads),
            route(Method::Get, "/api/v1/values", Role::Viewer, Route::Reads),
            route(Method::Post, "/api/v1/writes", Role::Operator, Route::Changes),
            route(Method::Get, "/api/v1/writes/{id}", Role::Operator, Route::Reads),
            route(Method::Put, "/api/v1/recipes/{name}", Role::Engineer, Route::Changes),
            route(Method::Delete, "/api/v1/recipes/{name}", Role::Engineer, Route::Changes),
            route(Method::Get, "/api/v1/audit", Role::Engineer, Route::Reads)};
}

using Guarded = AccessTest;

TEST_F(Guarded, EveryRouteIsRefusedToWhoeverMayNot)
{
    settings.loginsOfAddress = {100000, 1};
    settings.changesOfAddress = {100000, 1};
    open();
    test::RouteCheck check(table(), access.get());
    check.run([this](Role role) { return token(role); });
}

class Deciding : public AccessTest {
protected:
    Decision decide(AccessGuard* guard, const Route& route, const QByteArray& instance = {})
    {
        RequestHead head;
        head.route = &route;
        head.host = "localhost";
        head.address = stated("127.0.0.1");
        head.instance = instance;
        return guard->decide(head);
    }
};

TEST_F(Deciding, LetsWhoeverIsOnThisMachineDoAllWithoutUsers)
{
    Expected<std::unique_ptr<Access>> opened = Access::open({});
    ASSERT_TRUE(succeeds(opened));
    AccessGuard guard(opened->get(), {}, "run", false);
    const Decision decision =
        decide(&guard, {Method::Put, "/x", Role::Engineer, Route::Changes, "", {}});
    EXPECT_FALSE(decision.refusal);
    EXPECT_EQ(stated("local"), decision.caller.user);
}

TEST_F(Deciding, RefusesChangesThatAnotherRunWasAsked)
{
    Expected<std::unique_ptr<Access>> opened = Access::open({});
    ASSERT_TRUE(succeeds(opened));
    AccessGuard guard(opened->get(), {}, "run", false);
    const Route change{Method::Post, "/x", Role::Operator, Route::Changes, "", {}};
    const Route reading{Method::Get, "/x", Role::Viewer, Route::Reads, "", {}};
    EXPECT_FALSE(decide(&guard, change, "run").refusal);
    EXPECT_FALSE(decide(&guard, change, "").refusal);
    const Decision refused = decide(&guard, change, "run before");
    ASSERT_TRUE(refused.refusal);
    EXPECT_EQ(412, refused.refusal->status);
    EXPECT_FALSE(decide(&guard, reading, "run before").refusal);
}

TEST_F(Deciding, TellsOfAnotherRunBeforeItAsksForALogin)
{
    open();
    AccessGuard guard(access.get(), {}, "run", false);
    const Route change{Method::Post, "/x", Role::Operator, Route::Changes, "", {}};
    EXPECT_EQ(412, decide(&guard, change, "run before").refusal->status)
        << "the sessions of that run are no more";
    EXPECT_EQ(401, decide(&guard, change, "run").refusal->status);
}

TEST_F(Deciding, LimitsHowOftenAnAddressChangesSomething)
{
    AccessSettings few;
    few.changesOfAddress = {2, 1500};
    Expected<std::unique_ptr<Access>> opened = Access::open(few, [this] { return now.load(); });
    ASSERT_TRUE(succeeds(opened));
    AccessGuard guard(opened->get(), {}, "run", false);
    const Route change{Method::Post, "/x", Role::Operator, Route::Changes, "", {}};
    const Route reading{Method::Get, "/x", Role::Viewer, Route::Reads, "", {}};
    EXPECT_FALSE(decide(&guard, change).refusal);
    EXPECT_FALSE(decide(&guard, change).refusal);
    const Decision refused = decide(&guard, change);
    ASSERT_TRUE(refused.refusal);
    EXPECT_EQ(429, refused.refusal->status);
    ASSERT_EQ(1, refused.refusal->headers.size());
    EXPECT_EQ("Retry-After", refused.refusal->headers[0].first);
    EXPECT_EQ("2", refused.refusal->headers[0].second);
    EXPECT_FALSE(decide(&guard, reading).refusal);
    now = 1500;
    EXPECT_FALSE(decide(&guard, change).refusal);
}

} // namespace
} // namespace plc::panel

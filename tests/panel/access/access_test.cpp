#include "panel/access/access.h"

#include "panel/access/request_token.h"
#include "panel/access/secrets.h"
#include "tests/panel/access/access_fixture.h"
#include "tests/support/stated_text.h"

namespace plc::panel {
namespace {

using test::stated;

using Login = AccessTest;
using Kind = LoginResult::Kind;

constexpr qint64 kHour = qint64(60) * 60 * 1000;

TEST_F(Login, GivesATokenThatNamesTheUserAndTheRole)
{
    open();
    const LoginResult result = login(stated("otto"), stated("otto's secret"));
    ASSERT_EQ(Kind::Done, result.kind);
    EXPECT_EQ(43, result.token.size()); // 256 bits, six a character
    const Caller caller = identify(result.token);
    EXPECT_EQ(stated("otto"), caller.user);
    EXPECT_EQ(Role::Operator, caller.role);
    EXPECT_EQ(Role::Operator,
              access->identify({}, "Bearer " + result.token, stated("127.0.0.1")).role);
    EXPECT_NE(result.token, caller.session);
    EXPECT_NE(result.token, login(stated("otto"), stated("otto's secret")).token);
}

TEST_F(Login, IsRefusedAlikeForAWrongPasswordAndAnUnknownUser)
{
    open();
    EXPECT_EQ(Kind::Wrong, login(stated("otto"), stated("otto's Secret")).kind);
    EXPECT_EQ(Kind::Wrong, login(stated("nobody"), stated("otto's secret")).kind);
    EXPECT_EQ(Kind::Wrong, login(stated("otto"), QString()).kind);
    EXPECT_EQ(0, access->sessions());
}

TEST_F(Login, IsRefusedFromTheEleventhTimeOfAnAddressAndLaterOncePerSixSeconds)
{
    open();
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(Kind::Wrong, login(QString::number(i), stated("x"), "10.0.0.1").kind);
    const LoginResult refused = login(stated("otto"), stated("otto's secret"), "10.0.0.1");
    EXPECT_EQ(Kind::TooOften, refused.kind);
    EXPECT_EQ(6000, refused.wait);
    EXPECT_EQ(Kind::Done, login(stated("otto"), stated("otto's secret"), "10.0.0.2").kind);
    now = 6000;
    EXPECT_EQ(Kind::Done, login(stated("otto"), stated("otto's secret"), "10.0.0.1").kind);
    EXPECT_EQ(Kind::TooOften, login(stated("otto"), stated("otto's secret"), "10.0.0.1").kind);
}

TEST_F(Login, IsRefusedFromTheEleventhFailureOfAUserWhateverTheAddress)
{
    open();
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(Kind::Wrong,
                  login(stated("otto"), stated("x"), QByteArray::number(i).constData()).kind);
    EXPECT_EQ(Kind::TooOften, login(stated("otto"), stated("otto's secret"), "other").kind);
    EXPECT_EQ(Kind::Done, login(stated("emma"), stated("emma's secret"), "other").kind);
    now = 10000;
    EXPECT_EQ(Kind::Done, login(stated("otto"), stated("otto's secret"), "other").kind);
    // A success begins anew.
    EXPECT_EQ(Kind::Done, login(stated("otto"), stated("otto's secret"), "other").kind);
}

TEST_F(Login, OfManyAtOnceIsRefusedBeyondTheQueue)
{
    settings.loginsOfAddress = {100, 1};
    settings.loginsOfUser = {100, 1};
    open();
    // Costs of a real one, so that the queue fills.
    putUser(stated("slow"), Role::Viewer, stated("long secret"));
    Expected<UsersFile> file = UsersFile::load(settings.users);
    ASSERT_TRUE(file->put({stated("slow"), Role::Viewer, *hashPassword(stated("long secret"))}));
    ASSERT_TRUE(file->save());
    ASSERT_TRUE(access->reload());
    std::mutex mutex;
    std::condition_variable change;
    int done = 0;
    int refused = 0;
    for (int i = 0; i < 30; ++i) {
        access->login(stated("slow"), stated("x"), stated("a"), [&](const LoginResult& result) {
            const std::lock_guard<std::mutex> lock(mutex);
            ++done;
            refused += result.kind == Kind::TooOften && result.wait == 1000 ? 1 : 0;
            change.notify_one();
        });
    }
    std::unique_lock<std::mutex> lock(mutex);
    change.wait(lock, [&done] { return done == 30; });
    // One under way and eight that wait, and what is done while the others come.
    EXPECT_GE(refused, 1);
    EXPECT_LE(refused, 21 + 1);
}

TEST_F(Login, EndsByLogout)
{
    open();
    const QByteArray first = token(Role::Viewer);
    const QByteArray second = token(Role::Viewer);
    EXPECT_TRUE(access->logout(identify(first)));
    EXPECT_EQ(Role::None, identify(first).role);
    EXPECT_EQ(Role::Viewer, identify(second).role);
    EXPECT_FALSE(access->logout(Caller()));
}

TEST_F(Login, EndsAfterAnHourWithoutUseAndAfterTwelveInAnyCase)
{
    open();
    const QByteArray idle = token(Role::Viewer);
    const QByteArray used = token(Role::Viewer);
    for (int hour = 1; hour < 24; ++hour) {
        now = hour * kHour / 2;
        EXPECT_EQ(Role::Viewer, identify(used).role) << hour;
        if (hour == 2) {
            EXPECT_EQ(Role::None, identify(idle).role);
        }
    }
    now = 12 * kHour;
    EXPECT_EQ(Role::None, identify(used).role);
    EXPECT_EQ(0, access->sessions());
}

TEST_F(Login, IsStillValidForWhoeverHoldsItAndNoLonger)
{
    open();
    const Caller caller = identify(token(Role::Viewer));
    now = kHour - 1;
    EXPECT_TRUE(access->isValid(caller));
    now = 2 * kHour - 2;
    EXPECT_TRUE(access->isValid(caller));
    now = 3 * kHour - 2;
    EXPECT_FALSE(access->isValid(caller));
    EXPECT_FALSE(access->isValid(Caller()));
}

TEST_F(Login, EndsWhenTheUserIsRemovedOrGetsAnotherRoleOrPassword)
{
    open();
    const QByteArray vera = token(Role::Viewer);
    const QByteArray otto = token(Role::Operator);
    const QByteArray emma = token(Role::Engineer);
    putUser(stated("vera"), Role::Viewer, stated("another secret"));
    Expected<UsersFile> file = UsersFile::load(settings.users);
    ASSERT_TRUE(succeeds(file));
    EXPECT_TRUE(file->remove(stated("otto")));
    ASSERT_TRUE(succeeds(file->save()));
    ASSERT_TRUE(succeeds(access->reload()));
    EXPECT_EQ(Role::None, identify(vera).role);
    EXPECT_EQ(Role::None, identify(otto).role);
    EXPECT_EQ(Role::Engineer, identify(emma).role);
    files.put(settings.users, "rubbish");
    EXPECT_FALSE(succeeds(access->reload()));
    EXPECT_EQ(Role::Engineer, identify(emma).role);
}

TEST_F(Login, IsNotNeededWhereThereAreNoUsers)
{
    Expected<std::unique_ptr<Access>> opened = Access::open({});
    ASSERT_TRUE(succeeds(opened));
    const Caller caller = (*opened)->identify({}, {}, stated("127.0.0.1"));
    EXPECT_EQ(stated("local"), caller.user);
    EXPECT_EQ(Role::Engineer, caller.role);
    EXPECT_TRUE((*opened)->isValid(caller));
}

TEST_F(Login, OfAFileWithoutUsersLetsNobodyIn)
{
    Expected<std::unique_ptr<Access>> opened = Access::open(settings);
    ASSERT_TRUE(succeeds(opened));
    EXPECT_EQ(Role::None, (*opened)->identify({}, {}, stated("127.0.0.1")).role);
}

TEST_F(Login, CookieIsForThisServerAloneAndForNoScript)
{
    open();
    EXPECT_EQ("plc_panel=ab; Path=/; HttpOnly; SameSite=Strict; Max-Age=43200",
              access->cookie("ab"));
    EXPECT_EQ("plc_panel=; Path=/; HttpOnly; SameSite=Strict; Max-Age=0", access->clearedCookie());
    EXPECT_EQ("plc_panel=ab; Path=/; HttpOnly; SameSite=Strict; Max-Age=60; Secure",
              sessionCookie("plc_panel", "ab", 60, true));
}

TEST_F(Login, ToOneServerOfAMachineLeavesThatToTheOthersAlone)
{
    EXPECT_EQ("plc_panel_8080", cookieName(8080));
    settings.cookie = cookieName(8080);
    open();
    const QByteArray own = token(Role::Operator);
    EXPECT_TRUE(access->cookie(own).startsWith("plc_panel_8080=" + own + ";"));
    EXPECT_TRUE(access->clearedCookie().startsWith("plc_panel_8080=;"));
    const QString address = stated("127.0.0.1");
    EXPECT_EQ(Role::Operator,
              access->identify("plc_panel_8081=other; plc_panel_8080=" + own, {}, address).role);
    EXPECT_EQ(Role::None, access->identify("plc_panel_8081=" + own, {}, address).role);
    EXPECT_EQ(Role::None, access->identify("plc_panel=" + own, {}, address).role);
}

TEST(RequestToken, IsTakenFromAuthorizationBeforeTheCookie)
{
    EXPECT_EQ("abc", requestToken("plc_panel", "a=1; plc_panel=abc; b=2", {}));
    EXPECT_EQ("xyz", requestToken("plc_panel", "plc_panel=abc", "bearer  xyz"));
    EXPECT_EQ("abc", requestToken("plc_panel", "plc_panel=abc", "Basic xyz"));
    EXPECT_EQ("", requestToken("plc_panel", "plc_panel=abc; plc_panel=abd", {}));
    EXPECT_EQ("", requestToken("plc_panel", "xplc_panel=abc", {}));
    EXPECT_EQ("", requestToken("plc_panel", "plc_panel=a b", {}));
    EXPECT_EQ("", requestToken("plc_panel", "plc_panel=" + QByteArray(129, 'a'), {}));
}

TEST(Sessions, AreBoundedForEachUserAndForAll)
{
    SessionLimits limits;
    limits.most = 3;
    limits.mostOfUser = 2;
    Sessions sessions(limits);
    const QByteArray first = Sessions::keyOf(sessions.open(stated("a"), Role::Viewer, 0));
    const QByteArray second = Sessions::keyOf(sessions.open(stated("a"), Role::Viewer, 1));
    sessions.use(first, 2);
    sessions.open(stated("a"), Role::Viewer,
                  3); // in the place of the one that was idle for longest
    EXPECT_FALSE(sessions.use(second, 4));
    EXPECT_TRUE(sessions.use(first, 4));
    sessions.open(stated("b"), Role::Viewer, 5);
    sessions.open(stated("c"), Role::Viewer, 6);
    EXPECT_EQ(3, sessions.size());
    EXPECT_TRUE(sessions.use(first, 7));
}

TEST(LeakyBuckets, LetABurstThroughAndThenOneEachInterval)
{
    LeakyBuckets buckets({3, 100});
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(0, buckets.wait(stated("a"), 0));
        buckets.fill(stated("a"), 0);
    }
    EXPECT_EQ(100, buckets.wait(stated("a"), 0));
    EXPECT_EQ(1, buckets.wait(stated("a"), 99));
    EXPECT_EQ(0, buckets.wait(stated("a"), 100));
    EXPECT_EQ(0, buckets.wait(stated("b"), 0));
    buckets.empty(stated("a"));
    EXPECT_EQ(0, buckets.wait(stated("a"), 0));
}

TEST(LeakyBuckets, ForgetTheNameThatMayDoMostWhereThereAreTooMany)
{
    LeakyBuckets buckets({2, 1000});
    buckets.fill(stated("busy"), 0);
    buckets.fill(stated("busy"), 0);
    for (int i = 0; i < 10000; ++i)
        buckets.fill(QString::number(i), 1);
    EXPECT_EQ(LeakyBuckets::kMostNames, buckets.size());
    EXPECT_EQ(999, buckets.wait(stated("busy"), 1));
    buckets.fill(stated("late"), 100000);
    EXPECT_EQ(1, buckets.size());
}

TEST(Listening, ElsewhereNeedsACertificateAndUsers)
{
    EXPECT_TRUE(checkListening(stated("127.0.0.1"), false, false));
    EXPECT_TRUE(checkListening(stated("::1"), false, false));
    EXPECT_TRUE(checkListening(stated("0.0.0.0"), true, true));
    EXPECT_EQ(
        "0.0.0.0: listening on other addresses than this machine's own (127.0.0.1, ::1) needs "
        "users",
        checkListening(stated("0.0.0.0"), true, false).error().text.toStdString());
    EXPECT_FALSE(checkListening(stated("::"), false, true));
    EXPECT_FALSE(checkListening(stated("192.168.1.5"), false, false));
}

TEST_F(Login, IsNotNeededByAProgramWithATokenOfItsUser)
{
    open();
    const QByteArray token = randomToken();
    const auto give = [this](const QByteArray& hash, Role role) {
        Expected<UsersFile> file = UsersFile::load(settings.users);
        User user = *file->find(stated("vera"));
        user.tokenHash = hash;
        user.role = role;
        ASSERT_TRUE(succeeds(file->put(user)));
        ASSERT_TRUE(succeeds(file->save()));
        ASSERT_TRUE(succeeds(access->reload()));
    };
    const auto caller = [this, &token] {
        return access->identify({}, "Bearer " + token, stated("10.0.0.1"));
    };
    EXPECT_EQ(Role::None, caller().role);
    give(tokenHash(token), Role::Viewer);
    now = 100 * kHour;
    const Caller program = caller();
    EXPECT_EQ(stated("vera"), program.user);
    EXPECT_EQ(Role::Viewer, program.role);
    EXPECT_TRUE(access->isValid(program));
    EXPECT_EQ(Role::None, access->identify({}, "Bearer " + tokenHash(token), {}).role);
    EXPECT_FALSE(access->logout(program)) << "there is no session";
    give(tokenHash(token), Role::Operator);
    EXPECT_FALSE(access->isValid(program)) << "its streams end";
    EXPECT_EQ(Role::Operator, caller().role);
    give({}, Role::Operator);
    EXPECT_EQ(Role::None, caller().role);
}

} // namespace
} // namespace plc::panel

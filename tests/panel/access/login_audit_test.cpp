#include "panel/access/login_audit.h"

#include <gtest/gtest.h>

namespace plc::panel {
namespace {

class LoginRecords : public ::testing::Test {
protected:
    std::optional<AuditRecord> attempt(LoginResult::Kind kind, const char* user = "anna",
                                       const char* address = "192.0.2.1")
    {
        LoginResult result;
        result.kind = kind;
        return audit.attempted(QString::fromLatin1(user), QString::fromLatin1(address), result,
                               now);
    }
    /// How many of so many failures are told one by one.
    int toldOf(int failures)
    {
        int told = 0;
        for (int i = 0; i < failures; ++i)
            told += attempt(LoginResult::Wrong) ? 1 : 0;
        return told;
    }

    LoginAudit audit;
    qint64 now = 5000;
};

TEST_F(LoginRecords, TellWhoCameFromWhere)
{
    const std::optional<AuditRecord> done = attempt(LoginResult::Done);
    ASSERT_TRUE(done);
    EXPECT_EQ("login", done->action.toStdString());
    EXPECT_EQ(AuditRecord::Outcome, done->phase);
    EXPECT_EQ("anna", done->user.toStdString());
    EXPECT_EQ("192.0.2.1", done->address.toStdString());
    EXPECT_EQ("done", done->outcome.toStdString());
    EXPECT_EQ("", done->reason.toStdString());
    const std::optional<AuditRecord> wrong = attempt(LoginResult::Wrong, "otto");
    ASSERT_TRUE(wrong);
    EXPECT_EQ("otto", wrong->user.toStdString());
    EXPECT_EQ("refused", wrong->outcome.toStdString());
    EXPECT_EQ("the user or the password is wrong", wrong->reason.toStdString());
    EXPECT_FALSE(audit.finish());
}

TEST_F(LoginRecords, OfFailuresAreSixtyAndThenOneInTenSeconds)
{
    EXPECT_EQ(60, toldOf(100));
    now += 9999;
    EXPECT_EQ(0, toldOf(1));
    now += 1;
    EXPECT_EQ(1, toldOf(10));
    EXPECT_TRUE(attempt(LoginResult::Done)) << "whoever knows a password is always told";
}

TEST_F(LoginRecords, OfAllOthersAreOneAMinuteWithTheirNumber)
{
    toldOf(60);
    EXPECT_FALSE(attempt(LoginResult::TooOften, "otto"));
    now += 30000; // three more failures are told now
    EXPECT_EQ(3, toldOf(5));
    EXPECT_FALSE(attempt(LoginResult::TooOften, "eve", "203.0.113.9"));
    now += 29999;
    EXPECT_FALSE(audit.passTime(now));
    now += 1;
    const std::optional<AuditRecord> counted = audit.passTime(now);
    ASSERT_TRUE(counted);
    EXPECT_EQ("login", counted->action.toStdString());
    EXPECT_EQ("eve", counted->user.toStdString());
    EXPECT_EQ("203.0.113.9", counted->address.toStdString());
    EXPECT_EQ("refused", counted->outcome.toStdString());
    EXPECT_EQ(
        "4 attempts that are not told one by one: 2 with a wrong user or password, 2 too "
        "often; these are user and address of the last",
        counted->reason.toStdString());
    now += 60000;
    EXPECT_FALSE(audit.passTime(now)) << "each is counted once";
    EXPECT_FALSE(attempt(LoginResult::TooOften));
    EXPECT_FALSE(audit.passTime(now));
    const std::optional<AuditRecord> last = audit.finish();
    ASSERT_TRUE(last);
    EXPECT_EQ(0, last->reason.indexOf(QStringLiteral("1 attempts")));
}

TEST_F(LoginRecords, AreShortWhateverTheUserIsCalled)
{
    const QByteArray name(4000, 'x');
    EXPECT_EQ(QString(64, QLatin1Char('x')), attempt(LoginResult::Wrong, name)->user);
}

} // namespace
} // namespace plc::panel

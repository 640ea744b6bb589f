#include <gtest/gtest.h>

#include "panel/api/api_routes.h"
#include "tests/panel/access/access_fixture.h"
#include "tests/support/gate.h"

namespace plc::panel {
namespace {

/// Logins and logouts as the routes do them, with an audit that is looked at.
class SessionRoutes : public AccessTest {
protected:
    /// The answer to a route of the session.
    Response ask(Method method, const QByteArray& body, const Caller& caller)
    {
        ApiContext context;
        context.access = access.get();
        context.logins = &logins;
        context.time = [] { return qint64(1000); };
        context.post = [](const std::function<void()>& work) { work(); };
        context.audit = [this](const AuditRecord& record, const AuditWriter::Kept& kept) {
            records.append(record);
            if (isDiskFull)
                kept(Error{QStringLiteral("the disk is full")});
            else if (isDiskSlow)
                takeLater(kept);
            else
                kept({});
        };
        std::promise<Response> answered;
        for (const Route& route : sessionRoutes(context)) {
            Request request;
            request.body = body;
            request.caller = caller;
            if (route.method == method)
                route.handler(request, [this, &answered](Response response) {
                    recordsBefore = int(records.size());
                    answered.set_value(std::move(response));
                });
        }
        std::future<Response> answer = answered.get_future();
        if (isDiskSlow) {
            handedIn.await();
            EXPECT_EQ(std::future_status::timeout, answer.wait_for(std::chrono::seconds(0)));
            later({});
        }
        return answer.get();
    }
    void takeLater(const AuditWriter::Kept& kept)
    {
        later = kept;
        handedIn.ring();
    }
    Response logIn(const QByteArray& user, const QByteArray& secret)
    {
        Caller nobody;
        nobody.address = QStringLiteral("192.0.2.7");
        return ask(Method::Post, R"({"user":")" + user + R"(","password":")" + secret + R"("})",
                   nobody);
    }
    std::string recorded(int place) const
    {
        const AuditRecord& record = records.at(place);
        return QStringLiteral("%1 %2 %3 %4 at %5")
            .arg(record.action, record.user, record.address, record.outcome)
            .arg(record.time)
            .toStdString();
    }

    LoginAudit logins;
    QVector<AuditRecord> records;
    int recordsBefore = 0; ///< Those that were there when the answer came.
    bool isDiskFull = false;
    bool isDiskSlow = false;
    test::Bell handedIn;
    AuditWriter::Kept later; ///< Of a record that a slow disk has not taken yet.
};

TEST_F(SessionRoutes, RecordALoginBeforeItIsAnswered)
{
    open();
    EXPECT_EQ(200, logIn("otto", "otto's secret").status);
    ASSERT_EQ(1, recordsBefore);
    EXPECT_EQ("login otto 192.0.2.7 done at 1000", recorded(0));
}

TEST_F(SessionRoutes, RecordALoginThatFails)
{
    open();
    EXPECT_EQ(401, logIn("otto", "a guess").status);
    EXPECT_EQ(401, logIn("nobody", "a guess").status);
    ASSERT_EQ(2, recordsBefore);
    EXPECT_EQ("login otto 192.0.2.7 refused at 1000", recorded(0));
    EXPECT_EQ("login nobody 192.0.2.7 refused at 1000", recorded(1));
    EXPECT_EQ("the user or the password is wrong", records.at(1).reason.toStdString());
}

TEST_F(SessionRoutes, CountLoginsThatComeTooOften)
{
    open();
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(401, logIn("otto", "a guess").status);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(429, logIn("otto", "a guess").status);
    EXPECT_EQ(10, records.size());
    const std::optional<AuditRecord> counted = logins.finish();
    ASSERT_TRUE(counted);
    EXPECT_EQ(0, counted->reason.indexOf(QStringLiteral("5 attempts")));
}

TEST_F(SessionRoutes, RecordALogoutOnce)
{
    open();
    const Caller caller = identify(token(Role::Operator));
    EXPECT_EQ(204, ask(Method::Delete, {}, caller).status);
    ASSERT_EQ(1, recordsBefore);
    EXPECT_EQ("logout otto 127.0.0.1 done at 1000", recorded(0));
    EXPECT_EQ(204, ask(Method::Delete, {}, caller).status);
    EXPECT_EQ(1, records.size()) << "there was no session any more";
}

TEST_F(SessionRoutes, AnswerOnceTheDiskHasTheRecord)
{
    open();
    const Caller caller = identify(token(Role::Operator));
    isDiskSlow = true;
    EXPECT_EQ(200, logIn("otto", "otto's secret").status);
    EXPECT_EQ(401, logIn("otto", "a guess").status);
    EXPECT_EQ(204, ask(Method::Delete, {}, caller).status);
    EXPECT_EQ(3, records.size());
}

TEST_F(SessionRoutes, LetPeopleLookWhereNothingCanBeRecorded)
{
    open();
    isDiskFull = true;
    EXPECT_EQ(200, logIn("vera", "vera's secret").status);
    EXPECT_EQ(1, records.size());
}

} // namespace
} // namespace plc::panel

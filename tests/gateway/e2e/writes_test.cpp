// What consumers have written.

#include "gateway/e2e/gateway_trial.h"

namespace plc::test {
namespace {

class GatewayWrites : public GatewayTrial {
protected:
    void SetUp() override
    {
        GatewayTrial::SetUp();
        if (IsSkipped())
            return;
        const QJsonObject limited{{QStringLiteral("labels"), QStringLiteral("Oven.target")},
                                  {QStringLiteral("lowest"), 0},
                                  {QStringLiteral("highest"), 250}};
        site.addPlc(
            "oven", project(),
            {{QStringLiteral("writable"), QJsonArray{limited, QStringLiteral("Oven.count")}}});
        m_consumer = watcher();
        site.start();
        m_consumer->await("DBIRTH", "oven");
    }
    virtual QByteArray project() const { return kOvenProject; }
    Watcher& consumer() { return *m_consumer; }

    /// One line of the audit and one message, which say the same.
    void expectOneOutcome(const char* id, const char* outcome, const char* reason)
    {
        const QJsonObject told = consumer().awaitOutcome(id);
        EXPECT_EQ(outcome, told[QStringLiteral("outcome")].toString());
        EXPECT_EQ(reason, told[QStringLiteral("reason")].toString());
        consumer().catchUp();
        int messages = 0;
        for (const QJsonObject& message : consumer().messages()) {
            messages += Watcher::outcomeOf(message)[QStringLiteral("id")].toString() ==
                        QString::fromUtf8(id);
        }
        EXPECT_EQ(1, messages);
        int lines = 0;
        for (const QJsonObject& line : site.audit()) {
            if (line[QStringLiteral("id")].toString() != QString::fromUtf8(id))
                continue;
            ++lines;
            EXPECT_EQ(outcome, line[QStringLiteral("outcome")].toString());
            EXPECT_EQ(reason, line[QStringLiteral("reason")].toString());
            EXPECT_EQ(told[QStringLiteral("time")], line[QStringLiteral("time")]);
        }
        EXPECT_EQ(1, lines);
    }

private:
    std::unique_ptr<Watcher> m_consumer;
};

TEST_P(GatewayWrites, AreCarriedOutAndTold)
{
    consumer().command("oven", "Oven/target", "Int16", 250, "w1");
    expectOneOutcome("w1", "done", "");
    EXPECT_EQ("250", site.plc("oven").command(QStringLiteral("get Oven.target")));
    consumer().command("oven", "Oven/count", "Int32", -5, "w2");
    expectOneOutcome("w2", "done", "");
    EXPECT_EQ("-5", site.plc("oven").command(QStringLiteral("get Oven.count")));
    ASSERT_EQ(2, site.audit().size());
    ASSERT_EQ(2, site.auditedRequests().size());
    EXPECT_EQ("w1", site.auditedRequests().first()[QStringLiteral("id")].toString());
    const QJsonObject line = site.audit().first();
    EXPECT_EQ("Oven.target", line[QStringLiteral("label")].toString());
    EXPECT_EQ("250", line[QStringLiteral("value")].toString());
    EXPECT_EQ("oven", line[QStringLiteral("device")].toString());
    EXPECT_EQ("spBv1.0/works/DCMD/hall/oven", line[QStringLiteral("topic")].toString());
}

TEST_P(GatewayWrites, AreRefusedWhereNothingAllowsThem)
{
    consumer().command("oven", "Oven/fixed", "Int16", 1, "w1");
    expectOneOutcome("w1", "refused", "the configuration does not list it as writable");
    EXPECT_EQ("0", site.plc("oven").command(QStringLiteral("get Oven.fixed")));
    consumer().command("oven", "Oven/target", "Int16", 251, "w2");
    expectOneOutcome("w2", "refused", "out of the limits 0..250");
    consumer().command("oven", "Oven/target", "Int16", -1, "w3");
    expectOneOutcome("w3", "refused", "out of the limits 0..250");
    EXPECT_EQ("0", site.plc("oven").command(QStringLiteral("get Oven.target")));
}

TEST_P(GatewayWrites, ThatThePlcRefusesAreToldSo)
{
    site.plc("oven").command(QStringLiteral("fail-writes on"));
    consumer().command("oven", "Oven/count", "Int32", 5, "w1");
    const QJsonObject told = consumer().awaitOutcome("w1");
    EXPECT_EQ("refused", told[QStringLiteral("outcome")].toString());
    EXPECT_EQ("0", site.plc("oven").command(QStringLiteral("get Oven.count")));
}

class GatewayWritesToALostPlc : public GatewayWrites {
protected:
    QByteArray project() const override { return ovenWhoseLossIsNoticedSoon(); }
};

TEST_P(GatewayWritesToALostPlc, AreNotKept)
{
    site.plc("oven").command(QStringLiteral("offline"));
    consumer().await("DDEATH", "oven");
    consumer().command("oven", "Oven/count", "Int32", 5, "w1");
    const QJsonObject told = consumer().awaitOutcome("w1");
    EXPECT_EQ("refused", told[QStringLiteral("outcome")].toString());
    site.plc("oven").command(QStringLiteral("online"));
    consumer().await("DBIRTH", "oven");
    ASSERT_TRUE(site.plc("oven").isSeen());
    EXPECT_EQ("0", site.plc("oven").command(QStringLiteral("get Oven.count")));
    EXPECT_EQ(1, site.audit().size());
}

TEST_P(GatewayWritesToALostPlc, AreToldAsUnknownWhereTheReplyIsLost)
{
    site.plc("oven").command(QStringLiteral("drop 1000"));
    consumer().command("oven", "Oven/count", "Int32", 5, "w1");
    const QJsonObject told = consumer().awaitOutcome("w1");
    // Whether it was sent before the link was given up for a lost reply to a read is chance.
    const QString outcome = told[QStringLiteral("outcome")].toString();
    const QString value = site.plc("oven").command(QStringLiteral("get Oven.count"));
    EXPECT_EQ(value == QLatin1String("5") ? "unknown" : "refused", outcome);
    EXPECT_EQ(1, site.audit().size());
}

INSTANTIATE_TEST_SUITE_P(Mqtt, GatewayWrites, bothVersions(), versionName);
INSTANTIATE_TEST_SUITE_P(Mqtt, GatewayWritesToALostPlc, bothVersions(), versionName);

} // namespace
} // namespace plc::test

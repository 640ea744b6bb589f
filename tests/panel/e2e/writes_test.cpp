#include <gmock/gmock.h>

#include "panel/e2e/panel_site.h"

namespace plc::test {
namespace {

using testing::HasSubstr;

class PanelWrites : public PanelSite {
protected:
    QByteArray order(const char* id, const char* label, const char* content)
    {
        return QByteArray("{\"id\":\"") + id + "\",\"plc\":\"tank\",\"label\":\"" + label +
               "\",\"value\":" + content + "}";
    }
    QJsonObject write(const char* id, const char* label, const char* content)
    {
        return QJsonDocument::fromJson(post("writes", order(id, label, content)).body).object();
    }
    std::string outcome(const QJsonObject& record)
    {
        return record.value(QLatin1String("outcome")).toString().toStdString();
    }
    std::string reason(const QJsonObject& record)
    {
        return record.value(QLatin1String("reason")).toString().toStdString();
    }
    QString audit() { return QString::fromUtf8(readFile(path("audit"))); }
};

TEST_F(PanelWrites, AreDoneInThePlcAndAuditedBeforeAndAfter)
{
    plc->set("T.set", QStringLiteral("3"));
    start();
    ASSERT_TRUE(comesToShow("T.set", "3"));
    const QJsonObject record = write("w1", "T.set", "-12");
    EXPECT_EQ("done", outcome(record));
    EXPECT_EQ("3", text(record.value(QLatin1String("old"))));
    EXPECT_EQ("-12", plc->command(QStringLiteral("get T.set")).toStdString());
    EXPECT_EQ(1, audit().count(QLatin1String("\"phase\":\"requested\"")));
    EXPECT_EQ(1, audit().count(QLatin1String("\"outcome\":\"done\"")));
    EXPECT_EQ("done", write("w2", "T.total", "\"18446744073709551615\"")
                          .value(QLatin1String("outcome"))
                          .toString()
                          .toStdString());
    EXPECT_EQ("18446744073709551615", plc->command(QStringLiteral("get T.total")).toStdString());
}

TEST_F(PanelWrites, AreAuditedWhereTheSessionSaysSo)
{
    start();
    EXPECT_TRUE(get("session").value(QLatin1String("audit")).toBool());
    stop();
    settings.remove(QStringLiteral("audit"));
    start();
    const QJsonValue none = get("session").value(QLatin1String("audit"));
    EXPECT_TRUE(none.isBool());
    EXPECT_FALSE(none.toBool());
}

TEST_F(PanelWrites, OfTheSameIdAreSentOnce)
{
    start();
    const QByteArray first = post("writes", order("same", "T.set", "5")).body;
    plc->set("T.set", QStringLiteral("9"));
    EXPECT_EQ(first.toStdString(), post("writes", order("same", "T.set", "5")).body.toStdString());
    EXPECT_EQ("9", plc->command(QStringLiteral("get T.set")).toStdString());
    EXPECT_EQ(409, post("writes", order("same", "T.set", "6")).status);
    EXPECT_EQ(1, audit().count(QLatin1String("\"phase\":\"requested\"")));
    EXPECT_EQ("done", outcome(get("writes/same")));
    EXPECT_EQ(404, HttpConnection(port).get("/api/v1/writes/other").status);
}

TEST_F(PanelWrites, ThatThePlcRefusesTellNumberAndWords)
{
    start();
    plc->command(QStringLiteral("fail-writes on"));
    const QJsonObject record = write("w1", "T.set", "1");
    EXPECT_EQ("refused", outcome(record));
    EXPECT_FALSE(reason(record).empty());
    EXPECT_GT(record.value(QLatin1String("status")).toInt(), 0);
}

TEST_F(PanelWrites, WhoseAnswerIsLostAreNotKnown)
{
    noticeLossesSoon();
    start();
    QJsonObject record;
    // The reply to a read may be lost before, and the write is not sent then.
    for (int i = 0; i < 20 && outcome(record) != "unknown"; ++i) {
        ASSERT_TRUE(comesTrue([this] { return quality("T.level") == "good"; }));
        plc->command(QStringLiteral("delay 1500"));
        record = write(qPrintable(QStringLiteral("w%1").arg(i)), "T.set", "1");
        plc->command(QStringLiteral("delay 0"));
    }
    EXPECT_EQ("unknown", outcome(record));
    EXPECT_FALSE(reason(record).empty());
    EXPECT_EQ(1, audit().count(QLatin1String("\"outcome\":\"unknown\"")));
}

TEST_F(PanelWrites, ToAPlcThatIsAwayAreNotSent)
{
    noticeLossesSoon();
    start();
    plc->kill();
    ASSERT_TRUE(comesTrue([this] { return quality("T.level") == "stale"; }));
    const QJsonObject record = write("w1", "T.set", "1");
    EXPECT_EQ("notSent", outcome(record));
    EXPECT_THAT(reason(record), HasSubstr("the link is down"));
}

TEST_F(PanelWrites, BeyondTheConfigurationAreNotSent)
{
    device[QStringLiteral("writable")] =
        QJsonArray{QJsonObject{{QStringLiteral("labels"), QStringLiteral("T.set")},
                               {QStringLiteral("lowest"), 0},
                               {QStringLiteral("highest"), 10}}};
    start();
    EXPECT_EQ("done", outcome(write("w1", "T.set", "10")));
    EXPECT_EQ("out of the limits 0..10", reason(write("w2", "T.set", "11")));
    EXPECT_EQ("the configuration does not list it as writable",
              reason(write("w3", "T.level", "1")));
    EXPECT_EQ("10", plc->command(QStringLiteral("get T.set")).toStdString());
    EXPECT_EQ(2, audit().count(QLatin1String("\"outcome\":\"notSent\"")));
}

TEST_F(PanelWrites, ThatMakeNoSenseAreToldSo)
{
    start();
    EXPECT_EQ(400, post("writes", order("w1", "T.set", "40000")).status);
    EXPECT_EQ(400, post("writes", order("w1", "T.set", "[1]")).status);
    EXPECT_EQ(400, post("writes", order("w1", "T.nope", "1")).status);
    EXPECT_EQ(400, post("writes", order("", "T.set", "1")).status);
    EXPECT_EQ(400, post("writes", "{").status);
    EXPECT_EQ("done", outcome(write("w1", "T.set", "1"))) << "the id is still free";
}

TEST_F(PanelWrites, ThatABrowserRepeatsToAnotherRunAreNotCarriedOutTwice)
{
    start();
    const QByteArray run = get("session").value(QLatin1String("instance")).toString().toLatin1();
    ASSERT_EQ(32, run.size());
    EXPECT_EQ(200, postTo(run, "writes", order("w1", "T.set", "5")).status);
    stop();
    plc->set("T.set", QStringLiteral("6"));
    start();
    EXPECT_EQ(412, postTo(run, "writes", order("w1", "T.set", "5")).status);
    EXPECT_EQ("6", plc->command(QStringLiteral("get T.set")).toStdString());
}

TEST_F(PanelWrites, AreRefusedByAPanelThatIsReadOnly)
{
    settings[QStringLiteral("readOnly")] = true;
    start();
    EXPECT_EQ(403, post("writes", order("w1", "T.set", "1")).status);
}

} // namespace
} // namespace plc::test

#include <gmock/gmock.h>

#include <QtCore/QElapsedTimer>

#include "panel/e2e/panel_site.h"

namespace plc::test {
namespace {

class PanelValues : public PanelSite {
protected:
    QJsonObject link()
    {
        return get("plcs")
            .value(QLatin1String("plcs"))
            .toArray()
            .at(0)
            .toObject()
            .value(QLatin1String("link"))
            .toObject();
    }
    std::string linkState()
    {
        return link().value(QLatin1String("state")).toString().toStdString();
    }
};

TEST_F(PanelValues, AreThoseOfThePlc)
{
    plc->set("T.level", QStringLiteral("1234"));
    plc->set("T.total", QStringLiteral("18446744073709551615"));
    plc->set("T.temperature", QStringLiteral("-1.5"));
    start();
    EXPECT_TRUE(comesToShow("T.level", "1234"));
    EXPECT_TRUE(comesToShow("T.total", "\"18446744073709551615\""));
    EXPECT_TRUE(comesToShow("T.temperature", "-1.5"));
    plc->set("T.level", QStringLiteral("65535"));
    EXPECT_TRUE(comesToShow("T.level", "65535"));
    EXPECT_EQ("mm", value("T.level").value(QLatin1String("unit")).toString().toStdString());
}

TEST_F(PanelValues, AreMetricsWhileTheyAreKnown)
{
    noticeLossesSoon();
    plc->set("T.level", QStringLiteral("1234"));
    start();
    ASSERT_TRUE(comesToShow("T.level", "1234"));
    const auto metrics = [this] { return HttpConnection(port).get("/metrics").body; };
    const QByteArray known = "{source=\"tank\",label=\"T.level\",unit=\"mm\"} ";
    EXPECT_TRUE(metrics().contains("\nplc_value" + known + "1234\n")) << metrics().toStdString();
    EXPECT_TRUE(metrics().contains("\nplc_good" + known + "1\n"));
    EXPECT_TRUE(metrics().contains("\nplc_up{source=\"tank\"} 1\n"));
    plc->kill();
    EXPECT_TRUE(comesTrue([&] { return metrics().contains("\nplc_good" + known + "0\n"); }));
    EXPECT_FALSE(metrics().contains("\nplc_value" + known));
    EXPECT_TRUE(metrics().contains("\nplc_up{source=\"tank\"} 0\n"));
}

TEST_F(PanelValues, AreCountedInTheStatistics)
{
    start();
    ASSERT_TRUE(comesToShow("T.level", "0"));
    const QJsonObject statistics = get("statistics");
    const QJsonObject tank = statistics.value(QLatin1String("plcs")).toArray().at(0).toObject();
    EXPECT_EQ("tank", tank.value(QLatin1String("name")).toString().toStdString());
    EXPECT_LE(1, tank.value(QLatin1String("accepted")).toInt());
    EXPECT_EQ(0, tank.value(QLatin1String("refused")).toInt());
    EXPECT_LT(1000000, statistics.value(QLatin1String("memory")).toDouble());
}

TEST_F(PanelValues, ThatAreNotReadAllTheTimeAreReadOnce)
{
    plc->set("T.aside", QStringLiteral("-7"));
    plc->set("T.name", QStringLiteral("'north'"));
    start();
    EXPECT_EQ("-7", shown("T.aside"));
    EXPECT_EQ("\"north\"", shown("T.name"));
    EXPECT_EQ("good", quality("T.aside"));
}

TEST_F(PanelValues, ComeToAStreamAsTheyChange)
{
    plc->set("T.level", QStringLiteral("10"));
    start();
    const auto events = stream(subscribe("T.set,T.level"));
    EXPECT_TRUE(events->waitFor("[1,10,\"g\","));
    plc->set("T.level", QStringLiteral("11"));
    EXPECT_TRUE(events->waitFor("\"rows\":[[1,11,\"g\","));
}

TEST_F(PanelValues, AreAllToldAgainToAStreamThatBeginsAnew)
{
    start();
    const QByteArray id = subscribe("T.level");
    stream(id).reset();
    plc->set("T.level", QStringLiteral("77"));
    ASSERT_TRUE(comesToShow("T.level", "77"));
    EXPECT_TRUE(stream(id)->waitFor("\"rows\":[[0,77,\"g\","));
}

TEST_F(PanelValues, OfALostLinkAreStaleAndComeBack)
{
    noticeLossesSoon();
    plc->set("T.level", QStringLiteral("5"));
    start();
    ASSERT_TRUE(comesToShow("T.level", "5"));
    const auto events = stream(subscribe("T.level"));
    plc->kill();
    EXPECT_TRUE(events->waitFor("\"state\":\"down\""));
    EXPECT_TRUE(events->waitFor("[0,5,\"s\","));
    EXPECT_EQ("down", linkState());
    EXPECT_FALSE(link().value(QLatin1String("reason")).toString().isEmpty());
    // What was read last is still shown, as what it is.
    EXPECT_EQ("stale", quality("T.level"));
    EXPECT_EQ("5", shown("T.level"));
    // What is not read all the time is not known at all.
    EXPECT_EQ("null", shown("T.aside"));
    EXPECT_EQ("stale", quality("T.aside"));
    ASSERT_TRUE(plc->start());
    plc->set("T.level", QStringLiteral("6"));
    EXPECT_TRUE(events->waitFor("[0,6,\"g\","));
    EXPECT_EQ("up", linkState());
}

TEST_F(PanelValues, ThatThePlcRefusesAreBadAndOthersAreRead)
{
    start();
    const auto events = stream(subscribe("T.missing,T.level"));
    EXPECT_TRUE(events->waitFor("[0,null,\"b\",null]"));
    plc->set("T.level", QStringLiteral("42"));
    EXPECT_TRUE(events->waitFor("[1,42,\"g\","));
}

TEST_F(PanelValues, OfManySubscribersCauseTheRequestsOfOne)
{
    constexpr int kCycle = 1000;
    device[QStringLiteral("cycle")] = kCycle;
    start();
    const auto first = stream(subscribe("T.aside,T.level"));
    ASSERT_TRUE(first->waitFor("[0,0,\"g\","));
    // A value of another area is read by the same request.
    std::vector<std::unique_ptr<HttpConnection>> streams;
    for (int i = 0; i < 30; ++i)
        streams.push_back(stream(subscribe(i % 2 ? "T.aside,T.level" : "T.level")));
    QElapsedTimer clock;
    clock.start();
    const qint64 before = plc->requests();
    ASSERT_TRUE(comesTrue([&] { return plc->requests() >= before + 4; }));
    const qint64 requests = plc->requests() - before;
    // A pass at each end lies across.
    EXPECT_LE(requests, clock.elapsed() / kCycle + 2);
}

TEST_F(PanelValues, WithLabelsThatMakeNoSenseAreToldSo)
{
    start();
    const HttpAnswer answer = post(
        "subscriptions", R"({"values":[{"plc":"tank","label":"T.nope"},{"plc":"x","label":"y"}]})");
    EXPECT_EQ(201, answer.status);
    EXPECT_THAT(answer.body.toStdString(), testing::HasSubstr("has no"));
    EXPECT_THAT(answer.body.toStdString(), testing::HasSubstr("there is no such PLC"));
    EXPECT_EQ(400, HttpConnection(port).get("/api/v1/events?plc=tank&label=T.nope").status);
    EXPECT_EQ(404, HttpConnection(port).get("/api/v1/values?plc=x&label=T.level").status);
}

TEST_F(PanelValues, HaveTheirSymbols)
{
    start();
    const QJsonObject scopes = get("symbols?plc=tank");
    EXPECT_EQ(1, scopes.value(QLatin1String("symbols")).toArray().size());
    const QJsonArray found =
        get("symbols?plc=tank&search=TANK%20lev").value(QLatin1String("symbols")).toArray();
    ASSERT_EQ(1, found.size());
    EXPECT_EQ("T.level",
              found.at(0).toObject().value(QLatin1String("label")).toString().toStdString());
}

} // namespace
} // namespace plc::test

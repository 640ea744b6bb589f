#include <gmock/gmock.h>

#include "panel/e2e/panel_site.h"

namespace plc::test {
namespace {

class PanelHistory : public PanelSite {
protected:
    QByteArray range(qint64 from, qint64 to)
    {
        return "plc=tank&label=T.level&from=" + QByteArray::number(from) +
               "&to=" + QByteArray::number(to);
    }
    QJsonObject series(qint64 from, const QByteArray& more = {})
    {
        const qint64 now = QDateTime::currentMSecsSinceEpoch();
        return get("history?" + range(from, now + 1) + more)
            .value(QLatin1String("series"))
            .toArray()
            .at(0)
            .toObject();
    }
    /// Without the gap that stands behind what is on the disk already.
    std::string list(const QJsonObject& object, const char* key)
    {
        QJsonArray values = object.value(QLatin1String(key)).toArray();
        const QJsonArray qualities = object.value(QLatin1String("qualities")).toArray();
        if (qualities.last().toString() == QLatin1String("-") && qualities.size() > 1)
            values.removeLast();
        return text(values);
    }
};

TEST_F(PanelHistory, HasEachValueThatWasShown)
{
    const qint64 begin = QDateTime::currentMSecsSinceEpoch();
    plc->set("T.level", QStringLiteral("1"));
    start();
    ASSERT_TRUE(comesToShow("T.level", "1"));
    for (int i = 2; i <= 5; ++i) {
        plc->set("T.level", QString::number(i));
        ASSERT_TRUE(comesToShow("T.level", std::to_string(i)));
    }
    // First that nothing is known, as the panel began.
    const auto isThere = [&] { return list(series(begin), "values") == "[null,null,1,2,3,4,5]"; };
    EXPECT_TRUE(comesTrue(isThere)) << list(series(begin), "values");
    EXPECT_EQ(R"(["-","s","g","g","g","g","g"])", list(series(begin), "qualities"));
    const QByteArray csv =
        HttpConnection(port)
            .get("/api/v1/history.csv?" + range(begin, QDateTime::currentMSecsSinceEpoch()))
            .body;
    EXPECT_THAT(csv.toStdString(), testing::HasSubstr(",tank,T.level,5,mm,good\r\n"));
    const QJsonObject few = series(begin, "&points=2");
    EXPECT_EQ("aggregates", few.value(QLatin1String("kind")).toString().toStdString());
    EXPECT_EQ(2, few.value(QLatin1String("coverage")).toArray().size());
}

TEST_F(PanelHistory, ShowsLostLinksAndAnEndOfThePanel)
{
    const qint64 begin = QDateTime::currentMSecsSinceEpoch();
    plc->set("T.level", QStringLiteral("8"));
    start();
    ASSERT_TRUE(comesToShow("T.level", "8"));
    plc->kill();
    ASSERT_TRUE(comesTrue([this] { return quality("T.level") == "stale"; }));
    ASSERT_TRUE(comesTrue([&] {
        return list(series(begin), "values").find(",8,8]") != std::string::npos;
    })) << list(series(begin), "values");
    stop();
    ASSERT_TRUE(plc->start());
    plc->set("T.level", QStringLiteral("9"));
    start();
    ASSERT_TRUE(comesToShow("T.level", "9"));
    // Known; stale; the panel ends, begins, and knows nothing yet; known.
    ASSERT_TRUE(comesTrue([&] {
        return list(series(begin), "qualities") == R"(["-","s","g","s","-","s","g"])";
    })) << list(series(begin), "qualities")
        << list(series(begin), "values");
}

} // namespace
} // namespace plc::test

#include <gmock/gmock.h>

#include <QtCore/QFile>

#include <csignal>

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
    /// Ends with the gap that stands behind what is on the disk already.
    std::string list(const QJsonObject& object, const char* key)
    {
        return text(object.value(QLatin1String(key)));
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
    const auto isThere = [&] {
        return list(series(begin), "values") == "[null,null,1,2,3,4,5,null]";
    };
    EXPECT_TRUE(comesTrue(isThere)) << list(series(begin), "values");
    EXPECT_EQ(R"(["-","s","g","g","g","g","g","-"])", list(series(begin), "qualities"));
    const QByteArray csv =
        HttpConnection(port)
            .get("/api/v1/history.csv?" + range(begin, QDateTime::currentMSecsSinceEpoch()))
            .body;
    EXPECT_THAT(csv.toStdString(), testing::HasSubstr(",tank,T.level,5,mm,good\r\n"));
    const QJsonObject few = series(begin, "&points=2");
    EXPECT_EQ("aggregates", few.value(QLatin1String("kind")).toString().toStdString());
    EXPECT_EQ(2, few.value(QLatin1String("coverage")).toArray().size());
}

TEST_F(PanelHistory, TellsValuesThatAreNotRecordedFromThoseThatThereAreNot)
{
    start();
    ASSERT_TRUE(comesTrue([&] { return !series(0).contains(QLatin1String("recorded")); }));
    const QByteArray span = "&from=1&to=2";
    const QJsonObject aside = get("history?plc=tank&label=T.aside" + span)
                                  .value(QLatin1String("series"))
                                  .toArray()
                                  .at(0)
                                  .toObject();
    EXPECT_EQ("false", text(aside.value(QLatin1String("recorded"))));
    const QJsonObject wrong = get("history.csv?plc=tank&label=T.level&label=T.levl" + span);
    EXPECT_EQ(R"(["T.levl"])", text(wrong.value(QLatin1String("labels"))));
    EXPECT_EQ(404, HttpConnection(port).get("/api/v1/history?plc=tnk&label=T.level" + span).status);
}

TEST_F(PanelHistory, GoesOnInANewFileWhereItsOwnWasRemoved)
{
    plc->set("T.level", QStringLiteral("3"));
    start();
    ASSERT_TRUE(comesToShow("T.level", "3"));
    ASSERT_TRUE(comesTrue([&] { return list(series(0), "values") == "[null,null,3,null]"; }));
    ASSERT_TRUE(QFile::remove(path("record")));
    // With nothing of what the former one has of before.
    EXPECT_TRUE(comesTrue([&] { return list(series(0), "values") == "[null,3,null]"; }))
        << list(series(0), "values");
    const QJsonObject recorder = get("statistics").value(QLatin1String("recorder")).toObject();
    EXPECT_EQ("1", text(recorder.value(QLatin1String("changedFiles"))));
    EXPECT_EQ("\"\"", text(recorder.value(QLatin1String("error"))));
    ASSERT_EQ(0, ::kill(pid_t(panel().pid()), SIGTERM));
    EXPECT_EQ(0, panel().exitCode());
    EXPECT_THAT(panel().errors().toStdString(),
                testing::HasSubstr("it goes on in another file of its name"));
}

TEST_F(PanelHistory, ShowsLostLinksAndAnEndOfThePanel)
{
    noticeLossesSoon();
    const qint64 begin = QDateTime::currentMSecsSinceEpoch();
    plc->set("T.level", QStringLiteral("8"));
    start();
    ASSERT_TRUE(comesToShow("T.level", "8"));
    plc->kill();
    ASSERT_TRUE(comesTrue([this] { return quality("T.level") == "stale"; }));
    ASSERT_TRUE(comesTrue([&] {
        return list(series(begin), "values").find(",8,8,null]") != std::string::npos;
    })) << list(series(begin), "values");
    stop();
    ASSERT_TRUE(plc->start());
    plc->set("T.level", QStringLiteral("9"));
    start();
    ASSERT_TRUE(comesToShow("T.level", "9"));
    // Known; stale; the panel ends, begins, and knows nothing yet; known.
    ASSERT_TRUE(comesTrue([&] {
        return list(series(begin), "qualities") == R"(["-","s","g","s","-","s","g","-"])";
    })) << list(series(begin), "qualities")
        << list(series(begin), "values");
}

} // namespace
} // namespace plc::test

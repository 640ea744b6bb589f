#include "panel/api/history_queries.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstring>
#include <future>

#include "recorder/recorder.h"
#include "tests/support/file_test.h"

namespace plc::panel {
namespace test {
namespace {

using recorder::Change;

class HistoryQueriesTest : public plc::test::FileTest {
protected:
    void record(const char* label, const char* type, const QVector<recorder::Sample>& samples)
    {
        auto recorder = recorder::Recorder::open(file, recorder::Limits(), 0);
        ASSERT_TRUE(succeeds(recorder)) << error.toStdString();
        recorder::SeriesDescription series;
        series.source = QStringLiteral("press");
        series.label = QString::fromUtf8(label);
        series.type = values::findIecType(QString::fromLatin1(type));
        const int id = (*recorder)->series(series);
        QVector<Change> changes;
        for (const recorder::Sample& sample : samples)
            changes.append({id, sample});
        ASSERT_TRUE(succeeds((*recorder)->append(changes, kEnd)));
    }
    /// A run of its own, of one sample and five seconds.
    void recordRun(qint64 begin, double deadband, const char* unit, qint16 value)
    {
        auto recorder = recorder::Recorder::open(file, recorder::Limits(), begin);
        ASSERT_TRUE(succeeds(recorder)) << error.toStdString();
        recorder::SeriesDescription series;
        series.source = QStringLiteral("press");
        series.label = QStringLiteral("T.level");
        series.type = values::findIecType(QStringLiteral("INT"));
        series.deadband = deadband;
        series.unit = QString::fromUtf8(unit);
        const Change change{(*recorder)->series(series), good(begin, value)};
        ASSERT_TRUE(succeeds((*recorder)->append({change}, begin)));
        ASSERT_TRUE(succeeds((*recorder)->end(begin + 5000)));
    }
    template <typename Number>
    static recorder::Sample good(qint64 time, Number number)
    {
        QByteArray bytes(int(sizeof number), '\0');
        std::memcpy(bytes.data(), &number, sizeof number);
        return {time, recorder::Quality::Good, bytes};
    }
    static HistoryQuestion question(const QStringList& labels, int points = 100)
    {
        return {QStringLiteral("press"), labels, 0, kEnd, points};
    }
    Response ask(void (HistoryQueries::*query)(const HistoryQuestion&, const Responder&),
                 const HistoryQuestion& question)
    {
        HistoryQueries queries(file, limits);
        std::promise<Response> promise;
        (queries.*query)(question, [&](const Response& response) { promise.set_value(response); });
        return promise.get_future().get();
    }
    std::string refusal(void (HistoryQueries::*query)(const HistoryQuestion&, const Responder&),
                        const HistoryQuestion& question)
    {
        const Response response = ask(query, question);
        EXPECT_EQ(400, response.status);
        return response.body.toStdString();
    }
    std::string series(const HistoryQuestion& question)
    {
        return ask(&HistoryQueries::readSeries, question).body.toStdString();
    }

    static constexpr qint64 kEnd = 3000;
    const QString file = path("a.sqlite");
    HistoryLimits limits;
};

TEST_F(HistoryQueriesTest, ChangesBeginWithWhatHeldBefore)
{
    record("T.level", "INT", {good(0, qint16(1)), {1000, recorder::Quality::Bad, {}}});
    HistoryQuestion later = question({QStringLiteral("T.level"), QStringLiteral("T.other")});
    later.from = 500;
    const Response response = ask(&HistoryQueries::readSeries, later);
    EXPECT_EQ(200, response.status);
    EXPECT_EQ(R"({"from":500,"to":3000,"series":[)"
              R"({"plc":"press","label":"T.level","type":"INT","unit":"","kind":"changes",)"
              R"("times":[500,1000],"values":[1,null],"qualities":["g","b"]},)"
              R"({"plc":"press","label":"T.other","type":"","unit":"","kind":"changes",)"
              R"("times":[500],"values":[null],"qualities":["-"]}]})"
              "\n",
              response.body.toStdString());
}

TEST_F(HistoryQueriesTest, CsvHasEachChange)
{
    record("T.level", "INT", {good(0, qint16(1)), good(1000, qint16(2))});
    EXPECT_EQ(
        "time,plc,label,value,unit,quality\r\n"
        "500,press,T.level,1,,good\r\n"
        "1000,press,T.level,2,,good\r\n",
        ask(&HistoryQueries::readCsv,
            {QStringLiteral("press"), {QStringLiteral("T.level")}, 500, kEnd, 1})
            .body.toStdString());
}

TEST_F(HistoryQueriesTest, AValueGoesOnWhateverItsDeadbandWas)
{
    recordRun(0, 0, "", 1);
    recordRun(10000, 0.5, "", 2);
    recordRun(20000, 0, "", 3);
    HistoryQuestion all = question({QStringLiteral("T.level")});
    all.to = 30000;
    EXPECT_THAT(series(all), testing::HasSubstr(R"("times":[0,0,5000,10000,15000,20000,25000],)"
                                                R"("values":[null,1,null,2,null,3,null],)"
                                                R"("qualities":["-","g","-","g","-","g","-"])"));
    // 1, 2 and 3 for half of each ten seconds.
    all.points = 3;
    EXPECT_THAT(series(all), testing::HasSubstr(R"("mean":[1,2,3],"minimum":[1,2,3],)"
                                                R"("maximum":[1,2,3],"coverage":[0.5,0.5,0.5])"));
    EXPECT_THAT(ask(&HistoryQueries::readCsv, all).body.toStdString(),
                testing::AllOf(testing::HasSubstr("0,press,T.level,1,"),
                               testing::HasSubstr("10000,press,T.level,2,"),
                               testing::HasSubstr("20000,press,T.level,3,")));
}

TEST_F(HistoryQueriesTest, NumbersOfAnotherUnitAreNotMixedInButTold)
{
    recordRun(0, 0, "bar", 1);
    recordRun(10000, 0, "mbar", 2000);
    HistoryQuestion all = question({QStringLiteral("T.level")});
    all.to = 30000;
    EXPECT_THAT(series(all), testing::HasSubstr(R"("type":"INT","unit":"mbar",)"
                                                R"("others":[{"type":"INT","unit":"bar"}],)"));
    EXPECT_THAT(series(all),
                testing::HasSubstr(R"("times":[0,10000,15000],"values":[null,2000,null])"));
    recordRun(20000, 0, "bar", 3);
    EXPECT_THAT(series(all), testing::HasSubstr(R"("unit":"bar","others":[{"type":"INT",)"
                                                R"("unit":"mbar"}],)"));
    EXPECT_THAT(series(all), testing::HasSubstr(R"("values":[null,1,null,3,null])"));
}

TEST_F(HistoryQueriesTest, AnAnswerHasNoMoreBytesThanItMay)
{
    record("T.level", "INT", {good(0, qint16(1)), good(1000, qint16(2))});
    const HistoryQuestion both = question({QStringLiteral("T.level"), QStringLiteral("T.level")});
    const int size = int(series(both).size());
    limits.bytes = size - 3; // without what closes it
    EXPECT_EQ(size, int(series(both).size()));
    limits.bytes = size - 4;
    EXPECT_THAT(refusal(&HistoryQueries::readSeries, both),
                testing::HasSubstr("the answer has more than"));
    limits.bytes = 100;
    EXPECT_THAT(refusal(&HistoryQueries::readCsv, both),
                testing::HasSubstr("the answer has more than 100 bytes; ask for fewer labels"));
}

TEST_F(HistoryQueriesTest, LongTextsAreNotEvenRead)
{
    const recorder::Sample text{0, recorder::Quality::Good, QByteArray(5000, 'x')};
    recorder::Sample other = text;
    other.time = 1000;
    record("T.text", "STRING", {text, other});
    const HistoryQuestion one = question({QStringLiteral("T.text")});
    EXPECT_EQ(200, ask(&HistoryQueries::readSeries, one).status);
    limits.bytes = 10000;
    EXPECT_THAT(refusal(&HistoryQueries::readSeries, one),
                testing::HasSubstr("T.text has more than 100000 changes or 99"));
    EXPECT_THAT(refusal(&HistoryQueries::readCsv, one),
                testing::HasSubstr("more than 500000 changes or 10000 bytes; ask for less time"));
}

TEST_F(HistoryQueriesTest, MoreChangesThanAnAnswerMayHaveAreRefused)
{
    record("T.on", "BOOL", {good(0, true), good(1000, false), good(2000, true)});
    limits.rows = 2;
    EXPECT_THAT(refusal(&HistoryQueries::readCsv, question({QStringLiteral("T.on")})),
                testing::HasSubstr("more than 2 changes"));
}

TEST_F(HistoryQueriesTest, WhatCannotBeReadIsToldSo)
{
    EXPECT_EQ(503, ask(&HistoryQueries::readSeries, question({QStringLiteral("x")})).status);
}

TEST_F(HistoryQueriesTest, MoreQuestionsThanMayWaitAreRefusedAtOnce)
{
    std::promise<void> goOn;
    const std::shared_future<void> mayGoOn = goOn.get_future().share();
    std::atomic<int> refused{0};
    std::atomic<int> answered{0};
    {
        HistoryQueries queries(file);
        const auto count = [&](const Response& response) {
            ++(response.status == 503 ? refused : answered);
        };
        for (int i = 0; i < HistoryQueries::kMostWaiting + 2; ++i) {
            queries.submit(count, [mayGoOn] {
                mayGoOn.wait();
                return Response::nothing();
            });
        }
        EXPECT_EQ(2, refused);
        goOn.set_value();
    }
    EXPECT_EQ(HistoryQueries::kMostWaiting, answered);
}

TEST_F(HistoryQueriesTest, WhatWaitsWhenTheProgramEndsIsRefused)
{
    record("T.on", "BOOL", {good(0, true)});
    std::promise<void> goOn;
    const std::shared_future<void> mayGoOn = goOn.get_future().share();
    int status = 0;
    {
        HistoryQueries queries(file);
        for (int i = 0; i < HistoryQueries::kReaders; ++i) {
            queries.submit([](const Response&) {},
                           [mayGoOn] {
                               mayGoOn.wait();
                               return Response::nothing();
                           });
        }
        queries.readSeries(question({QStringLiteral("T.on")}),
                           [&](const Response& response) { status = response.status; });
        queries.stop();
        goOn.set_value();
    }
    EXPECT_EQ(503, status);
}

TEST_F(HistoryQueriesTest, AggregatesKeepAllDigits)
{
    // 1/3 for 1 s, 2/3 for 2 s: the mean is 5/9.
    record("T.level", "LREAL", {good(0, 1.0 / 3), good(1000, 2.0 / 3)});
    const std::string answer = series(question({QStringLiteral("T.level")}, 1));
    EXPECT_THAT(answer, testing::HasSubstr(R"("minimum":[0.3333333333333333])"));
    EXPECT_THAT(answer, testing::HasSubstr(R"("maximum":[0.6666666666666666])"));
    EXPECT_THAT(answer, testing::HasSubstr(R"("mean":[0.5555555555555556])"));
    EXPECT_THAT(answer, testing::HasSubstr(R"("coverage":[1])"));
}

TEST_F(HistoryQueriesTest, ExtremesOfARealAreWrittenAsItsChanges)
{
    record("T.level", "REAL", {good(0, 50.1F), good(1000, 16777217.0F), good(2000, 50.1F)});
    EXPECT_THAT(series(question({QStringLiteral("T.level")}, 1)),
                testing::AllOf(testing::HasSubstr(R"("minimum":[50.1])"),
                               testing::HasSubstr(R"("maximum":[16777216])")));
    EXPECT_THAT(series(question({QStringLiteral("T.level")})),
                testing::HasSubstr(R"("values":[null,50.1,16777216,50.1)"));
}

TEST_F(HistoryQueriesTest, LargeNumbersInAggregatesKeepTheirDigits)
{
    record("T.count", "DINT", {good(0, 2147483646), good(1000, 2147483647)});
    EXPECT_THAT(series(question({QStringLiteral("T.count")}, 1)),
                testing::AllOf(testing::HasSubstr(R"("minimum":[2147483646])"),
                               testing::HasSubstr(R"("maximum":[2147483647])")));
}

} // namespace
} // namespace test
} // namespace plc::panel

#include "panel/api/history_queries.h"

#include <gmock/gmock.h>

#include <QtCore/QFile>

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
    void record(const char* label, const char* type, const QVector<recorder::Sample>& samples,
                const char* plc = "press")
    {
        auto recorder = recorder::Recorder::open(file, recorder::Limits(), 0);
        ASSERT_TRUE(succeeds(recorder)) << error.toStdString();
        recorder::SeriesDescription series;
        series.source = QString::fromUtf8(plc);
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
    static project::Variable variable(const char* name, const QVector<project::ArrayDimension>& of)
    {
        project::Variable variable;
        variable.name = QString::fromUtf8(name);
        variable.type = values::findIecType(QStringLiteral("INT"));
        variable.dimensions = of;
        return variable;
    }
    /// Of a PLC that has T.level, T.other and T.tank[1..4].
    static HistoryQuestion question(const QStringList& labels, int points = 100)
    {
        project::Symbols program;
        program.scopes = {
            {QStringLiteral("T"),
             {variable("level", {}), variable("other", {}), variable("tank", {{1, 4}})}}};
        return {
            {QStringLiteral("press"), labels, {QStringLiteral("press")}, program}, 0, kEnd, points};
    }
    /// Of a PLC that is configured no more, or never was.
    static HistoryQuestion questionOf(const char* plc, const QStringList& labels)
    {
        return {{QString::fromUtf8(plc), labels, {QStringLiteral("press")}, {}}, 0, kEnd, 100};
    }
    /// The answer, which is that there is no such thing.
    std::string missing(const HistoryQuestion& question)
    {
        const Response response = ask(&HistoryQueries::readSeries, question);
        const Response csv = ask(&HistoryQueries::readCsv, question);
        EXPECT_EQ(404, response.status);
        EXPECT_EQ(404, csv.status);
        EXPECT_EQ(response.body, csv.body);
        return response.body.toStdString();
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
    EXPECT_EQ(
        R"({"from":500,"to":3000,"series":[)"
        R"({"plc":"press","label":"T.level","type":"INT","unit":"","kind":"changes",)"
        R"("times":[500,1000],"values":[1,null],"qualities":["g","b"]},)"
        R"({"plc":"press","label":"T.other","type":"","unit":"","recorded":false,"kind":"changes",)"
        R"("times":[500],"values":[null],"qualities":["-"]}]})"
        "\n",
        response.body.toStdString());
}

TEST_F(HistoryQueriesTest, CsvHasEachChange)
{
    record("T.level", "INT", {good(0, qint16(1)), good(1000, qint16(2))});
    HistoryQuestion later = question({QStringLiteral("T.level"), QStringLiteral("T.other")}, 1);
    later.from = 500;
    EXPECT_EQ(
        "time,plc,label,value,unit,quality\r\n"
        "500,press,T.level,1,,good\r\n"
        "1000,press,T.level,2,,good\r\n"
        "500,press,T.other,,,not recorded\r\n",
        ask(&HistoryQueries::readCsv, later).body.toStdString());
}

TEST_F(HistoryQueriesTest, ALabelThatNeitherProgramNorRecordingHasIsAnError)
{
    record("T.level", "INT", {good(0, qint16(1))});
    EXPECT_EQ(R"({"error":"T.levl: scope \"T\" has no \"levl\" (did you mean \"level\"?), and )"
              R"(nothing was recorded by this name","labels":["T.levl"]})"
              "\n",
              missing(question({QStringLiteral("T.level"), QStringLiteral("T.levl")})));
    EXPECT_EQ(
        R"({"error":"T.tank[5]: the subscripts of \"tank\" must lie within [1..4], and )"
        R"(nothing was recorded by this name; nor is there T.x","labels":["T.tank[5]","T.x"]})"
        "\n",
        missing(question({QStringLiteral("T.tank[5]"), QStringLiteral("T.x")})));
}

TEST_F(HistoryQueriesTest, WhatWasRecordedByANameThatNoPlcHasIsToldAndNotMixedIn)
{
    record("T.level", "INT", {good(0, qint16(1))}, "Press 1");
    record("T.level", "INT", {good(0, qint16(2))}, "");
    record("T.level", "INT", {good(0, qint16(3))}, "mill");
    HistoryQuestion asked = question({QStringLiteral("T.level"), QStringLiteral("T.other")});
    asked.asked.plcs.append(QStringLiteral("mill"));
    // What is recorded of a PLC that there is, is that one's.
    EXPECT_THAT(series(asked), testing::HasSubstr(R"("recorded":false,"recordedOf":["Press 1",""],)"
                                                  R"("kind":"changes","times":[0],)"
                                                  R"("values":[null],"qualities":["-"]},)"));
    EXPECT_THAT(series(asked), testing::HasSubstr(R"("label":"T.other","type":"","unit":"",)"
                                                  R"("recorded":false,"kind")"));
    EXPECT_EQ(
        "time,plc,label,value,unit,quality\r\n"
        "0,press,T.level,,,not recorded of this PLC\r\n"
        "0,press,T.other,,,not recorded\r\n",
        ask(&HistoryQueries::readCsv, asked).body.toStdString());
    // By each of its names it can be asked for.
    EXPECT_THAT(series(questionOf("", {QStringLiteral("T.level")})),
                testing::HasSubstr(R"("values":[null,2)"));
    record("T.level", "INT", {good(0, qint16(4))});
    EXPECT_THAT(series(asked), testing::HasSubstr(R"("recordedOf":["Press 1",""],"kind":)"
                                                  R"("changes","times":[0,0],"values":[null,4])"));
}

TEST_F(HistoryQueriesTest, AFormerValueThatWasRecordedByAFormerNameIsNoError)
{
    record("T.former", "INT", {good(0, qint16(1))}, "Press 1");
    EXPECT_THAT(series(question({QStringLiteral("T.former")})),
                testing::HasSubstr(R"("recorded":false,"recordedOf":["Press 1"])"));
}

TEST_F(HistoryQueriesTest, OfManyWrongLabelsTheFirstAreTold)
{
    record("T.level", "INT", {good(0, qint16(1))});
    QStringList labels;
    for (int i = 0; i < 30; ++i)
        labels.append(QStringLiteral("x%1.y").arg(i));
    const std::string answer = missing(question(labels));
    EXPECT_THAT(answer, testing::HasSubstr(R"(name; nor is there what else is in \"labels\"",)"));
    EXPECT_THAT(answer, testing::EndsWith("\"x18.y\",\"x19.y\"]}\n"));
}

TEST_F(HistoryQueriesTest, WhatIsRecordedAndNotInTheProgramAnyMoreIsAnswered)
{
    record("T.former", "INT", {good(0, qint16(1))});
    const std::string answer = series(question({QStringLiteral("T.former")}));
    EXPECT_THAT(answer, testing::HasSubstr(R"("values":[null,1)"));
    EXPECT_THAT(answer, testing::Not(testing::HasSubstr("\"recorded\"")));
}

TEST_F(HistoryQueriesTest, ALabelIsFoundHoweverItsSubscriptIsSpelt)
{
    record("T.tank[3]", "INT", {good(0, qint16(7))});
    EXPECT_THAT(series(question({QStringLiteral("T.tank[03]")})),
                testing::HasSubstr(R"("label":"T.tank[03]","type":"INT")"));
    EXPECT_THAT(series(question({QStringLiteral("T.tank[2]")})),
                testing::HasSubstr(R"("recorded":false)"));
}

TEST_F(HistoryQueriesTest, APlcThatIsNeitherThereNorRecordedIsAnError)
{
    record("T.level", "INT", {good(0, qint16(1))});
    EXPECT_EQ(
        R"({"error":"there is no PLC \"pres\" (did you mean \"press\"?), and none of this name )"
        R"(was recorded"})"
        "\n",
        missing(questionOf("pres", {QStringLiteral("T.level")})));
}

TEST_F(HistoryQueriesTest, APlcThatIsGoneIsAnsweredFromWhatWasRecordedOfIt)
{
    record("T.level", "INT", {good(0, qint16(1))});
    EXPECT_THAT(series(questionOf("press", {QStringLiteral("T.level")})),
                testing::HasSubstr(R"("values":[null,1)"));
    EXPECT_EQ(
        R"({"error":"nothing was recorded by the name of T.levl (did you mean \"T.level\"?), )"
        R"(and there is no PLC \"press\"","labels":["T.levl"]})"
        "\n",
        missing(questionOf("press", {QStringLiteral("T.levl")})));
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
                                                R"("maximum":[1,2,3],"coverage":[0.5,0.5,0.5],)"
                                                R"("qualities":["-","-","-"])"));
    EXPECT_THAT(ask(&HistoryQueries::readCsv, all).body.toStdString(),
                testing::AllOf(testing::HasSubstr("0,press,T.level,1,"),
                               testing::HasSubstr("10000,press,T.level,2,"),
                               testing::HasSubstr("20000,press,T.level,3,")));
}

TEST_F(HistoryQueriesTest, AnAverageTellsWhatHeldWhileItsNumberWasNotKnown)
{
    using recorder::Quality;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    record("T.level", "REAL",
           {good(0, 1.0F),
            good(100, 1.0F),
            {600, Quality::Stale, {}},
            {1000, Quality::Bad, {}},
            good(1500, nan)});
    // Good for 500 ms, then 100; stale for 400; bad; no number.
    HistoryQuestion asked = question({QStringLiteral("T.level")}, 4);
    asked.to = 2000;
    EXPECT_THAT(series(asked), testing::HasSubstr(R"("mean":[1,1,null,null],"minimum":[1,1,null,)"
                                                  R"(null],"maximum":[1,1,null,null],)"
                                                  R"("coverage":[1,0.2,0,0],)"
                                                  R"("qualities":["g","s","b","n"])"));
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

TEST_F(HistoryQueriesTest, CsvTellsWhatItLeavesOutBeforeTheRowsOfALabel)
{
    record("T.level", "INT", {good(0, qint16(1))}, "Press 1");
    record("T.level", "INT", {good(0, qint16(1))}, "");
    recordRun(5000, 0, "bar", 1);
    recordRun(10000, 0, "mbar", 2000);
    HistoryQuestion later = question({QStringLiteral("T.level")});
    later.from = 12000;
    later.to = 13000;
    EXPECT_EQ(
        "time,plc,label,value,unit,quality\r\n"
        "12000,press,T.level,,mbar,also recorded as INT [bar]\r\n"
        "12000,press,T.level,,mbar,\"also recorded of \"\"Press 1\"\"\"\r\n"
        "12000,press,T.level,,mbar,also recorded without the name of a PLC\r\n"
        "12000,press,T.level,2000,mbar,good\r\n",
        ask(&HistoryQueries::readCsv, later).body.toStdString());
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

TEST_F(HistoryQueriesTest, ARecordingThatGoesOnInANewFileIsReadThere)
{
    auto recorder = recorder::Recorder::open(file, recorder::Limits(), 0);
    ASSERT_TRUE(succeeds(recorder));
    recorder::SeriesDescription level;
    level.source = QStringLiteral("press");
    level.label = QStringLiteral("T.level");
    level.type = values::findIecType(QStringLiteral("INT"));
    const int id = (*recorder)->series(level);
    ASSERT_TRUE(succeeds((*recorder)->append({{id, good(0, qint16(1))}}, 100)));
    HistoryQueries queries(file, limits);
    const auto answer = [&] {
        std::promise<Response> promise;
        queries.readSeries(question({QStringLiteral("T.level")}),
                           [&](const Response& response) { promise.set_value(response); });
        return promise.get_future().get().body.toStdString();
    };
    EXPECT_THAT(answer(), testing::HasSubstr(R"("times":[0,0,100],"values":[null,1,null])"));
    ASSERT_TRUE(QFile::rename(file, path("former.sqlite")));
    ASSERT_TRUE(succeeds((*recorder)->append({{id, good(1500, qint16(2))}}, 2000)));
    EXPECT_THAT(answer(), testing::HasSubstr(R"("times":[0,1500,2000],"values":[null,2,null])"));
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

TEST_F(HistoryQueriesTest, WhatIsBeingAnsweredWhenTheProgramEndsIsBrokenOff)
{
    record("T.on", "BOOL", {good(0, true)});
    std::promise<void> begun;
    Response answer;
    {
        HistoryQueries queries(file);
        queries.read([&](const Response& response) { answer = response; },
                     [&](recorder::Reader* reader) {
                         begun.set_value();
                         Expected<qint64> count = reader->countChanges();
                         while (count) // it has no other end
                             count = reader->countChanges();
                         return historyFailure(count.error());
                     });
        begun.get_future().wait();
        queries.stop();
    }
    EXPECT_EQ(503, answer.status);
    EXPECT_EQ("{\"error\":\"the program ends\"}\n", answer.body.toStdString());
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

TEST_F(HistoryQueriesTest, ExtremesOf64BitsAreTextsOfAllTheirDigits)
{
    record("T.total", "LINT",
           {good(0, qint64(9007199254740993)), good(1000, qint64(-9223372036854775807))});
    EXPECT_THAT(series(question({QStringLiteral("T.total")}, 1)),
                testing::AllOf(testing::HasSubstr(R"("minimum":["-9223372036854775807"])"),
                               testing::HasSubstr(R"("maximum":["9007199254740993"])")));
}

TEST_F(HistoryQueriesTest, ExtremesOfABoolAreFalseAndTrue)
{
    record("T.on", "BOOL", {good(0, true), good(1000, false), good(2000, true)});
    EXPECT_THAT(series(question({QStringLiteral("T.on")}, 1)),
                testing::AllOf(testing::HasSubstr(R"("minimum":[false])"),
                               testing::HasSubstr(R"("maximum":[true])")));
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

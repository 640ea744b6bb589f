#include "panel/api/history_queries.h"

#include <gmock/gmock.h>

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
        HistoryQueries queries(file);
        std::promise<Response> promise;
        (queries.*query)(question, [&](const Response& response) { promise.set_value(response); });
        return promise.get_future().get();
    }
    std::string series(const HistoryQuestion& question)
    {
        return ask(&HistoryQueries::readSeries, question).body.toStdString();
    }

    static constexpr qint64 kEnd = 3000;
    const QString file = path("a.sqlite");
};

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

#include "gateway/exchange/outcome_json.h"
#include "values/utc_time.h"

#include <gtest/gtest.h>

namespace plc::gateway {
namespace {

TEST(IsoTime, IsUtcWithMilliseconds)
{
    EXPECT_EQ("1970-01-01T00:00:00.000Z", values::utcTimeText(0));
    EXPECT_EQ("2026-11-22T08:44:00.123Z", values::utcTimeText(1795337040123));
}

TEST(OutcomeJson, TellsAllThatIsKnown)
{
    WriteOutcome outcome;
    outcome.kind = WriteOutcome::Refused;
    outcome.id = QStringLiteral("7");
    outcome.name = QStringLiteral("Plant/speed");
    outcome.value = QStringLiteral("300");
    outcome.reason = QStringLiteral("not \"allowed\"");
    outcome.time = 1795337040123;
    EXPECT_EQ(
        R"({"id":"7","device":"pump","name":"Plant/speed","value":"300",)"
        R"("outcome":"refused","reason":"not \"allowed\"","time":"2026-11-22T08:44:00.123Z"})",
        outcomeJson(outcome, QStringLiteral("pump")));
}

TEST(OutcomeJson, LeavesOutWhatIsEmpty)
{
    WriteOutcome outcome;
    outcome.kind = WriteOutcome::Done;
    outcome.name = QStringLiteral("Plant/speed");
    EXPECT_EQ(R"({"name":"Plant/speed","outcome":"done","time":"1970-01-01T00:00:00.000Z"})",
              outcomeJson(outcome, QString()));
}

} // namespace
} // namespace plc::gateway

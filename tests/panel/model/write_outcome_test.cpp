#include "panel/model/write_outcome.h"

#include <gtest/gtest.h>

namespace plc::panel {
namespace {

TEST(WriteOutcome, OfAWriteThatWasNotSentHasNoStatus)
{
    const WriteOutcome outcome = WriteOutcome::notSent(QStringLiteral("no link"), 1764000000123);
    EXPECT_EQ(WriteOutcome::NotSent, outcome.kind);
    EXPECT_EQ(-1, outcome.status);
    EXPECT_EQ("no link", outcome.reason);
    EXPECT_EQ(1764000000123, outcome.time);
}

TEST(WriteOutcome, IsNeverDoneBeforeItIsKnown)
{
    EXPECT_EQ(WriteOutcome::NotSent, WriteOutcome().kind);
}

TEST(WriteOutcome, IsToldInTheWordsOfTheInterface)
{
    EXPECT_STREQ("done", outcomeWord(WriteOutcome::Done));
    EXPECT_STREQ("refused", outcomeWord(WriteOutcome::Refused));
    EXPECT_STREQ("unknown", outcomeWord(WriteOutcome::Unknown));
    EXPECT_STREQ("notSent", outcomeWord(WriteOutcome::NotSent));
}

} // namespace
} // namespace plc::panel

#include "model/shrinking.h"

#include <gtest/gtest.h>

#include "model/step_generator.h"
#include "model/step_text.h"

namespace plc::model {
namespace {

/// Finds a retry limit of 2 or more that is set after a request was asked for.
Finding findLateLimit(const Sequence& sequence)
{
    Finding finding;
    bool hasAsked = false;
    for (std::size_t i = 0; i < sequence.size() && !finding; ++i) {
        const ChangeWord* change = std::get_if<ChangeWord>(&sequence[i]);
        hasAsked = hasAsked || std::holds_alternative<Ask>(sequence[i]);
        if (hasAsked && change && change->word == kRetryLimit && change->value >= 2)
            finding.step = int(i);
    }
    return finding;
}

Finding findLongWrite(const Sequence& sequence)
{
    Finding finding;
    for (std::size_t i = 0; i < sequence.size() && !finding; ++i) {
        const AddWrite* write = std::get_if<AddWrite>(&sequence[i]);
        if (write && write->var && write->var->data.size() >= 3 && write->var->station == 1)
            finding.step = int(i);
    }
    return finding;
}

Sequence sequenceWith(const Finder& find)
{
    StepGenerator generator(1);
    Sequence sequence;
    while (!find(sequence))
        sequence = generator.sequence(300);
    return sequence;
}

TEST(Shrinking, LeavesOutEveryStepThatDoesNotMatter)
{
    const Sequence shrunk = shrink(sequenceWith(findLateLimit), findLateLimit);
    ASSERT_EQ(2u, shrunk.size());
    EXPECT_TRUE(std::holds_alternative<Ask>(shrunk[0]));
    EXPECT_EQ(2, std::get<ChangeWord>(shrunk[1]).value);
}

TEST(Shrinking, LeavesOutEverythingInAStepThatDoesNotMatter)
{
    const Sequence shrunk = shrink(sequenceWith(findLongWrite), findLongWrite);
    ASSERT_EQ(1u, shrunk.size());
    Variable least;
    least.station = 1;
    least.data = std::get<AddWrite>(shrunk[0]).var->data;
    EXPECT_EQ(least, *std::get<AddWrite>(shrunk[0]).var);
    EXPECT_EQ(3u, least.data.size());
}

TEST(Shrinking, PrintsATestToPaste)
{
    Variable var;
    var.label = u"MAIN.\u00E9\"";
    var.data = {0x01, 0xFF};
    Symbol symbol;
    symbol.name = u"MAIN";
    symbol.areaInfo = {3, -1};
    const Sequence sequence = {
        PassSymbols{std::vector<Symbol>{symbol}},
        PassSymbols{std::nullopt},
        AddWrite{var, 1},
        Ask{},
        TakeReply{Bytes{0xBB, 0x0A}, -1, std::nullopt},
    };
    EXPECT_EQ(
        "TEST(FoundSequences, NameWhatWasWrong)\n"
        "{\n"
        "    expectSame({\n"
        "        PassSymbols{std::vector<Symbol>{Symbol{u\"MAIN\", 0, 0, 0, 0u, {}, {}, {}, "
        "{3, -1}}}},\n"
        "        PassSymbols{std::nullopt},\n"
        "        AddWrite{Variable{0, 0, 0, 0, 0, 0, u\"MAIN.\\u00E9\\\"\", u\"\", 0, 0, 0, 0, "
        "0, 0, Bytes{0x01, 0xFF}}, 1},\n"
        "        Ask{},\n"
        "        TakeReply{Bytes{0xBB, 0x0A}, -1, std::nullopt},\n"
        "    });\n"
        "}\n",
        testText(sequence));
}

} // namespace
} // namespace plc::model

// What is made of a table beside the reading of a command line.

#include "options/completion_text.h"
#include "options/document.h"
#include "options/help_text.h"
#include "options/manual_text.h"
#include "tests/support/qt_printers.h"

namespace plc::options {
namespace test {
namespace {

const Table kTable{{"-o, --output FILE", "write there", nullptr, kCompleteFile},
                   {"--json", "print JSON", nullptr, kCompleteNothing,
                    "Print JSON. See `read`, `N` and `.csv`, or `--output`."},
                   {"--merge FILE", "put in there", nullptr, kCompleteFile},
                   {"--gap N", "a number", nullptr}};

TEST(Option, HasTheNamesOfItsUsage)
{
    EXPECT_EQ("output", kTable[0].name());
    EXPECT_EQ("o", kTable[0].letter());
    EXPECT_EQ("FILE", kTable[0].placeholder());
    EXPECT_EQ("json", kTable[1].name());
    EXPECT_EQ("", kTable[1].letter());
    EXPECT_FALSE(kTable[1].hasValue());
    EXPECT_EQ(&kTable[2], findOption(kTable, QStringLiteral("merge")));
    EXPECT_EQ(nullptr, findOption(kTable, QStringLiteral("o")));
}

TEST(HelpText, WrapsBesideTheNameAndBelowALongOne)
{
    EXPECT_EQ(
        "  --name NAME             one two three four five six seven eight nine ten\n"
        "                          eleven",
        helpItem(QStringLiteral("--name NAME"),
                 QStringLiteral("one two three four five six seven eight nine ten eleven")));
    EXPECT_EQ(
        "  --twenty-three LONG WORD\n"
        "                          help",
        helpItem(QStringLiteral("--twenty-three LONG WORD"), QStringLiteral("help")));
    EXPECT_EQ("  --twenty-two LONG WORD  help",
              helpItem(QStringLiteral("--twenty-two LONG WORD"), QStringLiteral("help")));
}

TEST(ManualText, IsTheListInMdoc)
{
    EXPECT_EQ(
        ".Bl -tag -width Ds\n"
        ".It Fl o , -output Ar FILE\n"
        "Write there.\n"
        ".It Fl -json\n"
        "Print JSON.\n"
        "See\n"
        ".Cm read ,\n"
        ".Ar N\n"
        "and\n"
        ".Ql \\&.csv ,\n"
        "or\n"
        ".Fl -output .\n"
        ".El\n",
        manualList({kTable[0], kTable[1]}, {QStringLiteral("read")}));
}

TEST(CompletionText, CompletesValuesByTheirKind)
{
    EXPECT_EQ(
        "  --gap)\n"
        "      return\n"
        "      ;;\n"
        "  -o | --output | --merge)\n"
        "      _filedir\n"
        "      return\n"
        "      ;;\n",
        completionCases(kTable, 2));
    EXPECT_EQ("--output --json --merge --gap", completionNames(kTable));
}

TEST(Document, HasEverySectionInItsPlace)
{
    const Sections sections{{QStringLiteral("A"), QStringLiteral("1\n2\n")}};
    EXPECT_EQ("x\n1\n2\ny @A@\n", *filledTemplate(QStringLiteral("x\n@A@\ny @A@\n"), sections));
    EXPECT_EQ("there is no section B",
              filledTemplate(QStringLiteral("@A@\n@B@\n"), sections).error().text);
    EXPECT_EQ("the section A has no place",
              filledTemplate(QStringLiteral("x\n"), sections).error().text);
}

} // namespace
} // namespace test
} // namespace plc::options

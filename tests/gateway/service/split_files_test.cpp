#include "gateway/service/split_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "gateway/service/options.h"
#include "tests/support/file_test.h"

namespace plc::gateway {
namespace test {
namespace {

class SplitFilesTest : public plc::test::FileTest {
protected:
    SplitFilesTest()
    {
        files.put(path("pattern"), R"({"group": "G", "node": "N", "brokers": [{"host": "b"}],
            "store": {"file": "s"}, "devices": [{"name": "any", "project": "p"}]})");
        files.put(path("list"), "name\nP1\nP2\nP3\n");
    }
    Expected<Options> options(const QStringList& arguments)
    {
        return readOptions(QStringList(QStringLiteral("plc-gateway")) + arguments);
    }
    SplitFiles asked(const QStringList& more)
    {
        const Expected<Options> read = options(
            QStringList{QStringLiteral("split"), path("pattern"), path("list"), path(".")} + more);
        EXPECT_TRUE(succeeds(read)) << error.toStdString();
        EXPECT_TRUE(read.valueOr(Options()).wantsSplit);
        return read.valueOr(Options()).split;
    }
};

TEST_F(SplitFilesTest, TellsWhatBecameOfEachFile)
{
    const SplitFiles two = asked({QStringLiteral("--devices"), QStringLiteral("2")});
    EXPECT_EQ("added     N-01.json\nadded     N-02.json",
              splitFiles(two).valueOr(QString()).toStdString());
    files.put(path("list"), "name\nP1\nP2\n");
    EXPECT_EQ(
        "unchanged N-01.json\nleft over N-02.json\n"
        "What is left over is of a longer list; end its service and remove it.",
        splitFiles(two).valueOr(QString()).toStdString());
    files.put(path("list"), "name\nP1\nP4\n");
    EXPECT_FALSE(succeeds(splitFiles(two)));
    EXPECT_THAT(error.toStdString(), ::testing::HasSubstr("nothing is written"));
    const SplitFiles replacing =
        asked({QStringLiteral("--devices=2"), QStringLiteral("--replace")});
    EXPECT_THAT(splitFiles(replacing).valueOr(QString()).toStdString(),
                ::testing::StartsWith("replaced  N-01.json\n"));
}

TEST_F(SplitFilesTest, FiftyPlcsAreOneConfigurationUnlessToldOtherwise)
{
    EXPECT_EQ(50, asked({}).devices);
    EXPECT_FALSE(asked({}).replaces);
    EXPECT_FALSE(options({QStringLiteral("split"), QStringLiteral("a"), QStringLiteral("b"),
                          QStringLiteral("c"), QStringLiteral("--devices"), QStringLiteral("65")}));
}

TEST_F(SplitFilesTest, ThreeFilesAreNamed)
{
    EXPECT_FALSE(succeeds(options({QStringLiteral("split"), QStringLiteral("a")})));
    EXPECT_EQ("split expects a configuration, a list and a folder; --help tells more",
              error.toStdString());
    SplitFiles none = asked({});
    none.list = path("none");
    EXPECT_FALSE(succeeds(splitFiles(none)));
    EXPECT_EQ(path("none") + ": cannot be read: No such file or directory", error);
}

} // namespace
} // namespace test
} // namespace plc::gateway

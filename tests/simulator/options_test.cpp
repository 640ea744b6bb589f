#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>

#include "simulator/options.h"
#include "tests/project/project_text.h"

namespace plc::simulator {
namespace {

class OptionsTest : public testing::Test {
protected:
    static Expected<Options> read(const char* arguments)
    {
        return readOptions((QStringLiteral("plc-simulator ") + QString::fromUtf8(arguments))
                               .split(QLatin1Char(' ')));
    }

    static std::string errorOf(const char* arguments)
    {
        const Expected<Options> options = read(arguments);
        EXPECT_FALSE(options) << arguments;
        return options ? std::string() : options.error().text.toStdString();
    }

private:
    int m_count = 1;
    char m_program[14] = "plc-simulator";
    char* m_arguments[2] = {m_program, nullptr};
    QCoreApplication m_application{m_count, m_arguments};
};

TEST_F(OptionsTest, ProjectFileAloneIsEnough)
{
    const auto options = read("plant.json");
    ASSERT_TRUE(options) << options.error().text.toStdString();
    EXPECT_EQ("plant.json", options->projectFile.toStdString());
    EXPECT_EQ("127.0.0.1", options->address.toString().toStdString());
    EXPECT_FALSE(options->port);
    EXPECT_EQ(Verbosity::Normal, options->verbosity);
    EXPECT_EQ(256, options->mostClients);
    EXPECT_EQ(1u, options->seed);
    EXPECT_EQ(0, options->fragment);
    EXPECT_FALSE(options->join || options->refuseLogin || options->failWrites);
}

TEST_F(OptionsTest, AllAreUnderstood)
{
    auto options = read(
        "p.json --listen ::1 --port 0 --verbose --seed 4294967295 --max-clients 3 "
        "--reply-delay 20 --fragment 1 --join --drop-replies 1 --late-reply 2:300 "
        "--half-reply 4 --duplicate-reply 3 --refuse-login --fail-writes");
    ASSERT_TRUE(options) << options.error().text.toStdString();
    EXPECT_EQ("::1", options->address.toString().toStdString());
    EXPECT_EQ(0, options->port.value_or(1));
    EXPECT_EQ(Verbosity::Verbose, options->verbosity);
    EXPECT_EQ(4294967295u, options->seed);
    EXPECT_EQ(3, options->mostClients);
    EXPECT_EQ(1, options->fragment);
    EXPECT_TRUE(options->join && options->refuseLogin && options->failWrites);
    EXPECT_EQ(20, options->faults.loginReply("abcd").delay);
    EXPECT_EQ("", options->faults.dataReply("abcd").bytes.toStdString());
    EXPECT_EQ(320, options->faults.dataReply("abcd").delay);
    EXPECT_EQ("abcdabcd", options->faults.dataReply("abcd").bytes.toStdString());
    EXPECT_EQ("ab", options->faults.dataReply("abcd").bytes.toStdString());
}

TEST_F(OptionsTest, WrongOnesAreNamed)
{
    EXPECT_EQ("expected one project file; --help tells more", errorOf("--quiet"));
    EXPECT_EQ("Unknown option 'bogus'. --help lists the options.", errorOf("p.json --bogus"));
    EXPECT_EQ("expected one project file; --help tells more", errorOf("a.json b.json"));
    EXPECT_EQ("--port takes a number from 0 to 65535, not \"65536\"",
              errorOf("p.json --port 65536"));
    EXPECT_EQ("--port takes a number from 0 to 65535, not \"x\"", errorOf("p.json --port x"));
    EXPECT_EQ("--listen: \"localhost\" is not an IP address", errorOf("p.json --listen localhost"));
    EXPECT_EQ("--late-reply: expected N:MS, as in 3:1500", errorOf("p.json --late-reply 3"));
    EXPECT_EQ("--late-reply takes a number from 1 to 1000000000, not \"0\"",
              errorOf("p.json --late-reply 0:5"));
    EXPECT_EQ("--half-reply takes a number from 1 to 1000000000, not \"-1\"",
              errorOf("p.json --half-reply=-1"));
    EXPECT_EQ("--max-clients takes a number from 1 to 1000, not \"0\"",
              errorOf("p.json --max-clients 0"));
    EXPECT_FALSE(errorOf("p.json --no-such-option").empty());
}

TEST_F(OptionsTest, HelpAndVersionNeedNoProject)
{
    ASSERT_TRUE(read("--help"));
    EXPECT_TRUE(read("--help")->information.contains(QLatin1String("--late-reply")));
    ASSERT_TRUE(read("--version"));
    EXPECT_TRUE(read("--version")->information.startsWith(QLatin1String("plc-simulator")));
}

TEST_F(OptionsTest, ProjectsThatNeedTooMuchAreRefused)
{
    const auto ofSize = [](int size) {
        project::Project project;
        project.areas = {{1, size}, {2, 1}};
        return project;
    };
    const auto errorOfSize = [](const project::Project& project) {
        const Expected<void> isSmall = checkSize(project, 1);
        return isSmall ? std::string() : isSmall.error().text.toStdString();
    };
    EXPECT_TRUE(checkSize(ofSize(128 * 1024 * 1024 - 1), 2));
    EXPECT_FALSE(checkSize(ofSize(128 * 1024 * 1024), 2));
    EXPECT_EQ("", errorOfSize(ofSize(256 * 1024 * 1024 - 1)));
    EXPECT_EQ("the areas of the project have 268435457 bytes; at most 268435456 can be simulated",
              errorOfSize(ofSize(256 * 1024 * 1024)));
    const project::Project signalled = project::test::goodProject(
        R"({"name": "n", "areas": [{"index": 0, "size": 100001}], "scopes": [{"name": "M",
            "variables": [{"name": "v", "type": "BYTE", "area": 0, "offset": 0,
                           "array": [[1, 100001]],
                           "signal": {"kind": "constant", "value": 1}}]}]})");
    EXPECT_EQ("more than 100000 values of the project have a signal", errorOfSize(signalled));
}

} // namespace
} // namespace plc::simulator

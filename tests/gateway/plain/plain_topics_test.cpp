#include "gateway/plain/plain_topics.h"

#include <gtest/gtest.h>

namespace plc::gateway {
namespace {

QString targetText(const char* topic)
{
    const PlainTopics topics(QStringLiteral("works"), QStringLiteral("hall"));
    const std::optional<PlainTopics::Target> target = topics.target(QString::fromUtf8(topic));
    return target ? target->device + QLatin1Char('|') + target->path : QStringLiteral("none");
}

TEST(PlainTopics, AreLabelPathsBelowTheDevice)
{
    const PlainTopics topics(QStringLiteral("works"), QStringLiteral("hall"));
    EXPECT_EQ("works/hall/state", topics.ofNode("state"));
    EXPECT_EQ("works/hall/pump/state", topics.ofDevice(QStringLiteral("pump"), "state"));
    EXPECT_EQ("works/hall/pump/P/speed",
              topics.ofValue(QStringLiteral("pump"), QStringLiteral("P/speed")));
    EXPECT_EQ("works/hall/pump/P/speed/outcome",
              topics.ofOutcome(QStringLiteral("pump"), QStringLiteral("P/speed")));
}

TEST(PlainTopics, WildcardsInNamesAreEscaped)
{
    EXPECT_EQ("a%2Bb%23c%25d/e", PlainTopics::escaped(QStringLiteral("a+b#c%d/e")));
    EXPECT_EQ("C%2B%2B/hall/state",
              PlainTopics(QStringLiteral("C++"), QStringLiteral("hall")).ofNode("state"));
}

TEST(PlainTopics, WritesAreAwaitedAtEachDepth)
{
    const PlainTopics topics(QStringLiteral("works"), QStringLiteral("hall"));
    EXPECT_EQ((QVector<QString>{QStringLiteral("works/hall/+/+/set"),
                                QStringLiteral("works/hall/+/+/+/set")}),
              topics.writeFilters(2));
}

TEST(PlainTopics, KnowWhatIsToBeWritten)
{
    EXPECT_EQ("pump|P/speed", targetText("works/hall/pump/P/speed/set"));
    EXPECT_EQ("pump|set", targetText("works/hall/pump/set/set"));
    EXPECT_EQ("pump|/", targetText("works/hall/pump///set"));
}

TEST(PlainTopics, TakeNoLongerDeviceThanAConfigurationMayName)
{
    const auto text = [](int size) {
        return targetText(
            QStringLiteral("works/hall/%1/P/set").arg(QString(size, QLatin1Char('x'))).toUtf8());
    };
    EXPECT_NE("none", text(768));
    EXPECT_EQ("none", text(769));
}

TEST(PlainTopics, OthersAreNoWrites)
{
    const char* topics[] = {"",
                            "works/hall/pump/P/speed",
                            "works/hall/pump/set",
                            "works/hall/pump//set",
                            "works/hall//P/set",
                            "works/hall/set",
                            "works/hall/",
                            "other/hall/pump/P/speed/set",
                            "works/hall/pump/P/speed/set/"};
    for (const char* topic : topics)
        EXPECT_EQ("none", targetText(topic)) << topic;
}

} // namespace
} // namespace plc::gateway

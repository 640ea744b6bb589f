#include "gateway/sparkplug/topics.h"

#include <gtest/gtest.h>

namespace plc::gateway {
namespace {

const Topics kTopics(QStringLiteral("works"), QStringLiteral("hall 3"));

TEST(Topics, NodeAndDeviceHaveTheirPlaces)
{
    EXPECT_EQ("spBv1.0/works/NBIRTH/hall 3", kTopics.ofNode("NBIRTH"));
    EXPECT_EQ(QString::fromUtf8("spBv1.0/works/DDATA/hall 3/Öfen"),
              kTopics.ofDevice("DDATA", QString::fromUtf8("Öfen")));
    EXPECT_EQ("spBv1.0/STATE/scada", Topics::ofHost(QStringLiteral("scada")));
}

TEST(Topics, KnowTheDeviceOfACommand)
{
    EXPECT_EQ(QStringLiteral("pump 1"),
              kTopics.commandedDevice(QStringLiteral("spBv1.0/works/DCMD/hall 3/pump 1")));
}

TEST(Topics, TakeNoCommandsOfOthers)
{
    const char* others[] = {
        "",
        "spBv1.0/works/DCMD/hall 3",
        "spBv1.0/works/DCMD/hall 3/",
        "spBv1.0/works/DCMD/hall 3/pump/1",
        "spBv1.0/works/DCMD/hall 33/pump",
        "spBv1.0/works/DDATA/hall 3/pump",
        "spBv1.0/Works/DCMD/hall 3/pump",
        "spBv1.0/works/NCMD/hall 3",
        " spBv1.0/works/DCMD/hall 3/pump",
    };
    for (const char* topic : others)
        EXPECT_FALSE(kTopics.commandedDevice(QString::fromLatin1(topic))) << topic;
}

TEST(Topics, TakeNoLongerDeviceThanAConfigurationMayName)
{
    const QString start = QStringLiteral("spBv1.0/works/DCMD/hall 3/");
    EXPECT_TRUE(kTopics.commandedDevice(start + QString(256, QLatin1Char('x'))));
    EXPECT_FALSE(kTopics.commandedDevice(start + QString(257, QLatin1Char('x'))));
    // Two bytes each.
    EXPECT_TRUE(kTopics.commandedDevice(start + QString(128, QChar(0xE4))));
    EXPECT_FALSE(kTopics.commandedDevice(start + QString(129, QChar(0xE4))));
}

TEST(Topics, OfAHostAreKnownWithSlashesForDotsToo)
{
    const QString host = QStringLiteral("scada.north");
    EXPECT_TRUE(Topics::isOfHost(QStringLiteral("spBv1.0/STATE/scada.north"), host));
    EXPECT_TRUE(Topics::isOfHost(QStringLiteral("spBv1/0/STATE/scada/north"), host));
    EXPECT_FALSE(Topics::isOfHost(QStringLiteral("spBv1.0/STATE/scada"), host));
    EXPECT_FALSE(Topics::isOfHost(QStringLiteral("spBv1/0/STATE/scada"), host));
}

} // namespace
} // namespace plc::gateway

#include "panel/config/settings.h"

#include <gtest/gtest.h>

namespace plc::panel {
namespace {

/// In which ' stands for ".
Expected<PanelSettings> parsed(QByteArray json)
{
    return parseSettings(json.replace('\'', '"'), QStringLiteral("c"));
}

std::string errorOf(const QByteArray& json)
{
    const Expected<PanelSettings> settings = parsed(json);
    return settings ? std::string() : settings.error().text.toStdString();
}

std::string errorOfPlc(const QByteArray& members)
{
    return errorOf("{'plcs':[{'name':'a','project':'a.json'," + members + "}]}");
}

TEST(PanelSettings, NeedPlcsAlone)
{
    const Expected<PanelSettings> settings = parsed("{'plcs':[{'name':'a','project':'a.json'}]}");
    ASSERT_TRUE(settings) << settings.error().text.toStdString();
    EXPECT_EQ("127.0.0.1", settings->address.toStdString());
    EXPECT_EQ(8080, settings->port);
    EXPECT_EQ(1, settings->plcs.size());
    EXPECT_EQ(1000, settings->plcs[0].cycleTime);
    EXPECT_FALSE(settings->plcs[0].writable) << "all that the project has";
    EXPECT_FALSE(settings->isReadOnly);
}

TEST(PanelSettings, HaveWhatTheFileSays)
{
    const Expected<PanelSettings> settings = parsed(
        "{'listen':'[::1]:0','socket':'s','tls':{'certificate':'c','key':'k'},'users':'u',"
        "'audit':'a','record':{'file':'r','size':'10M','age':'400d'},'readOnly':true,"
        "'recipes':'f','plcs':[{'name':'a','project':'a.json','address':'x','port':9,"
        "'cycle':'500ms','record':['T.*'],'deadband':[{'labels':'T.a','deadband':2}],"
        "'writable':[]}]}");
    ASSERT_TRUE(settings) << settings.error().text.toStdString();
    EXPECT_EQ("::1", settings->address.toStdString());
    EXPECT_EQ(0, settings->port);
    EXPECT_EQ("s", settings->socket.toStdString());
    EXPECT_EQ("c", settings->certificate.toStdString());
    EXPECT_EQ("k", settings->key.toStdString());
    EXPECT_EQ("u", settings->usersFile.toStdString());
    EXPECT_EQ("a", settings->auditFile.toStdString());
    EXPECT_EQ("r", settings->record.file.toStdString());
    EXPECT_TRUE(settings->isReadOnly);
    EXPECT_EQ("f", settings->recipes.toStdString());
    EXPECT_EQ(10 * 1024 * 1024, settings->record.size);
    EXPECT_EQ(400 * Q_INT64_C(86400000), settings->record.age);
    ASSERT_EQ(1, settings->plcs.size());
    const PlcSettings& plc = settings->plcs[0];
    EXPECT_EQ("a", plc.name.toStdString());
    EXPECT_EQ("a.json", plc.project.toStdString());
    EXPECT_EQ("x", plc.address.value_or(QString()).toStdString());
    EXPECT_EQ(9, plc.port.value_or(0));
    EXPECT_EQ(500, plc.cycleTime);
    EXPECT_EQ(QVector<QString>{QStringLiteral("T.*")}, plc.record);
    ASSERT_EQ(1, plc.deadbands.size());
    EXPECT_EQ("T.a", plc.deadbands[0].labels.toStdString());
    EXPECT_EQ(2, plc.deadbands[0].deadband);
    ASSERT_TRUE(plc.writable);
    EXPECT_TRUE(plc.writable->isEmpty()) << "nothing";
}

TEST(PanelSettings, HaveTheAlarmsThatTheFileDescribes)
{
    const Expected<PanelSettings> settings = parsed(
        "{'plcs':[{'name':'a','project':'a.json','alarms':[{'label':'T.a','below':1,"
        "'delay':'2s','text':'low','deadband':0.5},{'label':'T.a','above':3},"
        "{'label':'T.b','is':true},{'label':'T.b','notGood':true,'delay':5}]}]}");
    ASSERT_TRUE(settings) << settings.error().text.toStdString();
    const QVector<AlarmSettings>& alarms = settings->plcs[0].alarms;
    ASSERT_EQ(4, alarms.size());
    EXPECT_EQ("a", alarms[0].plc.toStdString());
    EXPECT_EQ("T.a", alarms[0].label.toStdString());
    EXPECT_EQ(AlarmSettings::Below, alarms[0].condition);
    EXPECT_EQ(1, alarms[0].limit);
    EXPECT_EQ(2000, alarms[0].delay);
    EXPECT_EQ("low", alarms[0].text.toStdString());
    EXPECT_EQ(0.5, alarms[0].deadband);
    EXPECT_EQ(AlarmSettings::Above, alarms[1].condition);
    EXPECT_EQ(3, alarms[1].limit);
    EXPECT_EQ(AlarmSettings::Is, alarms[2].condition);
    EXPECT_EQ(values::Value(true), alarms[2].state);
    EXPECT_EQ(AlarmSettings::NotGood, alarms[3].condition);
    EXPECT_EQ(5, alarms[3].delay);
}

TEST(PanelSettings, LimitWhatMayBeWritten)
{
    const Expected<PanelSettings> settings = parsed(
        "{'plcs':[{'name':'a','project':'a.json','writable':['T.*',"
        "{'labels':'T.a','lowest':-1.5,'highest':2}]}]}");
    ASSERT_TRUE(settings) << settings.error().text.toStdString();
    const auto& writable = settings->plcs[0].writable;
    ASSERT_TRUE(writable);
    ASSERT_EQ(2, writable->size());
    EXPECT_EQ("T.*", writable->at(0).labels.toStdString());
    EXPECT_FALSE(writable->at(0).lowest);
    EXPECT_FALSE(writable->at(0).highest);
    EXPECT_EQ("T.a", writable->at(1).labels.toStdString());
    EXPECT_EQ(-1.5, writable->at(1).lowest);
    EXPECT_EQ(2, writable->at(1).highest);
}

TEST(PanelSettings, ErrorsNameThePlace)
{
    EXPECT_EQ(0u, errorOf("{'plcs':[]}").find("c: /plcs: found no PLC"));
    EXPECT_EQ(0u, errorOf("{'plcs':[{'name':'','project':'p'}]}").find("c: /plcs/0/name: "));
    EXPECT_EQ(0u, errorOf("{'listen':'here','plcs':[]}").find("c: /listen: "));
    EXPECT_EQ(0u, errorOf("{'record':{'file':'f','age':'0d'},'plcs':[]}").find("c: /record/age: "));
    EXPECT_EQ(0u, errorOfPlc("'record':[]").find("c: /plcs/0/record: "));
    EXPECT_EQ(0u, errorOfPlc("'cycle':1").find("c: /plcs/0/cycle: "));
    EXPECT_EQ(0u, errorOfPlc("'alarms':[{'label':'x'}]").find("c: /plcs/0/alarms/0: "));
    EXPECT_EQ(0u, errorOfPlc("'alarms':[{'label':'x','above':1,'below':2}]")
                      .find("c: /plcs/0/alarms/0: an alarm has one of the keys"));
    EXPECT_EQ(0u, errorOfPlc("'nope':1").find("c: /plcs/0/nope: unknown key"));
}

TEST(PanelSettings, HostsAreNamesOrAddressesWithoutPorts)
{
    const Expected<PanelSettings> settings = parsed(
        "{'hosts':['Panel.example','plant_1.','10.0.0.5','fe80::1'],"
        "'plcs':[{'name':'a','project':'a.json'}]}");
    ASSERT_TRUE(settings) << settings.error().text.toStdString();
    EXPECT_EQ("Panel.example plant_1. 10.0.0.5 fe80::1",
              settings->hosts.join(QLatin1Char(' ')).toStdString());
    EXPECT_EQ(
        "c: /hosts/1: found \"panel.example:8443\", expected a name or an address without a "
        "port, such as panel.example",
        errorOf("{'hosts':['a','panel.example:8443'],'plcs':[]}"));
    for (const char* host : {"", "*.example", "https://panel", "[::1]", "a b", "\xC3\xA9.example"})
        EXPECT_EQ(0u,
                  errorOf(QByteArray("{'hosts':['") + host + "'],'plcs':[]}").find("c: /hosts/0: "))
            << host;
    EXPECT_EQ(0u, errorOf("{'hosts':'panel.example','plcs':[]}").find("c: /hosts: "));
}

TEST(PanelSettings, TwoPlcsOfOneNameAreAnError)
{
    EXPECT_EQ("c: /plcs/1/name: two PLCs are called \"a\"",
              errorOf("{'plcs':[{'name':'a','project':'p'},{'name':'a','project':'q'}]}"));
}

TEST(PanelSettings, OfProjectsAreNamedAsTheirFiles)
{
    const auto plcs = plcsOfProjects({QStringLiteral("/x/one.json"), QStringLiteral("two.json")});
    ASSERT_TRUE(plcs);
    EXPECT_EQ("one", plcs->at(0).name.toStdString());
    EXPECT_EQ("two", plcs->at(1).name.toStdString());
    const auto same = plcsOfProjects({QStringLiteral("/x/a.json"), QStringLiteral("/y/a.json")});
    ASSERT_FALSE(same);
    EXPECT_EQ(0u, same.error().text.toStdString().find("/x/a.json and /y/a.json"));
}

TEST(PanelSettings, OfTheExampleCanBeLoaded)
{
    const Expected<PanelSettings> settings =
        loadSettings(QStringLiteral(PLC_SOURCE_DIR "/docs/examples/panel.json"));
    ASSERT_TRUE(settings) << settings.error().text.toStdString();
    EXPECT_EQ(QStringLiteral(PLC_SOURCE_DIR "/docs/examples/tank.json"), settings->plcs[0].project);
    EXPECT_EQ(2, settings->plcs[0].alarms.size());
}

} // namespace
} // namespace plc::panel

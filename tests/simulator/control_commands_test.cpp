#include <gtest/gtest.h>

#include "simulator/frame_text.h"
#include "tests/simulator/running_simulator.h"

namespace plc::simulator {
namespace {

using test::bytes;
using test::hex;

class ControlCommandsTest : public test::RunningSimulator {};

TEST_F(ControlCommandsTest, GetAndSetValuesByLabel)
{
    EXPECT_EQ("ok 4113", command("get MAIN.speed"));
    EXPECT_EQ("ok", command("set MAIN.speed -2"));
    EXPECT_EQ("ff fe", hex(m_memory.read(1, 16, 2)));
    EXPECT_EQ("ok", command("set  MAIN.title   two words "));
    EXPECT_EQ("ok 'two words'", command("get MAIN.title"));
    EXPECT_EQ("ok", command("set MAIN.lamp[1] true"));
    EXPECT_EQ("ok TRUE", command("get MAIN.lamp[1]"));
}

TEST_F(ControlCommandsTest, PeekAndPokeBytes)
{
    EXPECT_EQ("ok 10 11 12", command("peek 1 16 3"));
    EXPECT_EQ("ok", command("poke 1 997 AB cd 00"));
    EXPECT_EQ("ok ab cd 00", command("peek 1 997 3"));
}

TEST_F(ControlCommandsTest, BringTheMemoryUpToDateFirst)
{
    for (const char* line : {"get MAIN.speed", "set MAIN.speed 1", "peek 1 0 1", "poke 1 0 00"}) {
        m_accesses = 0;
        command(line);
        EXPECT_EQ(1, m_accesses) << line;
    }
}

TEST_F(ControlCommandsTest, SayWhatIsWrong)
{
    EXPECT_EQ("", command("  "));
    EXPECT_EQ("error: unknown command \"stauts\" (did you mean \"status\"?); \"help\" lists all",
              command("stauts"));
    EXPECT_EQ("error: expected: get LABEL", command("get"));
    EXPECT_EQ("error: expected: set LABEL VALUE", command("set MAIN.speed"));
    EXPECT_EQ("error: expected: status", command("status now"));
    EXPECT_EQ("error: scope \"MAIN\" has no \"sped\" (did you mean \"speed\"?)",
              command("get MAIN.sped"));
    EXPECT_EQ("error: \"x\" is no whole number, which INT takes", command("set MAIN.speed x"));
    EXPECT_EQ("error: 2 bytes from address 999 on do not lie within an area 1 of the project",
              command("peek 1 999 2"));
    EXPECT_EQ("error: 1 bytes from address 0 on do not lie within an area 3 of the project",
              command("peek 3 0 1"));
    EXPECT_EQ("error: 1 bytes from address 1000 on do not lie within an area 1 of the project",
              command("poke 1 1000 00"));
    EXPECT_EQ("error: \"0\" are not hex bytes", command("poke 1 0 0"));
    EXPECT_EQ("error: \"0x\" are not hex bytes", command("poke 1 0 0x"));
    EXPECT_EQ("error: \"-1\" is not a whole number from 0 to 65535", command("peek -1 0 1"));
    EXPECT_EQ("error: \"5000\" is not a whole number from 1 to 4096", command("peek 1 0 5000"));
    EXPECT_EQ("error: \"maybe\" is neither \"on\" nor \"off\"", command("join maybe"));
    EXPECT_EQ("error: \"0\" is not a whole number from 1 to 1000000000", command("late 0 5"));
    EXPECT_EQ("error: \"soon\" is not a whole number from 0 to 86400000", command("delay soon"));
}

TEST_F(ControlCommandsTest, PlanFaults)
{
    EXPECT_EQ("ok", command("delay 7"));
    EXPECT_EQ("ok", command("drop 1"));
    EXPECT_EQ("ok", command("late 2 100"));
    EXPECT_EQ("ok", command("duplicate 3"));
    EXPECT_EQ("ok", command("half 4"));
    EXPECT_EQ("", m_faults.dataReply("ab").bytes.toStdString());
    EXPECT_EQ(107, m_faults.dataReply("ab").delay);
    EXPECT_EQ("abab", m_faults.dataReply("ab").bytes.toStdString());
    EXPECT_EQ("a", m_faults.dataReply("ab").bytes.toStdString());
    EXPECT_EQ("ok", command("fragment 3"));
    EXPECT_EQ(3, m_settings.fragment);
    EXPECT_EQ("ok", command("join on"));
    EXPECT_TRUE(m_settings.join);
    EXPECT_EQ("ok", command("join off"));
    EXPECT_FALSE(m_settings.join);
}

TEST_F(ControlCommandsTest, RefuseLoginsAndWrites)
{
    Session session;
    EXPECT_EQ("ok", command("refuse-login on"));
    EXPECT_EQ(Status::LoginRefused,
              replyStatus(m_services.reply(bytes(test::kIdentification), &session)));
    EXPECT_EQ("ok", command("refuse-login off"));
    EXPECT_EQ(Status::Good, replyStatus(m_services.reply(bytes(test::kIdentification), &session)));
    session = test::loggedInSession();
    const QByteArray write = bytes("bb bb 00 00 00 0a 3c 00 00 00 00 00 00 01 25 24");
    EXPECT_EQ("ok", command("fail-writes on"));
    EXPECT_EQ(Status::WriteRefused, replyStatus(m_services.reply(write, &session)));
    EXPECT_EQ("ok", command("fail-writes off"));
    EXPECT_EQ(Status::Good, replyStatus(m_services.reply(write, &session)));
}

TEST_F(ControlCommandsTest, StatusCountsClientsAndRequests)
{
    EXPECT_EQ("ok online clients=0 requests=0 refused=0", command("status"));
    test::Client client(m_server.port());
    client.logIn();
    client.exchange(bytes("bb bb 00 00 00 02 99 00"));
    EXPECT_EQ("ok online clients=1 requests=3 refused=1", command("status"));
    EXPECT_EQ("ok", command("disconnect"));
    EXPECT_TRUE(test::waitUntil([&] { return !client.isConnected(); }));
    EXPECT_EQ("ok online clients=0 requests=3 refused=1", command("status"));
    EXPECT_EQ("ok", command("offline"));
    EXPECT_EQ("ok offline clients=0 requests=3 refused=1", command("status"));
    EXPECT_EQ("ok", command("online"));
    EXPECT_EQ("ok online clients=0 requests=3 refused=1", command("status"));
}

TEST_F(ControlCommandsTest, HelpListsEveryCommand)
{
    const std::string help = command("help");
    for (const char* name :
         {"get LABEL", "set LABEL VALUE", "peek AREA ADDRESS COUNT", "poke AREA ADDRESS HEX",
          "delay MS", "fragment BYTES", "join on|off", "drop COUNT", "late N MS", "half N",
          "duplicate N", "refuse-login on|off", "fail-writes on|off", "disconnect", "offline",
          "online", "status", "help", "stop"})
        EXPECT_NE(std::string::npos, help.find(std::string("\n  ") + name)) << name;
}

TEST_F(ControlCommandsTest, StopEndsTheSimulator)
{
    EXPECT_FALSE(m_stopped);
    EXPECT_EQ("ok", command("stop"));
    EXPECT_TRUE(m_stopped);
}

TEST(FrameText, TellsWhatFramesAreAbout)
{
    EXPECT_EQ("identification", requestText(bytes(test::kIdentification)).toStdString());
    EXPECT_EQ("file request", requestText(bytes(test::kFileRequest)).toStdString());
    EXPECT_EQ("read, 3 entries",
              requestText(bytes("bb bb 00 00 00 06 2e 00 00 00 00 03")).toStdString());
    EXPECT_EQ("write", requestText(bytes("bb bb 00 00 00 02 3c 00")).toStdString());
    EXPECT_EQ("unknown service", requestText(bytes("bb bb 00 00 00 02 ff 00")).toStdString());
    EXPECT_EQ("good", replyText(bytes("bb bb 00 00 00 02 00 00")).toStdString());
    EXPECT_EQ("outside area", replyText(bytes("bb bb 00 00 00 02 00 31")).toStdString());
    EXPECT_EQ("cut short", replyText(bytes("bb bb 00 00")).toStdString());
    EXPECT_EQ("lost", replyText(QByteArray()).toStdString());
}

} // namespace
} // namespace plc::simulator

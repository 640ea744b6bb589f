#include "gateway/operation/status_table.h"

#include <gtest/gtest.h>

#include "tests/gateway/operation/statistics_example.h"

namespace plc::gateway {
namespace test {
namespace {

TEST(StatusTable, TellsHowBrokerStoreAndDevicesDo)
{
    EXPECT_EQ(
        "Plant North/Hall \"1\", plc-gateway 1.2.3, running since 2026-11-22 06:00:00Z (2h)\n"
        "Broker 127.0.0.1:1883 connected since 2026-11-22 07:58:29Z (1m30s); 1001 messages, "
        "2 connections, 3 rebirths\n"
        "Store 5 changes wait, 66 were stored, 57 sent, 6 dropped in all\n"
        "Audit 41 lines wait; 42 requests were refused unanswered\n"
        "\n"
        "Device        Link  For  Good  Stale  Bad  Oldest   Cycle  Published  Stored  "
        "Writes    Problem\n"
        "Press\\u000a1  up    1h   100   7      8    1s250ms  42ms   802        60      "
        "10/11/12\n"
        "Press 2       down  -    0     115    0    -        -      0          0       -"
        "         connection refused\n"
        "\n"
        "Writes: done/refused/unknown\n",
        statusTable(exampleStatistics()).toStdString());
}

TEST(StatusTable, TellsWhatIsWrong)
{
    GatewayStatistics statistics;
    statistics.broker.name = QStringLiteral("b:1");
    statistics.broker.problem = QStringLiteral("refused\nby it");
    statistics.store.problem = QStringLiteral("disk full");
    statistics.audit.waiting = 3;
    statistics.audit.unanswered = 4;
    statistics.audit.problem = QStringLiteral("disk is full");
    const std::string table = statusTable(statistics).toStdString();
    EXPECT_NE(std::string::npos, table.find("Broker b:1 not connected since the start; 0 messages, "
                                            "0 connections, 0 rebirths: refused\\u000aby it\n"));
    EXPECT_NE(std::string::npos, table.find("0 dropped in all: disk full\nAudit 3 lines wait; 4 "
                                            "requests were refused unanswered: disk is full\n"));
}

} // namespace
} // namespace test
} // namespace plc::gateway

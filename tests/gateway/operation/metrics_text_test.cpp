#include "gateway/operation/metrics_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QtCore/QProcess>

#include "tests/gateway/operation/statistics_example.h"

namespace plc::gateway {
namespace test {
namespace {

using ::testing::HasSubstr;

std::string text()
{
    return metricsText(exampleStatistics()).toStdString();
}

TEST(MetricsText, ExplainsEachFamilyOnceBeforeItsSamples)
{
    EXPECT_THAT(text(), HasSubstr("# HELP plc_gateway_device_up Whether the link to the PLC "
                                  "stands.\n# TYPE plc_gateway_device_up gauge\n"
                                  "plc_gateway_device_up{device=\"Press\\n1\"} 1\n"
                                  "plc_gateway_device_up{device=\"Press 2\"} 0\n# HELP "));
}

TEST(MetricsText, EscapesLabels)
{
    EXPECT_THAT(text(), HasSubstr("plc_gateway_info{version=\"1.2.3\",group=\"Plant North\","
                                  "node=\"Hall \\\"1\\\"\"} 1\n"));
    GatewayStatistics statistics;
    statistics.node = QStringLiteral("a\\b");
    EXPECT_THAT(metricsText(statistics).toStdString(), HasSubstr("node=\"a\\\\b\""));
}

TEST(MetricsText, HasAllThatIsCounted)
{
    for (const char* line :
         {"plc_gateway_broker_connected 1\n",
          // Two hours and more before: 1795334400 s is 2026-11-22T08:00:00Z.
          "plc_gateway_broker_connected_since_timestamp_seconds 1795334309.5\n",
          "plc_gateway_broker_connections_total 2\n", "plc_gateway_messages_total 1001\n",
          "plc_gateway_message_bytes_total 123456\n", "plc_gateway_rebirths_total 3\n",
          "plc_gateway_complaints_total 4\n", "plc_gateway_store_changes 5\n",
          "plc_gateway_store_stored_total 66\n", "plc_gateway_store_sent_total 57\n",
          "plc_gateway_store_dropped_total 6\n", "plc_gateway_store_working 1\n",
          "plc_gateway_audit_working 1\n", "plc_gateway_audit_lines_waiting 41\n",
          "plc_gateway_unanswered_requests_total 42\n",
          "plc_gateway_device_values{device=\"Press\\n1\",quality=\"good\"} 100\n",
          "plc_gateway_device_values{device=\"Press\\n1\",quality=\"stale\"} 7\n",
          "plc_gateway_device_values{device=\"Press\\n1\",quality=\"bad\"} 8\n",
          "plc_gateway_device_oldest_value_age_seconds{device=\"Press\\n1\"} 1.25\n",
          "plc_gateway_device_cycle_seconds{device=\"Press\\n1\"} 0.042\n",
          "plc_gateway_device_requests_total{device=\"Press\\n1\"} 9000\n",
          "plc_gateway_device_link_losses_total{device=\"Press\\n1\"} 9\n",
          "plc_gateway_device_messages_total{device=\"Press\\n1\"} 801\n",
          "plc_gateway_device_changes_published_total{device=\"Press\\n1\"} 802\n",
          "plc_gateway_device_changes_stored_total{device=\"Press\\n1\"} 60\n",
          "plc_gateway_device_writes_total{device=\"Press\\n1\",outcome=\"done\"} 10\n",
          "plc_gateway_device_writes_total{device=\"Press\\n1\",outcome=\"refused\"} 11\n",
          "plc_gateway_device_writes_total{device=\"Press\\n1\",outcome=\"unknown\"} 12\n",
          "process_start_time_seconds 1795327200\n", "process_cpu_seconds_total 12.5\n",
          "process_resident_memory_bytes 30000000\n"})
        EXPECT_THAT(text(), HasSubstr("\n" + std::string(line)));
}

TEST(MetricsText, LatenciesAreCountedUpToEachBound)
{
    EXPECT_THAT(text(), HasSubstr("# TYPE plc_gateway_latency_seconds histogram\n"
                                  "plc_gateway_latency_seconds_bucket{le=\"0.005\"} 2\n"
                                  "plc_gateway_latency_seconds_bucket{le=\"0.01\"} 2\n"));
    EXPECT_THAT(text(), HasSubstr("plc_gateway_latency_seconds_bucket{le=\"0.1\"} 2\n"
                                  "plc_gateway_latency_seconds_bucket{le=\"0.25\"} 3\n"));
    EXPECT_THAT(text(), HasSubstr("plc_gateway_latency_seconds_bucket{le=\"10\"} 3\n"
                                  "plc_gateway_latency_seconds_bucket{le=\"+Inf\"} 4\n"
                                  "plc_gateway_latency_seconds_sum 20.206\n"
                                  "plc_gateway_latency_seconds_count 4\n"));
}

TEST(MetricsText, WithoutBrokerAndStoreSaysSo)
{
    GatewayStatistics statistics = exampleStatistics();
    statistics.broker.isConnected = false;
    statistics.store.problem = QStringLiteral("the disk is full");
    statistics.audit.problem = QStringLiteral("the disk is full");
    const std::string told = metricsText(statistics).toStdString();
    EXPECT_THAT(told, HasSubstr("\nplc_gateway_broker_connected 0\n"));
    EXPECT_THAT(told, HasSubstr("_connected_since_timestamp_seconds 0\n"));
    EXPECT_THAT(told, HasSubstr("\nplc_gateway_store_working 0\n"));
    EXPECT_THAT(told, HasSubstr("\nplc_gateway_audit_working 0\n"));
}

#ifdef PLC_PROMTOOL
TEST(MetricsText, IsWhatPrometheusTakes)
{
    QProcess promtool;
    promtool.start(QStringLiteral(PLC_PROMTOOL),
                   {QStringLiteral("check"), QStringLiteral("metrics")});
    ASSERT_TRUE(promtool.waitForStarted());
    promtool.write(metricsText(exampleStatistics()));
    promtool.closeWriteChannel();
    ASSERT_TRUE(promtool.waitForFinished());
    EXPECT_EQ(0, promtool.exitCode());
    EXPECT_EQ("",
              (promtool.readAllStandardOutput() + promtool.readAllStandardError()).toStdString());
}
#endif

} // namespace
} // namespace test
} // namespace plc::gateway

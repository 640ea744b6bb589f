#include "gateway/broker/client_id.h"

#include <gtest/gtest.h>

namespace plc::gateway {
namespace {

TEST(ClientId, DiffersWhereAnyNameDoes)
{
    const QString mine = clientId(QStringLiteral("Plant-1"), QStringLiteral("Hall"));
    EXPECT_EQ("plc-gateway/Plant-1/Hall", mine.toStdString());
    EXPECT_NE(mine, clientId(QStringLiteral("Plant"), QStringLiteral("1-Hall")));
}

TEST(ClientId, DiffersFromBrokerToBroker)
{
    BrokerSettings broker;
    broker.host = QStringLiteral("a-1");
    broker.port = 1883;
    EXPECT_EQ("plc-gateway/P/H/a-1/1883",
              clientId(QStringLiteral("plc-gateway/P/H"), broker).toStdString());
}

} // namespace
} // namespace plc::gateway

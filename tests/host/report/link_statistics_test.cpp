#include "host/report/link_statistics.h"

#include <gtest/gtest.h>

namespace plc::host {
namespace test {
namespace {

SentRequest requestOf(Service service)
{
    SentRequest request;
    request.content.service = service;
    return request;
}

class LinkStatisticsTest : public ::testing::Test {
protected:
    void exchange(Service service, Answer::Kind kind, int result, qint64 time)
    {
        statistics.requestSent(now);
        now += time;
        statistics.requestAnswered(requestOf(service), {kind, result, 0}, now);
    }
    void lose(const QString& reason) { statistics.linkChanged(LinkState::Down, reason, 500); }

    LinkStatistics statistics;
    qint64 now = 1000;
};

TEST_F(LinkStatisticsTest, CountsRequestsByWhatBecameOfThem)
{
    statistics.linkChanged(LinkState::Up, QString(), -1);
    exchange(Service::Identification, Answer::Accepted, 1, 10);
    exchange(Service::File, Answer::Accepted, 1, 20);
    exchange(Service::Read, Answer::Retried, 0, 30);
    exchange(Service::Read, Answer::Abandoned, 11, 40);
    exchange(Service::Read, Answer::Misfit, 0, 50);
    EXPECT_EQ(5u, statistics.requests());
    EXPECT_EQ(2u, statistics.accepted());
    EXPECT_EQ(3u, statistics.refused());
    EXPECT_EQ(1u, statistics.retries());
    EXPECT_EQ(1u, statistics.logins());
    EXPECT_EQ(0u, statistics.unanswered());
    EXPECT_EQ(statistics.failures(), (QMap<int, quint64>{{11, 1}}));
    EXPECT_EQ(5u, statistics.roundTrips().count());
    EXPECT_EQ(30, statistics.roundTrips().percentile(0.5));
    EXPECT_EQ(50, statistics.roundTrips().longest());
}

TEST_F(LinkStatisticsTest, CountsRoundTripsFromTheLoginToTheFirstValues)
{
    const auto logIn = [this] {
        statistics.linkChanged(LinkState::Up, QString(), -1);
        exchange(Service::Identification, Answer::Accepted, 1, 1);
        exchange(Service::File, Answer::Accepted, 1, 1);
    };
    logIn();
    EXPECT_EQ(0U, statistics.roundTripsToValues());
    exchange(Service::Read, Answer::Accepted, 1, 1);
    exchange(Service::Write, Answer::Accepted, 1, 1);
    EXPECT_EQ(1U, statistics.roundTripsToValues());
    lose(QStringLiteral("gone"));
    logIn();
    exchange(Service::Write, Answer::Accepted, 1, 1);
    exchange(Service::Read, Answer::Refused, 0, 1);
    EXPECT_EQ(1U, statistics.roundTripsToValues());
    exchange(Service::Read, Answer::Accepted, 1, 1);
    EXPECT_EQ(3U, statistics.roundTripsToValues());
    lose(QStringLiteral("gone"));
    logIn();
    exchange(Service::Read, Answer::Accepted, 1, 1);
    EXPECT_EQ(3U, statistics.roundTripsToValues());
}

TEST_F(LinkStatisticsTest, CountsFailuresByTheirNumbers)
{
    exchange(Service::Identification, Answer::LoginRefused, 201, 1);
    exchange(Service::Write, Answer::Abandoned, 12, 1);
    exchange(Service::Write, Answer::Abandoned, 12, 1);
    EXPECT_EQ(statistics.failures(), (QMap<int, quint64>{{12, 2}, {201, 1}}));
    EXPECT_EQ(0u, statistics.logins());
}

TEST_F(LinkStatisticsTest, CountsTheReasonsOfLossesAndRequestsLeftWithoutAReply)
{
    EXPECT_EQ(0u, statistics.reconnects());
    lose(QStringLiteral("refused"));
    statistics.linkChanged(LinkState::Up, QString(), -1);
    EXPECT_EQ(0u, statistics.reconnects());
    statistics.requestSent(now);
    lose(QStringLiteral("no reply"));
    statistics.linkChanged(LinkState::Up, QString(), -1);
    exchange(Service::Read, Answer::Accepted, 1, 5);
    lose(QStringLiteral("refused"));
    EXPECT_EQ(1u, statistics.reconnects());
    EXPECT_EQ(1u, statistics.unanswered());
    EXPECT_EQ(statistics.lossReasons(), (QMap<QString, quint64>{{QStringLiteral("no reply"), 1},
                                                                {QStringLiteral("refused"), 2}}));
}

TEST_F(LinkStatisticsTest, DoesNotTakeTheEndForALoss)
{
    statistics.requestSent(now);
    statistics.linkChanged(LinkState::Down, QStringLiteral("stopped"), -1);
    EXPECT_EQ(0u, statistics.unanswered());
    EXPECT_TRUE(statistics.lossReasons().isEmpty());
}

TEST_F(LinkStatisticsTest, DoesNotGrowWithTheNumberOfReasons)
{
    for (int i = 0; i < 1000; ++i)
        lose(QStringLiteral("only %1 bytes").arg(i));
    EXPECT_EQ(statistics.lossReasons().size(), LinkStatistics::kMostReasons + 1);
    EXPECT_EQ(980u, statistics.lossReasons().value(QStringLiteral("other reasons")));
}

} // namespace
} // namespace test
} // namespace plc::host

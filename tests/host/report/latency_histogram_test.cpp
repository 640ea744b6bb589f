#include "host/report/latency_histogram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace plc::host {
namespace test {
namespace {

constexpr double kShares[] = {0.001, 0.1, 0.5, 0.9, 0.99, 0.999, 1.0};

/// The exact value by the definition: at least this share of the samples is not above it.
qint64 exactPercentile(const std::vector<qint64>& sorted, double share)
{
    const size_t rank = size_t(std::max(1.0, std::ceil(share * double(sorted.size()))));
    return sorted[rank - 1];
}

void expectExactWithinPrecision(std::vector<qint64> samples)
{
    LatencyHistogram histogram;
    for (const qint64 sample : samples)
        histogram.add(sample);
    std::sort(samples.begin(), samples.end());
    EXPECT_EQ(histogram.count(), samples.size());
    EXPECT_EQ(histogram.longest(), samples.back());
    for (const double share : kShares) {
        const qint64 exact = exactPercentile(samples, share);
        EXPECT_GE(histogram.percentile(share), exact) << share;
        EXPECT_LE(double(histogram.percentile(share)), double(exact) * (1 + 1.0 / 128)) << share;
    }
}

TEST(LatencyHistogram, IsExactForShortTimes)
{
    LatencyHistogram histogram;
    for (qint64 time = 1; time <= 200; ++time)
        histogram.add(time);
    EXPECT_EQ(100, histogram.percentile(0.5));
    EXPECT_EQ(180, histogram.percentile(0.9));
    EXPECT_EQ(198, histogram.percentile(0.99));
    EXPECT_EQ(200, histogram.percentile(1));
    EXPECT_EQ(1, histogram.percentile(0.001));
}

TEST(LatencyHistogram, KeepsItsPrecisionFromNanosecondsToAnHour)
{
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> exponent(0, std::log(3.6e12));
    std::vector<qint64> samples;
    for (int i = 0; i < 100000; ++i)
        samples.push_back(qint64(std::exp(exponent(random))));
    expectExactWithinPrecision(samples);
}

TEST(LatencyHistogram, KeepsItsPrecisionWhereTimesAreAlike)
{
    std::mt19937_64 random(2);
    std::normal_distribution<double> around(2e6, 1e5);
    std::vector<qint64> samples;
    for (int i = 0; i < 9999; ++i)
        samples.push_back(qint64(around(random)));
    expectExactWithinPrecision(samples);
}

TEST(LatencyHistogram, IsExactToItsPrecisionAtEveryPowerOfTwo)
{
    for (int bit = 0; bit < 41; ++bit) {
        for (const qint64 difference : {-1, 0, 1}) {
            const qint64 time = (qint64(1) << bit) + difference;
            expectExactWithinPrecision({time, 2 * time, (qint64(1) << 41)});
        }
    }
}

TEST(LatencyHistogram, GivesASingleTimeExactly)
{
    LatencyHistogram histogram;
    histogram.add(123456789);
    for (const double share : kShares)
        EXPECT_EQ(123456789, histogram.percentile(share));
}

TEST(LatencyHistogram, CountsTimesOfHoursToo)
{
    LatencyHistogram histogram;
    const qint64 day = qint64(24) * 3600 * 1000000000;
    histogram.add(day);
    histogram.add(1);
    EXPECT_EQ(histogram.longest(), day);
    EXPECT_EQ(1, histogram.percentile(0.5));
    EXPECT_GT(histogram.percentile(1), qint64(3600) * 1000000000);
}

TEST(LatencyHistogram, GivesZeroWithoutTimes)
{
    EXPECT_EQ(0, LatencyHistogram().percentile(0.99));
    EXPECT_EQ(0, LatencyHistogram().longest());
}

} // namespace
} // namespace test
} // namespace plc::host

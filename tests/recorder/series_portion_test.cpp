#include "recorder/series_portion.h"

#include <gtest/gtest.h>

#include <QtCore/QVector>

namespace {

using plc::recorder::BatchDecoder;
using plc::recorder::Quality;
using plc::recorder::RunAndSeries;
using plc::recorder::Sample;
using plc::recorder::SeriesPortion;

/// Five bytes in a batch of its series: series, time, size and two of the value.
Sample sampleAt(qint64 time)
{
    return {time, Quality::Good, "ab"};
}

/// Gives the changes as a compaction does, which finds them in the same order each time.
void offer(const QVector<RunAndSeries>& changes, SeriesPortion* portion)
{
    for (int i = 0; i < changes.size(); ++i) {
        if (portion->wants(changes[i]))
            portion->append(changes[i], sampleAt(i));
    }
}

/// Times of the changes of a series.
QVector<qint64> times(const SeriesPortion& portion, const RunAndSeries& key)
{
    QVector<qint64> found;
    BatchDecoder changes(portion.changes().value(key).batch(), 0);
    while (changes.next()) {
        EXPECT_EQ(key.second, changes.series());
        EXPECT_EQ("ab", changes.sample().bytes);
        found.append(changes.sample().time);
    }
    return found;
}

using Keys = QList<RunAndSeries>;
using Times = QVector<qint64>;

TEST(SeriesPortion, HoldsTheFirstSeriesThatFit)
{
    const QVector<RunAndSeries> changes{{1, 3}, {1, 1}, {1, 2}, {1, 1}, {1, 3}};
    SeriesPortion portion(15);
    offer(changes, &portion);
    EXPECT_EQ((Keys{{1, 1}, {1, 2}}), portion.changes().keys());
    EXPECT_EQ((Times{1, 3}), times(portion, {1, 1}));
    EXPECT_EQ((Times{2}), times(portion, {1, 2}));
    EXPECT_FALSE(portion.isLast());

    portion.goOn();
    EXPECT_TRUE(portion.changes().isEmpty());
    offer(changes, &portion);
    EXPECT_EQ((Keys{{1, 3}}), portion.changes().keys());
    EXPECT_EQ((Times{0, 4}), times(portion, {1, 3}));
    EXPECT_TRUE(portion.isLast());
}

TEST(SeriesPortion, HoldsAllWhereAllFit)
{
    SeriesPortion portion(15);
    offer({{1, 3}, {1, 1}, {1, 2}}, &portion);
    EXPECT_EQ((Keys{{1, 1}, {1, 2}, {1, 3}}), portion.changes().keys());
    EXPECT_TRUE(portion.isLast());
}

TEST(SeriesPortion, TakesASeriesWholeThatIsTooLargeAlone)
{
    SeriesPortion portion(9);
    const QVector<RunAndSeries> changes{{1, 7}, {1, 7}, {1, 8}, {1, 7}};
    offer(changes, &portion);
    EXPECT_EQ((Times{0, 1, 3}), times(portion, {1, 7}));
    EXPECT_EQ(1, portion.changes().size());
    EXPECT_FALSE(portion.isLast());
    portion.goOn();
    offer(changes, &portion);
    EXPECT_EQ((Times{2}), times(portion, {1, 8}));
    EXPECT_TRUE(portion.isLast());
}

TEST(SeriesPortion, TakesRunsBeforeSeries)
{
    SeriesPortion portion(5);
    const QVector<RunAndSeries> changes{{2, 1}, {1, 9}, {1, 2}};
    QVector<RunAndSeries> order;
    offer(changes, &portion);
    for (; !portion.isLast(); offer(changes, &portion)) {
        order += portion.changes().keys().toVector();
        portion.goOn();
    }
    order += portion.changes().keys().toVector();
    EXPECT_EQ((QVector<RunAndSeries>{{1, 2}, {1, 9}, {2, 1}}), order);
}

TEST(SeriesPortion, OfNothingIsTheLast)
{
    SeriesPortion portion(0);
    EXPECT_TRUE(portion.isLast());
    EXPECT_TRUE(portion.changes().isEmpty());
}

} // namespace

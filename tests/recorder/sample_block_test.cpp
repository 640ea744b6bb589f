#include "recorder/sample_block.h"

#include <limits>

#include "recorder/change_batch.h"
#include "tests/recorder/recording.h"

namespace plc::recorder {
namespace test {
namespace {

QByteArray blockOf(const QVector<Sample>& samples)
{
    SampleEncoder encoder;
    for (const Sample& sample : samples)
        encoder.append(sample);
    return encoder.block();
}

QVector<Sample> samplesOf(const QByteArray& block)
{
    QVector<Sample> samples;
    SampleDecoder decoder(block);
    while (decoder.next())
        samples.append(decoder.sample());
    return samples;
}

TEST(SampleBlock, HoldsWhatDiffersFromTheSampleBefore)
{
    const QVector<Sample> samples{{3, Quality::Good, "abcd"},
                                  {6, Quality::Good, "abXd"},
                                  {9, Quality::Stale, "abXd"},
                                  {8, Quality::Gap, {}}};
    // Whole, deviation 3 (6); patch, at the same interval, 2 equal bytes before and 1 behind; the
    // same value; whole and empty, deviation -4 (7).
    EXPECT_EQ(
        "0806"
        "04"
        "61626364"
        "14"
        "21"
        "58"
        "11"
        "0b07"
        "00",
        blockOf(samples).toHex().toStdString());
    EXPECT_EQ(samples, samplesOf(blockOf(samples)));
}

TEST(SampleBlock, HoldsAnyTimeAndLongValues)
{
    const QByteArray zeros(5000, '\0');
    const QByteArray patched = QByteArray(zeros).replace(3000, 2, "xy");
    const QVector<Sample> samples{{std::numeric_limits<qint64>::max(), Quality::Good, zeros},
                                  {std::numeric_limits<qint64>::min(), Quality::Bad, patched},
                                  {0, Quality::Good, "short"}};
    const QByteArray block = blockOf(samples);
    EXPECT_EQ(samples, samplesOf(block));
    EXPECT_LT(block.size(), 5060);
}

TEST(SampleBlock, GoesOnWhereItEnded)
{
    const QVector<Sample> samples{{1000, Quality::Good, "1"}, {2000, Quality::Good, "2"}};
    SampleEncoder encoder(blockOf(samples.mid(0, 1)));
    encoder.append(samples[1]);
    EXPECT_EQ(blockOf(samples), encoder.block());
}

TEST(SampleBlock, DamageEndsItAtAnyByte)
{
    const QByteArray block =
        blockOf({{1000, Quality::Good, "abcd"}, {2000, Quality::Good, "abce"}});
    for (int size = 0; size < int(block.size()); ++size)
        EXPECT_LT(samplesOf(block.left(size)).size(), 2) << size;
    // A patch beyond the value, and a length beyond the block.
    EXPECT_TRUE(samplesOf(QByteArray::fromHex("0402ff")).isEmpty());
    EXPECT_TRUE(samplesOf(QByteArray::fromHex("0802ffffffffffffffffff01")).isEmpty());
    EXPECT_TRUE(samplesOf(QByteArray::fromHex("0802ffffffffffffffffffff")).isEmpty());
}

TEST(ChangeBatch, HoldsChangesInTheirOrder)
{
    const QVector<Change> changes{{5, {990, Quality::Good, "ab"}}, {4, {1001, Quality::Bad, {}}}};
    const QByteArray batch = encodeBatch(changes, 1000);
    // Series +5, -1; times -10, +11; sizes 2 and 0 with their quality.
    EXPECT_EQ(
        "0a1308"
        "6162"
        "011602",
        batch.toHex().toStdString());
    BatchDecoder decoder(batch, 1000);
    for (const Change& change : changes) {
        ASSERT_TRUE(decoder.next());
        EXPECT_EQ(change.series, decoder.series());
        EXPECT_EQ(change.sample, decoder.sample());
    }
    EXPECT_FALSE(decoder.next());
    EXPECT_FALSE(decoder.isDamaged());
}

TEST(ChangeBatch, HoldsTimesThatLieAsFarApartAsCanBe)
{
    const qint64 times[] = {0, std::numeric_limits<qint64>::min(),
                            std::numeric_limits<qint64>::max(), -1};
    BatchEncoder encoder;
    for (const qint64 time : times)
        encoder.append(7, {time, Quality::Good, "a"});
    BatchDecoder decoder(encoder.batch(), 0);
    for (const qint64 time : times) {
        ASSERT_TRUE(decoder.next());
        EXPECT_EQ(7, decoder.series());
        EXPECT_EQ((Sample{time, Quality::Good, "a"}), decoder.sample());
    }
    EXPECT_FALSE(decoder.next());
}

} // namespace
} // namespace test
} // namespace plc::recorder

#include "image/data_image.h"

#include <gtest/gtest.h>

#include <map>
#include <vector>

#include "base/wrapped_int.h"
#include "support/random.h"

namespace plc::test {
namespace {

typedef std::vector<uchar> Bytes;
typedef std::map<quint64, uchar> PlainImage;

constexpr quint64 kArea7 = quint64(7) << 32;

Bytes counting(int count)
{
    Bytes bytes;
    for (int i = 0; i < count; ++i)
        bytes.push_back(uchar(i * 31 + i / 256 + 1));
    return bytes;
}

std::vector<quint64> keysOf(const DataImage& image)
{
    const QList<quint64> keys = image.keys();
    return std::vector<quint64>(keys.begin(), keys.end());
}

std::vector<quint64> keysOf(const PlainImage& plain)
{
    std::vector<quint64> keys;
    for (const auto& byte : plain)
        keys.push_back(byte.first);
    return keys;
}

TEST(DataImageKey, HoldsTheAreaAboveTheAddress)
{
    EXPECT_EQ(Q_UINT64_C(0x0000000700000020), DataImage::key(7, 0x20));
    EXPECT_EQ(Q_UINT64_C(0xFFFFFFFF00000000), DataImage::key(0xFFFFFFFF, 0));
    EXPECT_EQ(Q_UINT64_C(0x00000000FFFFFFFF), DataImage::key(0, 0xFFFFFFFF));
    EXPECT_EQ(Q_UINT64_C(0), DataImage::key(0, 0));
}

TEST(DataImageBytes, NewImageIsEmpty)
{
    DataImage image;
    EXPECT_TRUE(image.isEmpty());
    EXPECT_EQ(0, image.size());
    EXPECT_EQ(0, image.count());
    EXPECT_TRUE(image.keys().isEmpty());
    EXPECT_FALSE(image.contains(0));
    EXPECT_EQ(0, image.value(0));
}

TEST(DataImageBytes, AskingCreatesNothing)
{
    DataImage image;
    image.insert(kArea7, 5);
    EXPECT_FALSE(image.contains(kArea7 + 1));
    EXPECT_EQ(0, image.value(kArea7 + 1));
    EXPECT_FALSE(image.contains(kArea7 + 1000000));
    EXPECT_EQ(0, image.value(kArea7 + 1000000));
    EXPECT_EQ(1, image.size());
}

TEST(DataImageBytes, TouchedByteExistsWithValueZero)
{
    DataImage image;
    EXPECT_EQ(0, image[kArea7 + 3]);
    EXPECT_TRUE(image.contains(kArea7 + 3));
    EXPECT_FALSE(image.contains(kArea7 + 2));
    EXPECT_FALSE(image.contains(kArea7 + 4));
    EXPECT_EQ(1, image.size());
    EXPECT_FALSE(image.isEmpty());
}

TEST(DataImageBytes, TouchingAnExistingByteKeepsItsValue)
{
    DataImage image;
    image[kArea7] = 200;
    EXPECT_EQ(200, image[kArea7]);
    EXPECT_EQ(1, image.size());
    EXPECT_EQ(200, image.value(kArea7));
}

TEST(DataImageBytes, InsertReplacesTheValue)
{
    DataImage image;
    image.insert(kArea7, 1);
    image.insert(kArea7, 255);
    EXPECT_EQ(255, image.value(kArea7));
    EXPECT_EQ(1, image.size());
    image.insert(kArea7, 0);
    EXPECT_TRUE(image.contains(kArea7));
    EXPECT_EQ(1, image.size());
}

TEST(DataImageBytes, AreasAreKeptApart)
{
    DataImage image;
    image.insert(DataImage::key(1, 5), 10);
    image.insert(DataImage::key(2, 5), 20);
    image.insert(DataImage::key(0xFFFFFFFF, 5), 30);
    EXPECT_EQ(10, image.value(DataImage::key(1, 5)));
    EXPECT_EQ(20, image.value(DataImage::key(2, 5)));
    EXPECT_EQ(30, image.value(DataImage::key(0xFFFFFFFF, 5)));
    EXPECT_FALSE(image.contains(DataImage::key(0, 5)));
    EXPECT_FALSE(image.contains(DataImage::key(0xFFFF, 5)));
}

TEST(DataImageBytes, ExtremeKeysExistLikeOthers)
{
    DataImage image;
    const quint64 keys[] = {0, 0xFFFFFFFF, Q_UINT64_C(0xFFFFFFFF00000000), ~quint64(0)};
    for (int i = 0; i < 4; ++i)
        image.insert(keys[i], uchar(i + 1));
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(i + 1, image.value(keys[i]));
    EXPECT_EQ((std::vector<quint64>{keys[0], keys[1], keys[2], keys[3]}), keysOf(image));
}

TEST(DataImageBytes, KeysAscend)
{
    DataImage image;
    const quint64 keys[] = {DataImage::key(9, 1),           DataImage::key(2, 0x80000000u),
                            DataImage::key(2, 70000),       DataImage::key(2, 3),
                            DataImage::key(0x80000000u, 0), DataImage::key(2, 4)};
    for (quint64 key : keys)
        image[key];
    EXPECT_EQ((std::vector<quint64>{keys[3], keys[5], keys[2], keys[1], keys[0], keys[4]}),
              keysOf(image));
}

TEST(DataImageBytes, ClearForgetsAllBytes)
{
    DataImage image;
    for (quint32 i = 0; i < 5000; ++i)
        image.insert(DataImage::key(i % 7, i * 97), 1);
    image.clear();
    EXPECT_TRUE(image.isEmpty());
    EXPECT_EQ(0, image.size());
    EXPECT_TRUE(image.keys().isEmpty());
    EXPECT_FALSE(image.contains(0));
    EXPECT_EQ(0, image[DataImage::key(1, 97)]);
    EXPECT_EQ(1, image.size());
    image.clear();
    image.clear();
    EXPECT_TRUE(image.isEmpty());
}

TEST(DataImageBytes, ReferenceStaysValidWhileTheImageGrows)
{
    DataImage image;
    uchar& byte = image[kArea7 + 5];
    uchar& neighbour = image[kArea7 + 6];
    for (quint32 i = 0; i < 20000; ++i)
        image.insert(DataImage::key(i % 50, i * 5000), 1);
    byte = 99;
    neighbour = 98;
    EXPECT_EQ(99, image.value(kArea7 + 5));
    EXPECT_EQ(98, image.value(kArea7 + 6));
}

TEST(DataImageRanges, WritingCreatesItsBytesAndNoOther)
{
    DataImage image;
    const Bytes bytes = {1, 0, 255};
    image.write(7, 100, bytes.data(), 3);
    EXPECT_EQ((std::vector<quint64>{kArea7 + 100, kArea7 + 101, kArea7 + 102}), keysOf(image));
    EXPECT_EQ(1, image.value(kArea7 + 100));
    EXPECT_EQ(0, image.value(kArea7 + 101));
    EXPECT_EQ(255, image.value(kArea7 + 102));
}

TEST(DataImageRanges, ReadingCreatesItsBytesWithZero)
{
    DataImage image;
    image.insert(kArea7 + 101, 5);
    Bytes out(4, 0xEE);
    image.read(7, 100, out.data(), 3);
    EXPECT_EQ((Bytes{0, 5, 0, 0xEE}), out);
    EXPECT_EQ((std::vector<quint64>{kArea7 + 100, kArea7 + 101, kArea7 + 102}), keysOf(image));
}

TEST(DataImageRanges, BytesTouchedTwiceCountOnce)
{
    DataImage image;
    const Bytes bytes = counting(10);
    Bytes out(10);
    image.write(7, 100, bytes.data(), 10);
    EXPECT_EQ(10, image.size());
    image.write(7, 105, bytes.data(), 10);
    EXPECT_EQ(15, image.size());
    image.read(7, 95, out.data(), 10);
    EXPECT_EQ(20, image.size());
    image.read(7, 95, out.data(), 10);
    EXPECT_EQ(20, image.size());
    EXPECT_EQ(20, image.count());
}

TEST(DataImageRanges, CountsOfZeroOrLessDoNothing)
{
    DataImage image;
    std::vector<uchar> bytes(64, 77);
    // Compilers that look into the calls would warn of copies that are never made.
    uchar* volatile nowhere = nullptr;
    for (int count : {0, -1, -2147483647 - 1}) {
        image.write(7, 100, bytes.data(), count);
        image.read(7, 100, bytes.data(), count);
        image.write(7, 100, nowhere, count);
        image.read(7, 100, nowhere, count);
    }
    EXPECT_TRUE(image.isEmpty());
    EXPECT_EQ(std::vector<uchar>(64, 77), bytes);
}

TEST(DataImageRanges, CrossPages)
{
    // Longer than any page one would choose, at starts that fit none.
    const int count = 300000;
    const Bytes bytes = counting(count);
    for (quint32 start : {0u, 1u, 63u, 255u, 4095u, 65535u, 65536u, 1000003u}) {
        DataImage image;
        image.write(7, start, bytes.data(), count);
        EXPECT_EQ(count, image.size());
        EXPECT_FALSE(image.contains(kArea7 + start - 1));
        EXPECT_TRUE(image.contains(kArea7 + start));
        EXPECT_TRUE(image.contains(kArea7 + start + count - 1));
        EXPECT_FALSE(image.contains(kArea7 + start + count));
        for (int i = 0; i < count; i += 101)
            ASSERT_EQ(bytes[size_t(i)], image.value(kArea7 + start + quint64(i))) << start;
        Bytes out(count);
        image.read(7, start, out.data(), count);
        ASSERT_TRUE(bytes == out) << start;
        EXPECT_EQ(count, image.size());
    }
}

TEST(DataImageRanges, GoOnAtZeroAfterTheLastAddress)
{
    DataImage image;
    const Bytes bytes = {1, 2, 3, 4};
    image.write(3, 0xFFFFFFFE, bytes.data(), 4);
    EXPECT_EQ(1, image.value(DataImage::key(3, 0xFFFFFFFE)));
    EXPECT_EQ(2, image.value(DataImage::key(3, 0xFFFFFFFF)));
    EXPECT_EQ(3, image.value(DataImage::key(3, 0)));
    EXPECT_EQ(4, image.value(DataImage::key(3, 1)));
    EXPECT_FALSE(image.contains(DataImage::key(4, 0)));
    EXPECT_EQ(4, image.size());

    Bytes out(6, 0xEE);
    image.read(3, 0xFFFFFFFD, out.data(), 6);
    EXPECT_EQ((Bytes{0, 1, 2, 3, 4, 0}), out);
    EXPECT_FALSE(image.contains(DataImage::key(4, 0)));
    EXPECT_FALSE(image.contains(DataImage::key(2, 0xFFFFFFFF)));
}

TEST(DataImageRanges, LongRangeGoesOnAtZeroAfterTheLastAddress)
{
    DataImage image;
    const int count = 200000;
    const Bytes bytes = counting(count);
    image.write(0xFFFFFFFF, 0xFFFFFFFF - 99999, bytes.data(), count);
    EXPECT_EQ(count, image.size());
    EXPECT_EQ(bytes[99999], image.value(DataImage::key(0xFFFFFFFF, 0xFFFFFFFF)));
    EXPECT_EQ(bytes[100000], image.value(DataImage::key(0xFFFFFFFF, 0)));
    EXPECT_FALSE(image.contains(DataImage::key(0, 0)));
    Bytes out(count);
    image.read(0xFFFFFFFF, 0xFFFFFFFF - 99999, out.data(), count);
    EXPECT_TRUE(bytes == out);
}

TEST(DataImageRanges, SingleByteRangesEqualSingleBytes)
{
    DataImage image;
    for (quint32 i = 0; i < 5000; ++i) {
        const uchar byte = uchar(i * 7);
        image.write(7, i, &byte, 1);
        uchar out = 1;
        image.read(7, i, &out, 1);
        ASSERT_EQ(byte, out);
        ASSERT_EQ(qint64(i) + 1, image.size());
    }
}

// --- Addresses that somebody has chosen ---

constexpr int kManyPages = 2000;

/// Slots that a search for one of the bytes looks at, on an average.
double meanSearchLength(const std::vector<quint64>& keys, quint64 key)
{
    DataImage image{KeyedHash(key)};
    for (quint64 place : keys)
        image[place];
    double sum = 0;
    for (quint64 place : keys)
        sum += image.searchLength(place);
    return sum / double(keys.size());
}

std::vector<quint64> atDistance(quint64 distance)
{
    std::vector<quint64> keys;
    for (int i = 0; i < kManyPages; ++i)
        keys.push_back(quint64(i) * distance);
    return keys;
}

TEST(ChosenAddresses, AtEqualDistancesAreOrdinary)
{
    for (int bits = 8; bits < 64 - 13; ++bits) {
        EXPECT_LT(meanSearchLength(atDistance(quint64(1) << bits), 1), 4) << bits;
        EXPECT_LT(meanSearchLength(atDistance((quint64(1) << bits) + 256), 2), 4) << bits;
    }
}

TEST(ChosenAddresses, InAreasThatDifferInTheUpperBitsAreOrdinary)
{
    std::vector<quint64> keys;
    for (quint32 i = 0; i < 4096; ++i)
        keys.push_back(DataImage::key(i << 20, 0));
    for (quint64 key = 1; key < 4; ++key)
        EXPECT_LT(meanSearchLength(keys, key), 4) << key;
}

TEST(ChosenAddresses, ThatCrowdUnderOneKeyAreOrdinaryUnderAnother)
{
    constexpr quint32 kSlots = 4096;
    const KeyedHash known(1);
    std::vector<quint64> keys;
    for (quint64 page = 0; int(keys.size()) < kManyPages; ++page) {
        if ((known(page) & (kSlots - 1)) < kSlots / 64)
            keys.push_back(page << 8);
    }
    ASSERT_GT(meanSearchLength(keys, 1), 500);
    for (quint64 key = 2; key < 10; ++key)
        EXPECT_LT(meanSearchLength(keys, key), 4 * meanSearchLength(atDistance(256), key)) << key;
}

/// The image beside a plain map; both are changed alike.
class Twins {
public:
    explicit Twins(quint32 seed) : m_random(seed) {}

    void step()
    {
        const int kind = m_random.below(100);
        if (kind < 20)
            insert();
        else if (kind < 35)
            touch();
        else if (kind < 50)
            ask();
        else if (kind < 75)
            write();
        else if (kind < 99)
            read();
        else if (m_random.oneIn(40))
            clear();
    }

    void compareAll() const
    {
        ASSERT_EQ(qint64(m_plain.size()), m_image.size());
        ASSERT_EQ(m_plain.empty(), m_image.isEmpty());
        ASSERT_TRUE(keysOf(m_plain) == keysOf(m_image));
        bool areEqual = true;
        for (const auto& byte : m_plain)
            areEqual = areEqual && byte.second == m_image.value(byte.first);
        ASSERT_TRUE(areEqual);
    }

private:
    quint32 area()
    {
        static const quint32 areas[] = {0, 1, 2, 0x7FFFFFFF, 0x80000000, 0xFFFF, 0xFFFFFFFF};
        return areas[m_random.below(7)];
    }

    quint32 address()
    {
        switch (m_random.below(6)) {
            case 0:
                return m_random.bits();
            case 1:
                return advanced(0u, -m_random.below(3000));
            case 2:
                return advanced(quint32(m_random.below(200)) * 4096, m_random.between(-2, 2));
            case 3:
                return advanced(0x80000000u, m_random.between(-2000, 2000));
            default:
                return quint32(m_random.below(20000));
        }
    }

    int count()
    {
        return m_random.oneIn(20) ? m_random.between(-3, 12000) : m_random.between(-3, 300);
    }

    uchar plainTouch(quint64 key) { return m_plain.insert({key, 0}).first->second; }

    void insert()
    {
        const quint64 key = DataImage::key(area(), address());
        const uchar value = uchar(m_random.bits());
        m_image.insert(key, value);
        m_plain[key] = value;
    }

    void touch()
    {
        const quint64 key = DataImage::key(area(), address());
        ASSERT_EQ(plainTouch(key), m_image[key]);
        if (m_random.oneIn(2)) {
            m_image[key] = 17;
            m_plain[key] = 17;
        }
    }

    void ask()
    {
        const quint64 key = DataImage::key(area(), address());
        const auto found = m_plain.find(key);
        ASSERT_EQ(found != m_plain.end(), m_image.contains(key));
        ASSERT_EQ(found == m_plain.end() ? 0 : found->second, m_image.value(key));
        ASSERT_EQ(qint64(m_plain.size()), m_image.size());
    }

    void write()
    {
        const quint32 inArea = area();
        const quint32 from = address();
        const int bytes = count();
        Bytes data;
        for (int i = 0; i < bytes; ++i)
            data.push_back(uchar(m_random.bits()));
        m_image.write(inArea, from, data.data(), bytes);
        for (int i = 0; i < bytes; ++i)
            m_plain[DataImage::key(inArea, advanced(from, i))] = data[size_t(i)];
        ASSERT_EQ(qint64(m_plain.size()), m_image.size());
    }

    void read()
    {
        const quint32 inArea = area();
        const quint32 from = address();
        const int bytes = count();
        Bytes out(size_t(qMax(bytes, 0)) + 1, 0xEE);
        m_image.read(inArea, from, out.data(), bytes);
        Bytes expected;
        for (int i = 0; i < bytes; ++i)
            expected.push_back(plainTouch(DataImage::key(inArea, advanced(from, i))));
        expected.push_back(0xEE);
        ASSERT_TRUE(expected == out) << "area " << inArea << ", from " << from << ", " << bytes;
        ASSERT_EQ(qint64(m_plain.size()), m_image.size());
    }

    void clear()
    {
        m_image.clear();
        m_plain.clear();
    }

    Random m_random;
    DataImage m_image;
    PlainImage m_plain;
};

class DataImageTwins : public ::testing::TestWithParam<quint32> {};

INSTANTIATE_TEST_SUITE_P(Seeds, DataImageTwins, ::testing::Values(1u, 2u, 3u, 4u));

TEST_P(DataImageTwins, BehavesAsAMapOfBytes)
{
    Twins twins(GetParam());
    for (int i = 0; i < 1500; ++i) {
        twins.step();
        if (i % 300 == 299)
            twins.compareAll();
        ASSERT_FALSE(HasFatalFailure()) << "step " << i;
    }
}

} // namespace
} // namespace plc::test

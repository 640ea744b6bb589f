#include "base/keyed_hash.h"

#include <gtest/gtest.h>
#include <unistd.h>
#include <QtCore/QString>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <set>
#include <string>

namespace plc::test {
namespace {

TEST(FoldedProduct, IsTheUpperHalfOverTheLower)
{
    constexpr quint64 kAll = ~quint64(0);
    EXPECT_EQ(15u, foldedProduct(3, 5));
    EXPECT_EQ(0u, foldedProduct(0, kAll));
    // 2^63 * 2 = 2^64
    EXPECT_EQ(1u, foldedProduct(quint64(1) << 63, 2));
    // (2^64 - 1)^2 = 2^128 - 2^65 + 1: FFFFFFFF FFFFFFFE and 1
    EXPECT_EQ(kAll, foldedProduct(kAll, kAll));
    // (2^32 + 3) (2^33 + 5) = 2^65 + 11 * 2^32 + 15
    EXPECT_EQ((quint64(11) << 32) + (15 ^ 2),
              foldedProduct((quint64(1) << 32) + 3, (quint64(1) << 33) + 5));
}

TEST(KeyedHash, DependsOnTheKey)
{
    const QString name = "Level";
    std::set<quint32> ofNumber;
    std::set<quint32> ofName;
    for (quint64 key = 0; key < 100; ++key) {
        ofNumber.insert(KeyedHash(key)(7));
        ofName.insert(KeyedHash(key)(LabelText(name)));
    }
    EXPECT_EQ(100u, ofNumber.size());
    EXPECT_EQ(100u, ofName.size());
}

TEST(KeyedHash, IsTheSameForTheSameKeyAndInput)
{
    const QString name = QString("Station%1").arg(1);
    const QString same = "Station1";
    EXPECT_EQ(KeyedHash(9)(LabelText(name)), KeyedHash(9)(LabelText(same)));
    EXPECT_EQ(KeyedHash(9)(LabelText()), KeyedHash(9)(LabelText(QString(""))));
    EXPECT_EQ(KeyedHash(9)(12345), KeyedHash(9)(12345));
}

int onesIn(quint32 bits)
{
    int ones = 0;
    for (; bits != 0; bits &= bits - 1)
        ++ones;
    return ones;
}

TEST(KeyedHash, EveryBitOfANumberChangesHalfOfTheHash)
{
    constexpr int kNumbers = 300;
    const KeyedHash hash(1);
    for (int bit = 0; bit < 64; ++bit) {
        int changed = 0;
        for (quint64 i = 0; i < kNumbers; ++i)
            changed += onesIn(hash(i << 20) ^ hash(i << 20 ^ quint64(1) << bit));
        EXPECT_NEAR(16.0, double(changed) / kNumbers, 1) << "bit " << bit;
    }
}

TEST(KeyedHash, EveryCharacterChangesHalfOfTheHash)
{
    constexpr int kKeys = 300;
    for (int size = 1; size <= 40; ++size) {
        const QString name(size, 'n');
        for (int place = 0; place < size; ++place) {
            QString other = name;
            other[place] = 'o'; // one bit
            int changed = 0;
            for (quint64 key = 0; key < kKeys; ++key)
                changed +=
                    onesIn(KeyedHash(key)(LabelText(name)) ^ KeyedHash(key)(LabelText(other)));
            EXPECT_NEAR(16.0, double(changed) / kKeys, 1) << size << ", " << place;
        }
    }
}

TEST(KeyedHash, LengthsOfZerosDiffer)
{
    const QString zeros(64, QChar(0));
    const KeyedHash hash(1);
    std::set<quint32> hashes;
    for (int size = 0; size <= 64; ++size)
        hashes.insert(hash(LabelText(zeros.constData(), size)));
    EXPECT_EQ(65u, hashes.size());
}

/// Set in a process that is to print its key.
constexpr const char* kPrintsKey = "PLC_PRINTS_KEY";

/// What another process of this program prints of its key.
std::string keyOfAnotherProcess()
{
    char program[4096] = "";
    if (readlink("/proc/self/exe", program, sizeof program - 1) < 0)
        return std::string();
    const std::string command = std::string(kPrintsKey) + "=1 " PLC_EMULATOR " '" + program +
                                "' --gtest_filter=ProcessKey.DiffersFromProcessToProcess";
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    char line[256];
    while (pipe && std::fgets(line, sizeof line, pipe.get())) {
        if (std::string(line).compare(0, 4, "key ") == 0)
            return line;
    }
    return std::string();
}

TEST(ProcessKey, DiffersFromProcessToProcess)
{
    if (std::getenv(kPrintsKey)) {
        std::printf("key %llu\n", static_cast<unsigned long long>(processKey()));
        return;
    }
    const std::string one = keyOfAnotherProcess();
    const std::string other = keyOfAnotherProcess();
    ASSERT_NE("", one);
    ASSERT_NE("", other);
    EXPECT_NE(one, other);
}

} // namespace
} // namespace plc::test

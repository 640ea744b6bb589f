#include <cstring>

#include "support/driver_fixture.h"

namespace plc {
namespace test {
namespace {

/// ComInfo as the plain words that a host may fill it as.
struct Words {
    qint32 word[19];
};
static_assert(sizeof(ComInfo) == sizeof(Words), "19 words of 32 bits");

ComInfo numberedWords(int start)
{
    Words words;
    for (int i = 0; i < 19; ++i)
        words.word[i] = start + i;
    ComInfo info;
    std::memcpy(static_cast<void*>(&info), &words, sizeof info);
    return info;
}

Words wordsOf(const ComInfo& info)
{
    Words words;
    std::memcpy(&words, &info, sizeof words);
    return words;
}

class Registration : public ::testing::Test {
protected:
    ~Registration() override
    {
        SetComInfo(nullptr);
        RegistCallBackFuncIntf(nullptr, nullptr);
        FlashLocalRegister(nullptr, nullptr, nullptr);
    }
};

TEST_F(Registration, SettingsWordsHaveTheirPlaces)
{
    const ComInfo info = numberedWords(100);
    EXPECT_EQ(info.maxReadBytes, 104);
    EXPECT_EQ(info.defaultStation, 106);
    EXPECT_EQ(info.retryLimit, 107);
    EXPECT_EQ(info.retryCount, 108);
    EXPECT_EQ(info.multiStation, 109);
    EXPECT_EQ(info.comWord10, 110);
    EXPECT_EQ(info.frameCount, 111);
    EXPECT_EQ(info.frameIndex, 112);
    EXPECT_EQ(info.comWord13, 113);
    EXPECT_EQ(info.remoteMode, 114);
    EXPECT_EQ(info.localDeviceNo, 115);
    EXPECT_EQ(info.writeMode, 116);
    EXPECT_EQ(info.scanDone, 117);
    EXPECT_EQ(info.hostTag, 118);
}

TEST_F(Registration, FreshSettingsAreZero)
{
    const Words words = wordsOf(ComInfo());
    for (int word : words.word)
        EXPECT_EQ(word, 0);
}

TEST_F(Registration, SetComInfoKeepsThePointerAndZeroesWords10And13)
{
    ComInfo info = numberedWords(100);
    SetComInfo(&info);
    EXPECT_EQ(PLC_driver.settings, &info);
    const Words words = wordsOf(info);
    for (int i = 0; i < 19; ++i)
        EXPECT_EQ(words.word[i], i == 10 || i == 13 ? 0 : 100 + i) << "word " << i;
}

TEST_F(Registration, SecondSetComInfoReplacesThePointerAndLeavesTheFirstRecord)
{
    ComInfo first = numberedWords(100);
    ComInfo second = numberedWords(200);
    SetComInfo(&first);
    first.comWord10 = 110;
    first.comWord13 = 113;
    SetComInfo(&second);
    EXPECT_EQ(PLC_driver.settings, &second);
    EXPECT_EQ(second.comWord10, 0);
    EXPECT_EQ(second.comWord13, 0);
    EXPECT_EQ(second.remoteMode, 214);
    EXPECT_EQ(first.comWord10, 110);
    EXPECT_EQ(first.comWord13, 113);
}

TEST_F(Registration, SetComInfoStoresNull)
{
    ComInfo info;
    SetComInfo(&info);
    SetComInfo(nullptr);
    EXPECT_EQ(PLC_driver.settings, nullptr);
}

TEST_F(Registration, CallbacksAreKeptInTheirOrder)
{
    RegistCallBackFuncIntf(recordResult, recordFailure);
    EXPECT_EQ(PLC_driver.resultCallback, &recordResult);
    EXPECT_EQ(PLC_driver.failureCallback, &recordFailure);
}

TEST_F(Registration, CallbacksCanBeTakenBackOneByOne)
{
    RegistCallBackFuncIntf(recordResult, recordFailure);
    RegistCallBackFuncIntf(nullptr, recordFailure);
    EXPECT_EQ(PLC_driver.resultCallback, nullptr);
    EXPECT_EQ(PLC_driver.failureCallback, &recordFailure);
    RegistCallBackFuncIntf(recordResult, nullptr);
    EXPECT_EQ(PLC_driver.resultCallback, &recordResult);
    EXPECT_EQ(PLC_driver.failureCallback, nullptr);
}

TEST_F(Registration, HostMemoriesAreUnsetAfterLoading)
{
    EXPECT_EQ(LB, nullptr);
    EXPECT_EQ(LW, nullptr);
    EXPECT_EQ(RWI, nullptr);
}

TEST_F(Registration, FlashLocalRegisterKeepsThePointersAndReturnsTheAddressOfLW)
{
    int lb = 0;
    int lw = 0;
    int rwi = 0;
    void** result = FlashLocalRegister(&lb, &lw, &rwi);
    EXPECT_EQ(result, &LW);
    EXPECT_NE(static_cast<void*>(result), LW);
    EXPECT_EQ(LB, &lb);
    EXPECT_EQ(LW, &lw);
    EXPECT_EQ(RWI, &rwi);
}

TEST_F(Registration, FlashLocalRegisterStoresNullAndStillReturnsTheAddressOfLW)
{
    int memory = 0;
    FlashLocalRegister(&memory, &memory, &memory);
    EXPECT_EQ(FlashLocalRegister(nullptr, nullptr, nullptr), &LW);
    EXPECT_EQ(LB, nullptr);
    EXPECT_EQ(LW, nullptr);
    EXPECT_EQ(RWI, nullptr);
}

TEST_F(Registration, QueryFinishFlagAnswersOneBeforeAndAfterSetUp)
{
    EXPECT_EQ(QueryFinishFlag(), 1);
    ComInfo info;
    SetComInfo(&info);
    EXPECT_EQ(QueryFinishFlag(), 1);
    info.scanDone = 0;
    PLC_driver.failed = 1;
    EXPECT_EQ(QueryFinishFlag(), 1);
    PLC_driver.failed = 0;
}

} // namespace
} // namespace test
} // namespace plc

#include <cstring>

#include "support/driver_fixture.h"

namespace plc::test {
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
    EXPECT_EQ(104, info.maxReadBytes);
    EXPECT_EQ(106, info.defaultStation);
    EXPECT_EQ(107, info.retryLimit);
    EXPECT_EQ(108, info.retryCount);
    EXPECT_EQ(109, info.multiStation);
    EXPECT_EQ(110, info.comWord10);
    EXPECT_EQ(111, info.frameCount);
    EXPECT_EQ(112, info.frameIndex);
    EXPECT_EQ(113, info.comWord13);
    EXPECT_EQ(114, info.remoteMode);
    EXPECT_EQ(115, info.localDeviceNo);
    EXPECT_EQ(116, info.writeMode);
    EXPECT_EQ(117, info.scanDone);
    EXPECT_EQ(118, info.hostTag);
}

TEST_F(Registration, FreshSettingsAreZero)
{
    const Words words = wordsOf(ComInfo());
    for (int word : words.word)
        EXPECT_EQ(0, word);
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
    EXPECT_EQ(0, second.comWord10);
    EXPECT_EQ(0, second.comWord13);
    EXPECT_EQ(214, second.remoteMode);
    EXPECT_EQ(110, first.comWord10);
    EXPECT_EQ(113, first.comWord13);
}

TEST_F(Registration, SetComInfoStoresNull)
{
    ComInfo info;
    SetComInfo(&info);
    SetComInfo(nullptr);
    EXPECT_EQ(nullptr, PLC_driver.settings);
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
    EXPECT_EQ(nullptr, PLC_driver.resultCallback);
    EXPECT_EQ(PLC_driver.failureCallback, &recordFailure);
    RegistCallBackFuncIntf(recordResult, nullptr);
    EXPECT_EQ(PLC_driver.resultCallback, &recordResult);
    EXPECT_EQ(nullptr, PLC_driver.failureCallback);
}

TEST_F(Registration, HostMemoriesAreUnsetAfterLoading)
{
    EXPECT_EQ(nullptr, LB);
    EXPECT_EQ(nullptr, LW);
    EXPECT_EQ(nullptr, RWI);
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
    EXPECT_EQ(nullptr, LB);
    EXPECT_EQ(nullptr, LW);
    EXPECT_EQ(nullptr, RWI);
}

TEST_F(Registration, QueryFinishFlagAnswersOneBeforeAndAfterSetUp)
{
    EXPECT_EQ(1, QueryFinishFlag());
    ComInfo info;
    SetComInfo(&info);
    EXPECT_EQ(1, QueryFinishFlag());
    info.scanDone = 0;
    PLC_driver.failed = 1;
    EXPECT_EQ(1, QueryFinishFlag());
    PLC_driver.failed = 0;
}

} // namespace
} // namespace plc::test

#include "panel/plants/followed_values.h"

#include <gtest/gtest.h>

#include <map>

namespace plc::panel {
namespace {

class FollowedValuesTest : public ::testing::Test {
protected:
    FollowedValuesTest()
    {
        values.follow(1, 11);
        values.follow(3, 13);
    }
    void set(int slot, Quality quality, const char* bytes, qint64 time)
    {
        known[slot].quality = quality;
        known[slot].bytes = bytes;
        known[slot].time = time;
    }
    std::string sampled(const QVector<int>& changed, qint64 time)
    {
        const auto value = [this](int slot) -> const LiveValue& { return known[slot]; };
        return text(values.sampled(value, changed, time));
    }
    /// "11@2000 good 7, …"
    static std::string text(const QVector<recorder::Change>& changes)
    {
        static const char* const kWords[] = {"good", "stale", "bad", "gap"};
        std::string all;
        for (const recorder::Change& change : changes) {
            all += (all.empty() ? "" : ", ") + std::to_string(change.series) + "@" +
                   std::to_string(change.sample.time) + " " + kWords[int(change.sample.quality)];
            all += change.sample.bytes.isEmpty() ? "" : " " + change.sample.bytes.toStdString();
        }
        return all;
    }

    FollowedValues values;
    std::map<int, LiveValue> known;
};

TEST_F(FollowedValuesTest, BeginsWithWhatIsNotKnown)
{
    EXPECT_EQ("11@1000 stale, 13@1000 stale", text(values.forget(1000)));
    EXPECT_EQ("", sampled({}, 1500)) << "which is told already";
    set(3, Quality::Good, "7", 1800);
    EXPECT_EQ("13@1800 good 7", sampled({3}, 2000));
    set(1, Quality::Bad, "", 0);
    EXPECT_EQ("11@3000 bad", sampled({1}, 3000));
}

TEST_F(FollowedValuesTest, TellsWhatChangesOfThoseThatAreRecorded)
{
    values.forget(0);
    for (const int slot : {1, 2, 3})
        set(slot, Quality::Good, "1", 900);
    EXPECT_EQ("11@900 good 1, 13@900 good 1", sampled({1, 2, 3}, 1000));
    set(2, Quality::Good, "2", 1900);
    set(3, Quality::Good, "2", 1900);
    EXPECT_EQ("13@1900 good 2", sampled({2, 3, 4}, 2000));
    set(3, Quality::Stale, "2", 1900);
    EXPECT_EQ("13@6000 stale 2", sampled({3}, 6000));
    // Asked for before it was given up waiting.
    set(3, Quality::Good, "3", 5500);
    EXPECT_EQ("13@6000 good 3", sampled({3}, 6100));
}

TEST_F(FollowedValuesTest, ValuesOfBeforeAPauseAreNotToldBehindIt)
{
    values.forget(0);
    set(1, Quality::Good, "1", 900);
    set(3, Quality::Good, "2", 900);
    sampled({1, 3}, 1000);
    EXPECT_EQ("11@60000 stale, 13@60000 stale", text(values.forget(60000)));
    // Neither what stands there nor a reply that came before; what was asked for since is told also
    // where it is as it was.
    set(3, Quality::Good, "5", 1100);
    EXPECT_EQ("", sampled({3}, 60000));
    set(1, Quality::Good, "1", 60400);
    EXPECT_EQ("11@60400 good 1", sampled({}, 60500));
    EXPECT_EQ("", sampled({}, 60700));
    set(3, Quality::Good, "5", 60600);
    EXPECT_EQ("13@60600 good 5", sampled({}, 60800));
}

TEST_F(FollowedValuesTest, AClockThatIsSetBackMakesNothingWait)
{
    values.forget(60000);
    set(1, Quality::Good, "1", 900);
    EXPECT_EQ("11@1000 good 1, 13@1000 stale", sampled({1}, 1000));
}

} // namespace
} // namespace plc::panel

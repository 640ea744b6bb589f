#include <unistd.h>

#include "recorder/recorder_thread.h"
#include "tests/recorder/recording.h"
#include "tests/support/hanging_disk.h"

namespace plc::recorder {
namespace test {
namespace {

class HangingDisk : public Recording {
protected:
    ~HangingDisk() override { plc::test::diskGate().setOpen(true); }

    template <typename Condition>
    static bool waitUntil(Condition condition)
    {
        for (int i = 0; i < 2000 && !condition(); ++i)
            ::usleep(10000);
        return condition();
    }
    /// Whether nobody records into the file any more.
    bool isFree() { return bool(Recorder::open(file, Limits(), 10000)); }
};

TEST_F(HangingDisk, KeepsNobodyFromEndingAndWhatIsNotKnownToBeRecordedIsTold)
{
    Expected<std::unique_ptr<RecorderThread>> thread = RecorderThread::start(file, Limits(), 0);
    ASSERT_TRUE(succeeds(thread)) << error.toStdString();
    const int a = (*thread)->series(ofType("P.a", "INT"));
    (*thread)->append({good(a, 100, "1")}, 100);
    ASSERT_TRUE(waitUntil([&] { return (*thread)->status().recorded == 1; }));
    plc::test::diskGate().setOpen(false);
    (*thread)->append({good(a, 200, "2")}, 200);
    plc::test::diskGate().awaitArrival();
    (*thread)->append({good(a, 300, "3")}, 300);
    const LastPatience none{std::chrono::milliseconds(0), std::chrono::milliseconds(0)};
    const RecorderStatus status = (*thread)->finish(none);
    EXPECT_EQ(1, status.recorded);
    EXPECT_EQ(2, status.waiting);
    thread->reset();
    // Where the disk answers after all, what was under way is there, and nothing more.
    plc::test::diskGate().setOpen(true);
    ASSERT_TRUE(waitUntil([this] { return isFree(); }));
    const QVector<Sample> wanted{good(a, 100, "1").sample, good(a, 200, "2").sample, gap(200)};
    EXPECT_EQ(wanted, history(1, 1, 5000).samples);
}

TEST_F(HangingDisk, ThatAnswersInTimeHasAllOfIt)
{
    Expected<std::unique_ptr<RecorderThread>> thread = RecorderThread::start(file, Limits(), 0);
    ASSERT_TRUE(succeeds(thread)) << error.toStdString();
    const int a = (*thread)->series(ofType("P.a", "INT"));
    plc::test::diskGate().setOpen(false);
    (*thread)->append({good(a, 100, "1")}, 100);
    plc::test::diskGate().awaitArrival();
    (*thread)->append({good(a, 200, "2")}, 200);
    plc::test::diskGate().setOpen(true);
    const RecorderStatus status = (*thread)->finish();
    EXPECT_EQ(2, status.recorded);
    EXPECT_EQ(0, status.waiting);
    const QVector<Sample> wanted{good(a, 100, "1").sample, good(a, 200, "2").sample, gap(200)};
    EXPECT_EQ(wanted, history(1, 1, 5000).samples);
}

} // namespace
} // namespace test
} // namespace plc::recorder

#include "service/disk_thread.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/gate.h"

namespace plc::service {
namespace {

constexpr std::chrono::minutes kLong(5);

/// A disk that answers while its gate is open. Both outlast the thread where that is given up.
class DiskThreadTest : public testing::Test {
protected:
    struct Disk {
        test::Gate gate;
        test::Bell bell;
        test::Bell hasPassed;
        std::string order;
    };

    /// Work that is done with this letter, small when it is written and capital when it is told.
    DiskThread::Work letter(char small)
    {
        return [this, disk = disk, small]() -> DiskThread::Completion {
            disk->gate.pass();
            disk->order += small;
            disk->hasPassed.ring();
            return [this, small] { told += char(small - 'a' + 'A'); };
        };
    }
    void deliverUntil(const std::string& expected)
    {
        while (told.size() < expected.size()) {
            disk->bell.await();
            thread->deliver();
        }
        EXPECT_EQ(expected, told);
    }

    std::shared_ptr<Disk> disk = std::make_shared<Disk>();
    std::string told;
    std::unique_ptr<DiskThread> thread =
        std::make_unique<DiskThread>([disk = disk] { disk->bell.ring(); });
};

TEST_F(DiskThreadTest, DoesOneBehindTheOtherAndTellsSoInTheSameOrder)
{
    for (const char small : {'a', 'b', 'c'})
        thread->submit(letter(small));
    deliverUntil("ABC");
    EXPECT_EQ("abc", disk->order);
}

TEST_F(DiskThreadTest, LetsItsOwnerGoOnWhileTheDiskDoesNotAnswer)
{
    disk->gate.setOpen(false);
    thread->submit(letter('a'));
    disk->gate.awaitArrival();
    thread->submit(letter('b'));
    thread->deliver();
    EXPECT_EQ("", told);
    disk->gate.setOpen(true);
    deliverUntil("AB");
}

TEST_F(DiskThreadTest, DoesAtTheEndAllThatWaitsAndWhatComesOfThat)
{
    thread->submit([this, disk = disk]() -> DiskThread::Completion {
        disk->order += 'a';
        return [this] {
            told += 'A';
            thread->submit(letter('b'));
        };
    });
    EXPECT_TRUE(thread->finish(kLong));
    EXPECT_EQ("AB", told);
    thread->submit(letter('c'));
    EXPECT_TRUE(thread->finish(kLong));
    EXPECT_EQ("AB", told) << "there is no thread any more";
    EXPECT_EQ("ab", disk->order);
}

TEST_F(DiskThreadTest, EndsThoughTheDiskDoesNotAnswer)
{
    disk->gate.setOpen(false);
    thread->submit(letter('a'));
    thread->submit(letter('b'));
    disk->gate.awaitArrival();
    EXPECT_FALSE(thread->finish(std::chrono::milliseconds(1)));
    thread.reset();
    disk->gate.setOpen(true);
    disk->hasPassed.await();
    EXPECT_EQ("", told) << "nobody is there any more";
    EXPECT_EQ("a", disk->order) << "what had not begun never does";
}

} // namespace
} // namespace plc::service

#include "service/worker_threads.h"

#include <gmock/gmock.h>

#include <atomic>
#include <string>

#include "tests/support/gate.h"

namespace plc::service {
namespace {

TEST(WorkerThreads, AllThatWaitsIsDoneBeforeTheyEnd)
{
    std::atomic<int> done{0};
    {
        WorkerThreads threads(2);
        for (int i = 0; i < 1000; ++i)
            threads.submit([&] { ++done; });
    }
    EXPECT_EQ(1000, done);
}

TEST(WorkerThreads, WorkThatWaitsHoldsUpNoOther)
{
    test::Gate gate;
    gate.setOpen(false);
    test::Bell bell;
    std::string order;
    {
        WorkerThreads threads(2);
        threads.submit([&] {
            gate.pass();
            order += 'a';
        });
        threads.submit([&] {
            order += 'b';
            bell.ring();
        });
        bell.await();
        gate.setOpen(true);
    }
    EXPECT_EQ("ba", order);
}

TEST(WorkerThreads, OneThreadDoesItsWorkInOrder)
{
    std::string order;
    {
        WorkerThreads threads(1);
        for (char letter = 'a'; letter <= 'z'; ++letter)
            threads.submit([&order, letter] { order += letter; });
    }
    EXPECT_EQ("abcdefghijklmnopqrstuvwxyz", order);
}

} // namespace
} // namespace plc::service

#include "service/inbox.h"

#include <QtCore/QCoreApplication>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

namespace plc::service {
namespace {

TEST(Inbox, WorkOfOtherThreadsIsDoneByItsOwnInOrder)
{
    int count = 0;
    QCoreApplication application(count, nullptr);
    Inbox inbox;
    std::string order;
    const std::thread::id own = std::this_thread::get_id();
    std::thread other([&] {
        for (char letter = 'a'; letter <= 'z'; ++letter) {
            inbox.post([&, text = std::string(1, letter)] {
                EXPECT_EQ(own, std::this_thread::get_id());
                order += text;
            });
        }
    });
    other.join();
    EXPECT_EQ("", order);
    QCoreApplication::sendPostedEvents(&inbox);
    EXPECT_EQ("abcdefghijklmnopqrstuvwxyz", order);
}

TEST(Inbox, WhatHasNotBeenDoneAtItsEndIsDropped)
{
    auto inbox = std::make_unique<Inbox>();
    const auto held = std::make_shared<int>(1);
    inbox->post([held] { FAIL() << "done without its inbox"; });
    EXPECT_EQ(2, held.use_count());
    inbox.reset();
    EXPECT_EQ(1, held.use_count());
}

} // namespace
} // namespace plc::service

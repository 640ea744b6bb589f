#include "gateway/sparkplug/primary_host.h"

#include <gtest/gtest.h>

namespace plc::gateway {
namespace {

QByteArray state(bool isOnline, int time)
{
    return QByteArray("{\"online\":") + (isOnline ? "true" : "false") +
           ",\"timestamp\":" + QByteArray::number(time) + "}";
}

class PrimaryHostState : public ::testing::Test {
protected:
    void tell(bool isOnline, int time) { EXPECT_EQ("", m_host.received(state(isOnline, time))); }

    PrimaryHost m_host;
};

TEST_F(PrimaryHostState, IsNotOnlineUntilItSaysSo)
{
    EXPECT_FALSE(m_host.isOnline());
    EXPECT_FALSE(m_host.hasLeft());
    tell(true, 100);
    EXPECT_TRUE(m_host.isOnline());
    EXPECT_FALSE(m_host.hasLeft());
}

TEST_F(PrimaryHostState, FirstDeathIsBelievedWhateverItsTime)
{
    tell(false, 0);
    EXPECT_FALSE(m_host.isOnline());
    EXPECT_TRUE(m_host.hasLeft());
}

TEST_F(PrimaryHostState, DeathOfTheSameConnectionIsBelieved)
{
    tell(true, 100);
    tell(false, 100);
    EXPECT_FALSE(m_host.isOnline());
    EXPECT_TRUE(m_host.hasLeft());
}

TEST_F(PrimaryHostState, DeathOfAnOlderConnectionIsNot)
{
    tell(true, 100);
    tell(false, 99);
    EXPECT_TRUE(m_host.isOnline());
    EXPECT_FALSE(m_host.hasLeft());
}

TEST_F(PrimaryHostState, BirthOlderThanTheLastMessageIsNotBelieved)
{
    tell(false, 100);
    tell(true, 99);
    EXPECT_FALSE(m_host.isOnline());
    tell(true, 100);
    EXPECT_TRUE(m_host.isOnline());
}

TEST_F(PrimaryHostState, HasLeftAlsoWhenItIsBackAtOnce)
{
    tell(true, 100);
    tell(false, 100);
    tell(true, 200);
    EXPECT_TRUE(m_host.isOnline());
    EXPECT_TRUE(m_host.hasLeft());
}

TEST_F(PrimaryHostState, AnotherConnectionHasTimesOfItsOwn)
{
    tell(true, 100);
    tell(false, 100);
    m_host.forget();
    EXPECT_FALSE(m_host.isOnline());
    EXPECT_FALSE(m_host.hasLeft());
    tell(true, 50);
    EXPECT_TRUE(m_host.isOnline());
}

TEST_F(PrimaryHostState, WhatMakesNoSenseChangesNothing)
{
    tell(true, 100);
    const char* messages[] = {
        "",
        "OFFLINE",
        "{}",
        "false",
        "{\"online\":false}",
        "{\"timestamp\":200}",
        "{\"online\":\"false\",\"timestamp\":200}",
        "{\"online\":0,\"timestamp\":200}",
        "{\"online\":false,\"timestamp\":\"200\"}",
        "{\"online\":false,\"timestamp\":-1}",
        "{\"online\":false,\"timestamp\":200.5}",
        "{\"online\":false,\"timestamp\":1e300}",
        "{\"online\":false,\"timestamp\":null}",
        "{\"online\":[false],\"timestamp\":200}",
        "{\"online\":false,\"online\":false,\"timestamp\":200}",
    };
    for (const char* message : messages) {
        EXPECT_NE("", m_host.received(message)) << message;
        EXPECT_TRUE(m_host.isOnline()) << message;
        EXPECT_FALSE(m_host.hasLeft()) << message;
    }
}

TEST_F(PrimaryHostState, TimesMayBeWrittenAsFractionsAndMoreMayBeTold)
{
    EXPECT_EQ("", m_host.received("{\"online\":true,\"timestamp\":1.7e12,\"bdSeq\":3}"));
    EXPECT_TRUE(m_host.isOnline());
    EXPECT_EQ("", m_host.received("{\"online\":false,\"timestamp\":1699999999999}"));
    EXPECT_TRUE(m_host.isOnline());
    EXPECT_EQ("", m_host.received("{\"online\":false,\"timestamp\":1700000000000}"));
    EXPECT_FALSE(m_host.isOnline());
}

} // namespace
} // namespace plc::gateway

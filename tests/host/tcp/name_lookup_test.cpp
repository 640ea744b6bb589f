#include "host/tcp/name_lookup.h"

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>

#include <future>

namespace plc::host {
namespace test {
namespace {

class NameLookupTest : public ::testing::Test {
protected:
    /// Turns the event loop until this is so; the limit of ctest ends what never becomes so.
    template <typename Condition>
    static void until(Condition condition)
    {
        while (!condition())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    }

private:
    int m_count = 1;
    char m_name[5] = "test";
    char* m_arguments[2] = {m_name, nullptr};
    QCoreApplication m_application{m_count, m_arguments};
};

TEST_F(NameLookupTest, GivesTheAddressesInTheThreadThatAsked)
{
    QVector<QHostAddress> addresses;
    const NameLookup lookup(
        QStringLiteral("plc"), [&](const NameAddresses& found) { addresses = found.addresses; },
        [](const QString& name) {
            NameAddresses found;
            if (name == QLatin1String("plc"))
                found.addresses = {QHostAddress(QStringLiteral("192.0.2.1")),
                                   QHostAddress(QStringLiteral("192.0.2.2"))};
            return found;
        });
    until([&] { return !addresses.isEmpty(); });
    EXPECT_EQ(2, addresses.size());
    EXPECT_EQ(QHostAddress(QStringLiteral("192.0.2.1")), addresses.first());
}

TEST_F(NameLookupTest, ThatGoesDoesNotWaitForASilentServerAndIsNotCalled)
{
    // Of the thread, too, which may outlast this test.
    const auto answer = std::make_shared<std::promise<void>>();
    const auto end = std::make_shared<std::promise<void>>();
    bool isCalled = false;
    {
        const NameLookup lookup(
            QStringLiteral("plc"), [&](const NameAddresses&) { isCalled = true; },
            [answer, end](const QString&) {
                answer->get_future().wait();
                end->set_value();
                return NameAddresses();
            });
    }
    // Would wait for ever above if it waited for the thread.
    answer->set_value();
    end->get_future().wait();
    QCoreApplication::processEvents();
    EXPECT_FALSE(isCalled);
}

TEST_F(NameLookupTest, MayGoWhileItsAnswerIsHandled)
{
    std::unique_ptr<NameLookup> lookup;
    bool isCalled = false;
    lookup = std::make_unique<NameLookup>(
        QStringLiteral("plc"),
        [&](const NameAddresses&) {
            lookup.reset();
            isCalled = true;
        },
        [](const QString&) { return NameAddresses(); });
    until([&] { return isCalled; });
    EXPECT_EQ(nullptr, lookup);
}

TEST_F(NameLookupTest, OfTheSystemKnowsThisComputer)
{
    const NameAddresses found = NameLookup::systemAddresses(QStringLiteral("localhost"));
    EXPECT_TRUE(found.addresses.contains(QHostAddress(QHostAddress::LocalHost)) ||
                found.addresses.contains(QHostAddress(QHostAddress::LocalHostIPv6)))
        << found.error.toStdString();
    EXPECT_EQ("", found.error.toStdString());
}

TEST_F(NameLookupTest, TellsWhyANameHasNoAddress)
{
    const NameAddresses found = NameLookup::systemAddresses(QStringLiteral("a..b"));
    EXPECT_TRUE(found.addresses.isEmpty());
    EXPECT_NE("", found.error.toStdString());
}

} // namespace
} // namespace test
} // namespace plc::host

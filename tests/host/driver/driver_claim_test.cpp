#include "host/driver/driver_claim.h"

#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

const char kTaken[] =
    "the driver serves another PLC already; each further one in a process needs a copy of the "
    "driver, which DriverLibrary::loadCopy() makes";

DriverLibrary loaded()
{
    return *DriverLibrary::load(QStringLiteral(PLC_LIBRARY));
}

std::string errorOf(const Expected<DriverClaim>& claim)
{
    return claim ? std::string() : claim.error().text.toStdString();
}

TEST(DriverClaim, IsRefusedToTheSecondWhoWantsTheDriver)
{
    const DriverLibrary library = loaded();
    const Expected<DriverClaim> first = library.take();
    ASSERT_TRUE(first) << first.error().text.toStdString();
    EXPECT_EQ(kTaken, errorOf(library.take()));
}

TEST(DriverClaim, IsRefusedToThoseWhoLoadTheSameFileAgain)
{
    const DriverLibrary one = loaded();
    const DriverLibrary two = loaded();
    const Expected<DriverClaim> first = one.take();
    ASSERT_TRUE(first);
    EXPECT_EQ(kTaken, errorOf(two.take()));
    EXPECT_EQ(kTaken, errorOf(DriverClaim::take(two.functions())));
}

TEST(DriverClaim, OfACopyIsAnother)
{
    const DriverLibrary library = loaded();
    const Expected<DriverClaim> first = library.take();
    const Expected<DriverLibrary> copy = DriverLibrary::loadCopy(QStringLiteral(PLC_LIBRARY));
    ASSERT_TRUE(copy);
    const Expected<DriverClaim> second = copy->take();
    ASSERT_TRUE(second) << second.error().text.toStdString();
    EXPECT_NE(first->functions().dataCom, second->functions().dataCom);
}

TEST(DriverClaim, IsGivenBackOnceByTheLastWhoHasIt)
{
    const DriverLibrary library = loaded();
    {
        Expected<DriverClaim> first = library.take();
        ASSERT_TRUE(first);
        const DriverClaim moved = std::move(*first);
        EXPECT_EQ(kTaken, errorOf(library.take()));
    }
    EXPECT_EQ("", errorOf(library.take()));
}

/// What another copy of this library in the process would do: it has none of our variables.
TEST(DriverClaim, StandsInTheDriverWhereOtherCopiesOfTheHostSeeIt)
{
    const DriverFunctions& driver = builtDriver();
    {
        const Expected<DriverClaim> own = DriverClaim::take(driver);
        ASSERT_TRUE(own);
        EXPECT_NE(nullptr, *driver.hostWord);
    }
    EXPECT_EQ(nullptr, *driver.hostWord);
    int memory = 0;
    driver.flashLocalRegister(&memory, nullptr, nullptr);
    EXPECT_EQ(kTaken, errorOf(DriverClaim::take(driver)));
    EXPECT_EQ(&memory, *driver.hostWord);
    driver.flashLocalRegister(nullptr, nullptr, nullptr);
}

TEST(DriverClaim, LeavesTheMarkOfAnother)
{
    const DriverFunctions& driver = builtDriver();
    int memory = 0;
    {
        const Expected<DriverClaim> own = DriverClaim::take(driver);
        ASSERT_TRUE(own);
        driver.flashLocalRegister(&memory, nullptr, nullptr);
    }
    EXPECT_EQ(&memory, *driver.hostWord);
    driver.flashLocalRegister(nullptr, nullptr, nullptr);
}

TEST(DriverClaim, OfFunctionsWithoutADriverIsRefused)
{
    EXPECT_EQ("these are not the functions of a loaded driver",
              errorOf(DriverClaim::take(DriverFunctions())));
}

TEST(DriverClaim, KeepsACopyLoaded)
{
    std::unique_ptr<DriverClaim> claim;
    {
        const Expected<DriverLibrary> copy = DriverLibrary::loadCopy(QStringLiteral(PLC_LIBRARY));
        ASSERT_TRUE(copy);
        claim = std::make_unique<DriverClaim>(*copy->take());
    }
    EXPECT_EQ(1, claim->functions().queryFinishFlag());
}

} // namespace
} // namespace test
} // namespace plc::host

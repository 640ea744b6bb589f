#include <QtCore/QCoreApplication>

#include "host/driver/driver_claim.h"
#include "tests/cli/parsing.h"
#include "tests/support/built_driver.h"

namespace plc::cli {
namespace test {
namespace {

/// The exit code of a command on a driver that serves another PLC already, and what it complains.
std::string outcomeOf(const QString& command, const QStringList& arguments)
{
    int count = 0;
    const QCoreApplication application(count, nullptr);
    const Expected<host::DriverClaim> claim = host::DriverClaim::take(plc::test::builtDriver());
    EXPECT_TRUE(claim.hasValue());
    const Expected<Invocation> invocation =
        readCommandLine(QStringList{QStringLiteral("plc"), command, QStringLiteral("--project"),
                                    QStringLiteral(PLC_SOURCE_DIR "/docs/examples/tank.json"),
                                    QStringLiteral("--driver"), QStringLiteral(PLC_LIBRARY)} +
                        arguments);
    if (!invocation)
        return invocation.error().text.toStdString();
    ::testing::internal::CaptureStderr();
    const int code = invocation->command->execute(*invocation->options);
    return std::to_string(code) + "|" + ::testing::internal::GetCapturedStderr();
}

const char kInUse[] =
    "2|plc: the driver serves another PLC already; each further one in a process needs a copy of "
    "the driver, which DriverLibrary::loadCopy() makes\n";

TEST(DriverInUse, EndsACommandBeforeItConnects)
{
    EXPECT_EQ(kInUse, outcomeOf(QStringLiteral("read"), {QStringLiteral("Tank.level")}));
}

TEST(DriverInUse, EndsAPlanBeforeItIsMade)
{
    EXPECT_EQ(kInUse, outcomeOf(QStringLiteral("plan"), {}));
}

} // namespace
} // namespace test
} // namespace plc::cli

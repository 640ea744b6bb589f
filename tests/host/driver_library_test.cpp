#include "host/driver_library.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include "tests/host/host_fixture.h"

namespace plc {
namespace test {
namespace {

TEST(DriverLibrary, AllEntryPointsAreResolved)
{
    QString error;
    const std::optional<DriverFunctions> driver = loadDriver(QStringLiteral(PLC_LIBRARY), &error);
    ASSERT_TRUE(driver) << error.toStdString();
    EXPECT_EQ(driver->queryFinishFlag(), 1);
    EXPECT_EQ(driver->comCommunication(), nullptr);
}

TEST(DriverLibrary, MissingFileIsNamed)
{
    QString error;
    EXPECT_FALSE(loadDriver(QStringLiteral("/nowhere/libplc_driver.so"), &error));
    EXPECT_THAT(
        error.toStdString(),
        ::testing::StartsWith("cannot load the driver library /nowhere/libplc_driver.so: "));
}

TEST(DriverLibrary, MissingEntryPointsAreNamed)
{
    QString error;
    EXPECT_FALSE(loadDriver(QStringLiteral("libm.so.6"), &error));
    EXPECT_THAT(
        error.toStdString(),
        ::testing::AllOf(::testing::StartsWith(
                             "libm.so.6 is no PLC driver of this interface: it lacks SetComInfo, "
                             "RegistCallBackFuncIntf, FlashLocalRegister"),
                         ::testing::EndsWith("GetRegisterData, SetRegisterData")));
}

/// A made-up installation.
class FindDriverTest : public ::testing::Test {
protected:
    FindDriverTest() { qunsetenv("PLC_DRIVER"); }

    QString put(const char* name)
    {
        const QString path = m_folder.filePath(QString::fromLatin1(name));
        EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        return path;
    }
    QString found(const char* requested = "")
    {
        error.clear();
        return findDriver(QString::fromLatin1(requested), m_folder.filePath(QStringLiteral("bin")),
                          &error);
    }

    QString error;

private:
    QTemporaryDir m_folder;
};

TEST_F(FindDriverTest, WhatIsRequestedComesFirstThenTheEnvironment)
{
    put("bin/" PLC_DRIVER_FILE);
    qputenv("PLC_DRIVER", "/from/environment.so");
    EXPECT_EQ(found("given.so"), "given.so");
    EXPECT_EQ(found(), "/from/environment.so");
}

TEST_F(FindDriverTest, NearestFileWins)
{
    const QString inBuildTree = put("driver/" PLC_DRIVER_FILE);
    EXPECT_EQ(found(), inBuildTree);
    const QString ofArchitecture = put("lib/" PLC_LIBRARY_ARCHITECTURE "/" PLC_DRIVER_FILE);
    EXPECT_EQ(found(), ofArchitecture);
    const QString installed = put("lib/" PLC_DRIVER_FILE);
    EXPECT_EQ(found(), installed);
    const QString besideProgram = put("bin/" PLC_DRIVER_FILE);
    EXPECT_EQ(found(), besideProgram);
}

TEST_F(FindDriverTest, LibrariesOfOtherArchitecturesAreLeftAlone)
{
    put("lib/aaa-linux-gnu/" PLC_DRIVER_FILE);
    EXPECT_EQ(found(), "");
    const QString own = put("lib/" PLC_LIBRARY_ARCHITECTURE "/" PLC_DRIVER_FILE);
    EXPECT_EQ(found(), own);
}

TEST_F(FindDriverTest, NothingFoundNamesThePlacesAndWhatToDo)
{
    EXPECT_EQ(found(), "");
    EXPECT_THAT(error.toStdString(),
                ::testing::AllOf(::testing::HasSubstr("/bin"), ::testing::HasSubstr("/driver"),
                                 ::testing::HasSubstr("--driver or in PLC_DRIVER")));
}

} // namespace
} // namespace test
} // namespace plc

#include "host/driver/driver_library.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTemporaryFile>

#include "tests/host/host_fixture.h"

namespace plc::host {
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

TEST(DriverLibrary, LibraryForAnotherQtIsRefusedBeforeAnythingOfItRuns)
{
    QString error;
    EXPECT_FALSE(loadDriver(QStringLiteral(PLC_OTHER_QT_LIBRARY), &error));
    const std::string own = std::to_string(QT_VERSION_MAJOR);
    EXPECT_EQ(error.toStdString(), "the driver library " PLC_OTHER_QT_LIBRARY " was built for Qt " +
                                       std::to_string(PLC_OTHER_QT) +
                                       ", and this program uses Qt " + own +
                                       "; give the one for Qt " + own + ", libplc_driver_qt" + own +
                                       ".so.1, with --driver or in PLC_DRIVER");
}

TEST(DriverLibrary, LibraryThatTellsNoQtIsRefused)
{
    QString error;
    EXPECT_FALSE(loadDriver(QStringLiteral(PLC_LIBRARY_WITHOUT_QT), &error));
    EXPECT_THAT(error.toStdString(),
                ::testing::StartsWith("cannot tell for which Qt " PLC_LIBRARY_WITHOUT_QT
                                      " was built: it is linked with no Qt Core library"));
}

TEST(DriverLibrary, FileThatIsNoLibraryIsRefused)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write("{}");
    file.close();
    QString error;
    EXPECT_FALSE(loadDriver(file.fileName(), &error));
    EXPECT_THAT(error.toStdString(),
                ::testing::AllOf(::testing::HasSubstr(file.fileName().toStdString()),
                                 ::testing::HasSubstr("it is no shared library for this program")));
}

TEST(DriverLibrary, MissingEntryPointsAreNamed)
{
    QString error;
    EXPECT_FALSE(loadDriver(QStringLiteral(PLC_QT_NETWORK), &error));
    EXPECT_THAT(error.toStdString(),
                ::testing::AllOf(
                    ::testing::StartsWith(
                        PLC_QT_NETWORK " is no PLC driver of this interface: it lacks SetComInfo, "
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

TEST_F(FindDriverTest, LibraryForAnotherQtIsNotTakenButNamed)
{
    const QString other =
        put(qPrintable(QStringLiteral("lib/libplc_driver_qt%1.so.1").arg(PLC_OTHER_QT)));
    EXPECT_EQ(found(), "");
    EXPECT_THAT(error.toStdString(),
                ::testing::EndsWith("This program uses Qt " + std::to_string(QT_VERSION_MAJOR) +
                                    " and cannot use " + other.toStdString()));
}

} // namespace
} // namespace test
} // namespace plc::host

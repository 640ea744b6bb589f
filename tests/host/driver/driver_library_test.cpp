#include "host/driver/driver_library.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTemporaryFile>

#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

/// Why neither the library nor a copy of it is loaded.
QString complaint(const QString& path)
{
    const Expected<DriverLibrary> library = DriverLibrary::load(path);
    const Expected<DriverLibrary> copy = DriverLibrary::loadCopy(path);
    EXPECT_FALSE(library);
    EXPECT_FALSE(copy);
    if (library || copy)
        return QString();
    EXPECT_EQ(copy.error().text, library.error().text);
    return library.error().text;
}

TEST(DriverLibrary, AllEntryPointsAreResolved)
{
    const Expected<DriverLibrary> driver = DriverLibrary::load(QStringLiteral(PLC_LIBRARY));
    ASSERT_TRUE(driver) << driver.error().text.toStdString();
    EXPECT_EQ(1, driver->functions().queryFinishFlag());
    EXPECT_EQ(nullptr, driver->functions().comCommunication());
}

TEST(DriverLibrary, MissingFileIsNamed)
{
    const QString error = complaint(QStringLiteral("/nowhere/libplc_driver.so"));
    EXPECT_THAT(
        error.toStdString(),
        ::testing::StartsWith("cannot load the driver library /nowhere/libplc_driver.so: "));
}

TEST(DriverLibrary, LibraryForAnotherQtIsRefusedBeforeAnythingOfItRuns)
{
    const QString error = complaint(QStringLiteral(PLC_OTHER_QT_LIBRARY));
    const std::string own = std::to_string(QT_VERSION_MAJOR);
    EXPECT_EQ(error.toStdString(), "the driver library " PLC_OTHER_QT_LIBRARY " was built for Qt " +
                                       std::to_string(PLC_OTHER_QT) +
                                       ", and this program uses Qt " + own +
                                       "; give the one for Qt " + own + ", libplc_driver_qt" + own +
                                       ".so.1, with --driver or in PLC_DRIVER");
}

TEST(DriverLibrary, LibraryThatTellsNoQtIsRefused)
{
    const QString error = complaint(QStringLiteral(PLC_LIBRARY_WITHOUT_QT));
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
    const QString error = complaint(file.fileName());
    EXPECT_THAT(error.toStdString(),
                ::testing::AllOf(::testing::HasSubstr(file.fileName().toStdString()),
                                 ::testing::HasSubstr("it is no shared library for this program")));
}

TEST(DriverLibrary, MissingEntryPointsAreNamed)
{
    const QString error = complaint(QStringLiteral(PLC_QT_NETWORK));
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
        const Expected<QString> path =
            findDriver(QString::fromLatin1(requested), m_folder.filePath(QStringLiteral("bin")));
        error = path ? QString() : path.error().text;
        return path.valueOr(QString());
    }

    QString error;

private:
    QTemporaryDir m_folder;
};

TEST_F(FindDriverTest, WhatIsRequestedComesFirstThenTheEnvironment)
{
    put("bin/" PLC_DRIVER_FILE);
    qputenv("PLC_DRIVER", "/from/environment.so");
    EXPECT_EQ("given.so", found("given.so"));
    EXPECT_EQ("/from/environment.so", found());
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
    EXPECT_EQ("", found());
    const QString own = put("lib/" PLC_LIBRARY_ARCHITECTURE "/" PLC_DRIVER_FILE);
    EXPECT_EQ(found(), own);
}

TEST_F(FindDriverTest, NothingFoundNamesThePlacesAndWhatToDo)
{
    EXPECT_EQ("", found());
    EXPECT_THAT(error.toStdString(),
                ::testing::AllOf(::testing::HasSubstr("/bin"), ::testing::HasSubstr("/driver"),
                                 ::testing::HasSubstr("--driver or in PLC_DRIVER")));
}

TEST_F(FindDriverTest, LibraryForAnotherQtIsNotTakenButNamed)
{
    const QString other =
        put(qPrintable(QStringLiteral("lib/libplc_driver_qt%1.so.1").arg(PLC_OTHER_QT)));
    EXPECT_EQ("", found());
    EXPECT_THAT(error.toStdString(),
                ::testing::EndsWith("This program uses Qt " + std::to_string(QT_VERSION_MAJOR) +
                                    " and cannot use " + other.toStdString()));
}

} // namespace
} // namespace test
} // namespace plc::host

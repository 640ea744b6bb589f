#include "docs/examples/load_driver.h"

#include <gtest/gtest.h>

#include <QtCore/QTemporaryDir>

TEST(LoadDriverExample, FindsTheEntryPoints)
{
    example::Driver driver;
    QString error;
    ASSERT_TRUE(example::loadDriver(QStringLiteral(PLC_LIBRARY), &driver, &error))
        << error.toStdString();
    ComInfo settings;
    settings.comWord10 = 1;
    driver.setComInfo(&settings);
    EXPECT_EQ(0, settings.comWord10);
    EXPECT_EQ(nullptr, driver.comCommunication());
    EXPECT_EQ(1, driver.dataCom(nullptr, 0)->result);
    driver.setComInfo(nullptr);
}

TEST(LoadDriverExample, NamesWhatIsMissing)
{
    example::Driver driver;
    QString error;
    EXPECT_FALSE(example::loadDriver(QStringLiteral("/no/such/library"), &driver, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("/no/such/library"))) << error.toStdString();
}

TEST(LoadDriverExample, TellsTheQtOfALibraryWithoutLoadingIt)
{
    EXPECT_EQ(example::qtMajorOf(QStringLiteral(PLC_LIBRARY)), QT_VERSION_MAJOR);
    EXPECT_EQ(PLC_OTHER_QT, example::qtMajorOf(QStringLiteral(PLC_OTHER_QT_LIBRARY)));
    EXPECT_EQ(0, example::qtMajorOf(QStringLiteral(PLC_SOURCE_DIR "/docs/examples/tank.json")));
    EXPECT_EQ(0, example::qtMajorOf(QStringLiteral("/no/such/library")));
}

TEST(LoadDriverExample, RefusesALibraryForAnotherQt)
{
    example::Driver driver;
    QString error;
    EXPECT_FALSE(example::loadDriver(QStringLiteral(PLC_OTHER_QT_LIBRARY), &driver, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("was built for Qt %1; the driver for Qt %2 is needed")
                                   .arg(PLC_OTHER_QT)
                                   .arg(QT_VERSION_MAJOR)))
        << error.toStdString();
}

TEST(LoadDriverExample, LoadsACopyForEachPlc)
{
    const QTemporaryDir folder;
    const QString library = QStringLiteral(PLC_LIBRARY);
    example::Driver first, second;
    QString error;
    ASSERT_TRUE(example::loadCopy(library, folder.path(), 1, &first, &error))
        << error.toStdString();
    ASSERT_TRUE(example::loadCopy(library, folder.path(), 2, &second, &error))
        << error.toStdString();
    EXPECT_NE(first.comCommunication, second.comCommunication);
    EXPECT_NE(first.dataCom(nullptr, 0), second.dataCom(nullptr, 0));

    example::Driver third;
    EXPECT_FALSE(example::loadCopy(library, folder.path(), 2, &third, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("cannot copy"))) << error.toStdString();
}

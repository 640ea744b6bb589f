#include "docs/examples/load_driver.h"

#include <gtest/gtest.h>

TEST(LoadDriverExample, FindsTheEntryPoints)
{
    example::Driver driver;
    QString error;
    ASSERT_TRUE(example::loadDriver(QStringLiteral(PLC_LIBRARY), &driver, &error))
        << error.toStdString();
    ComInfo settings;
    settings.comWord10 = 1;
    driver.setComInfo(&settings);
    EXPECT_EQ(settings.comWord10, 0);
    EXPECT_EQ(driver.comCommunication(), nullptr);
    EXPECT_EQ(driver.dataCom(nullptr, 0)->result, 1);
    driver.setComInfo(nullptr);
}

TEST(LoadDriverExample, NamesWhatIsMissing)
{
    example::Driver driver;
    QString error;
    EXPECT_FALSE(example::loadDriver(QStringLiteral("/no/such/library"), &driver, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("/no/such/library"))) << error.toStdString();
}

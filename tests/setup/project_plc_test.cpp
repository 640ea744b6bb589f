#include "setup/project_plc.h"

#include <gtest/gtest.h>

#include <QtCore/QTemporaryDir>

#include "tests/support/test_folder.h"

namespace plc::setup {
namespace {

constexpr char kProject[] = R"json({
  "name": "A tank",
  "plc": {"address": "192.168.0.12", "port": 1200},
  "settings": {"readOnly": false},
  "areas": [{"index": 1, "size": 64}],
  "scopes": [{"name": "T", "variables": [{"name": "set", "type": "INT", "area": 1, "offset": 0}]}]})json";

class ProjectPlcTest : public testing::Test, public host::RuntimeListener {
protected:
    ProjectPlcTest() { put(kProject); }

    void put(const QByteArray& project)
    {
        plc::test::TestFolder(m_folder.path()).put(settings.project, project.constData());
    }
    void open(const char* driver = PLC_LIBRARY)
    {
        Expected<std::unique_ptr<ProjectPlc>> opened =
            ProjectPlc::open(settings, QString::fromUtf8(driver), this);
        error = opened ? std::string() : opened.error().text.toStdString();
        plc = opened ? std::move(*opened) : nullptr;
    }

    QTemporaryDir m_folder;
    ProjectPlcSettings settings = {
        m_folder.filePath(QStringLiteral("tank.json")), {}, {}, 100, false};
    std::unique_ptr<ProjectPlc> plc;
    std::string error;
};

TEST_F(ProjectPlcTest, IsWhereTheProjectSaysUnlessToldOtherwise)
{
    open();
    ASSERT_TRUE(plc) << error;
    EXPECT_EQ("192.168.0.12:1200", plc->address().toStdString());
    settings.address = QStringLiteral("10.0.0.1");
    settings.port = quint16(1300);
    open();
    ASSERT_TRUE(plc) << error;
    EXPECT_EQ("10.0.0.1:1300", plc->address().toStdString());
}

TEST_F(ProjectPlcTest, IsReadOnlyWhenTheProgramOrTheProjectSaysSo)
{
    open();
    ASSERT_TRUE(plc) << error;
    EXPECT_FALSE(plc->isReadOnly());
    settings.isReadOnly = true;
    open();
    ASSERT_TRUE(plc) << error;
    EXPECT_TRUE(plc->isReadOnly());
    settings.isReadOnly = false;
    put(QByteArray(kProject).replace("\"readOnly\": false", "\"readOnly\": true"));
    open();
    ASSERT_TRUE(plc) << error;
    EXPECT_TRUE(plc->isReadOnly());
}

TEST_F(ProjectPlcTest, HasACopyOfTheDriverForItselfAlone)
{
    open();
    ASSERT_TRUE(plc) << error;
    const std::unique_ptr<ProjectPlc> first = std::move(plc);
    open();
    ASSERT_TRUE(plc) << error;
    EXPECT_TRUE(first->runtime().points().find(QStringLiteral("T.set")));
    EXPECT_TRUE(plc->runtime().points().find(QStringLiteral("T.set")));
    EXPECT_FALSE(plc->runtime().points().find(QStringLiteral("T.nope")));
}

TEST_F(ProjectPlcTest, OfWhatIsNotThereIsAnError)
{
    open("/nowhere/libplc-driver.so");
    EXPECT_FALSE(plc);
    EXPECT_NE(std::string::npos, error.find("/nowhere/libplc-driver.so")) << error;
    settings.project = QStringLiteral("/nowhere/tank.json");
    open();
    EXPECT_FALSE(plc);
    EXPECT_NE(std::string::npos, error.find("/nowhere/tank.json")) << error;
}

} // namespace
} // namespace plc::setup
